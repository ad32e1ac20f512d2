// A card on a check, and its form as plain variants.
#include "documentcardrecord.h"

#include "storedmap.h"

#include <core/serder.h>

#include <QtCore/QJsonObject>

using namespace Qt::Literals::StringLiterals;

namespace {

QVariantMap toMap(const Client &client)
{
    return {{u"idClient"_s, client.getIdClient()},
            {u"name"_s, client.getName()},
            {u"birthday"_s, client.getBirthday().toString(Qt::ISODate)},
            {u"sex"_s, static_cast<int>(client.getSex())},
            {u"email"_s, client.getEmail()},
            {u"phoneNumber"_s, client.getPhoneNumber()}};
}

QSharedPointer<Client> readClient(const StoredMap &map)
{
    const auto client = QSharedPointer<Client>::create();
    client->setIdClient(map.text(u"idClient"_s));
    client->setName(map.text(u"name"_s));
    client->setBirthday(QDate::fromString(map.text(u"birthday"_s), Qt::ISODate));
    client->setSex(map.integer(u"sex"_s) == 0 ? Client::Sex::Male : Client::Sex::Female);
    client->setEmail(map.text(u"email"_s));
    client->setPhoneNumber(map.text(u"phoneNumber"_s));
    return client;
}

// JSON writes 5.0 as 5, which would come back as a whole number.
QVariant readPoints(const QVariant &stored)
{
    return stored.isValid() ? QVariant(stored.toDouble()) : QVariant();
}

} // namespace

DocumentCardRecord::DocumentCardRecord() : m_card(QSharedPointer<Card>::create())
{}

QVariantMap DocumentCardRecord::toMap() const
{
    QVariantMap map{{u"number"_s, m_number},
                    {u"codeInternal"_s, m_codeInternal},
                    {u"loyaltySystemCode"_s, m_loyaltySystemCode},
                    {u"operationId"_s, m_operationId},
                    {u"operationInfo"_s, serder::toPlain(m_operationInfo)},
                    {u"pointsForSpend"_s, m_pointsForSpend},
                    {u"pointsForEarn"_s, m_pointsForEarn},
                    {u"bonusBalance"_s, m_bonusBalance},
                    {u"extendedOptions"_s, serder::toPlain(m_extendedOptions)}};
    if (const auto client = m_card->getClient())
        map.insert(u"client"_s, ::toMap(*client));
    return map;
}

QSharedPointer<DocumentCardRecord> DocumentCardRecord::fromMap(const QVariantMap &map)
{
    const StoredMap stored(map);
    const auto card = QSharedPointer<DocumentCardRecord>::create();
    card->setNumber(stored.optional(u"number"_s));
    card->setCodeInternal(stored.integer(u"codeInternal"_s));
    card->setLoyaltySystemCode(stored.integer(u"loyaltySystemCode"_s));
    card->setOperationId(stored.text(u"operationId"_s));
    if (stored.optional(u"operationInfo"_s).isValid())
        card->setOperationInfo(QJsonObject::fromVariantMap(stored.map(u"operationInfo"_s)));
    card->setPointsForSpend(stored.number(u"pointsForSpend"_s));
    card->setPointsForEarn(readPoints(stored.optional(u"pointsForEarn"_s)));
    card->setBonusBalance(readPoints(stored.optional(u"bonusBalance"_s)));
    card->setExtendedOptions(stored.optional(u"extendedOptions"_s));
    if (stored.optional(u"client"_s).isValid())
        card->getCard()->setClient(readClient(StoredMap(stored.map(u"client"_s))));
    return card;
}
