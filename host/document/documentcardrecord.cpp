// A card on a check, and its form on disk.
#include "documentcardrecord.h"

#include "jsonwriter.h"
#include "storedmap.h"

#include <QtCore/QJsonObject>

using namespace Qt::Literals::StringLiterals;

namespace {

void write(const Client &client, JsonWriter &json)
{
    json.add("idClient"_L1, client.getIdClient());
    json.add("name"_L1, client.getName());
    json.add("birthday"_L1, client.getBirthday().toString(Qt::ISODate));
    json.add("sex"_L1, client.getSex());
    json.add("email"_L1, client.getEmail());
    json.add("phoneNumber"_L1, client.getPhoneNumber());
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

void DocumentCardRecord::writeTo(JsonWriter &json) const
{
    json.add("number"_L1, m_number);
    json.add("codeInternal"_L1, m_codeInternal);
    json.add("loyaltySystemCode"_L1, m_loyaltySystemCode);
    json.add("operationId"_L1, m_operationId);
    json.add("operationInfo"_L1, m_operationInfo);
    json.add("pointsForSpend"_L1, m_pointsForSpend);
    json.add("pointsForEarn"_L1, m_pointsForEarn);
    json.add("bonusBalance"_L1, m_bonusBalance);
    json.add("extendedOptions"_L1, m_extendedOptions);
    if (const auto client = m_card->getClient())
        json.addObject("client"_L1, [&] { write(*client, json); });
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
