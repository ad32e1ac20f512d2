// Who the card on the check belongs to and what it is worth.
#include "plugin/plugin.h"

#include <core/basicexception.h>

#include <log4qt/logger.h>

#include <QtCore/QJsonArray>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

/// Date and time are parsed apart: where the clocks change at midnight, a local date-time of that day does not exist.
QDate birthday(const QString &text)
{
    const QStringList parts = text.split(u' ');
    const bool complete = parts.size() == 2 && QTime::fromString(parts.last(), u"HH:mm:ss"_s).isValid();
    return complete ? QDate::fromString(parts.first(), u"yyyy-MM-dd"_s) : QDate();
}

QSharedPointer<Client> createClient(const QJsonObject &customer)
{
    const auto text = [&customer](QLatin1StringView key) { return customer.value(key).toString(); };
    auto client = QSharedPointer<Client>::create();
    client->setIdClient(text("CustAccount"_L1));
    client->setName(text("LastName"_L1) + u' ' + text("FirstName"_L1) + u' ' + text("MiddleName"_L1));
    client->setBirthday(birthday(text("BirthDate"_L1)));
    client->setSex(customer.value("Gender"_L1).toInt() == 1 ? Client::Sex::Male : Client::Sex::Female);
    client->setEmail(text("Email"_L1));
    client->setPhoneNumber(text("Phone"_L1));
    return client;
}

/// A card may be in several tiers; the last one in force is shown. A tier that is not in force has a negative discount.
void setTier(DocumentCardRecord &card, const QJsonArray &tiers)
{
    for (const auto &entry : tiers) {
        const QJsonObject tier = entry.toObject();
        const QJsonValue discount = tier.value("Discount"_L1);
        if (discount.toInt() >= 0)
            card.setExtendedOptions(
                QVariantMap{{u"loyaltyStatus"_s, tier.value("Name"_L1)}, {u"loyaltyTier"_s, discount}});
    }
}

} // namespace

loyalty::CardNumberResult Plugin::getCardNumber(const loyalty::CardNumberInputData &data)
{
    if (static_cast<ECardNumberType>(data.type) != ECardNumberType::Phone) {
        logger->error(u"Система лояльности не поддерживает поиск карты по введенному типу "_s +
                      QString::number(data.type));
        return BasicLoyaltySystem::getCardNumber(data);
    }
    logger->info(u"Поиск карты по номеру телефона"_s);
    customer = QJsonObject();
    try {
        customer = interface->searchCustomer(data.text, ECardNumberType::Phone);
        return {true, customer.value("CardNumber"_L1).toString(), tr::Tr()};
    } catch (const BasicException &error) {
        logger->error(error.text().ru());
        return {false, QString(), error.text()};
    }
}

bool Plugin::identifyByCard(QSharedPointer<DocumentCardRecord> &card, ECardNumberType type)
{
    logger->info(u"Получение информации о карте"_s);
    if (!card)
        return true;
    try {
        const QJsonObject holder =
            customer.isEmpty() ? interface->searchCustomer(card->getNumber().toString(), type) : customer;
        const auto client = createClient(holder);
        card->getCard()->setClient(client);
        card->setNumber(holder.value("CardNumber"_L1).toString());

        const QString number = card->getNumber().toString();
        const QJsonObject info = interface->cardInfo(number, client->getIdClient());
        setTier(*card, info.value("Tiers"_L1).toArray());

        pointsForSpend = interface->loyaltyBonusInfo(number, client->getIdClient());
        card->setBonusBalance(pointsForSpend);
        updatePluginData();
        return true;
    } catch (const BasicException &error) {
        reportError(error.text());
        return false;
    }
}

} // namespace kvo
