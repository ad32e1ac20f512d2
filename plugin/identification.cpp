// Identifies the holder of the card and reads tier and balance.
#include "plugin/plugin.h"

#include <core/basicexception.h>

#include <log4qt/logger.h>

#include <QtCore/QJsonArray>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

/// Digits of a card number that the log may show.
constexpr int shownDigits = 4;

/// The date of a text such as "1985-03-14 00:00:00"; invalid for a text of another form. QDateTime would look for the
/// moment in the till's time zone, and ask the system for the zone eight times.
QDate dateOf(const QString &text)
{
    const qsizetype space = text.indexOf(u' ');
    const QDate date = QDate::fromString(text.left(space), Qt::ISODate);
    const QTime time = QTime::fromString(text.mid(space + 1), Qt::ISODate);
    // The other forms of ISO 8601 are not the service's.
    const bool isPlain = time.isValid() && date.toString(Qt::ISODate) + u' ' + time.toString(Qt::ISODate) == text;
    return isPlain ? date : QDate();
}

QSharedPointer<Client> createClient(const QJsonObject &customer)
{
    const auto text = [&customer](QLatin1StringView key) { return customer.value(key).toString(); };
    auto client = QSharedPointer<Client>::create();
    client->setIdClient(text("CustAccount"_L1));
    client->setName(text("LastName"_L1) + u' ' + text("FirstName"_L1) + u' ' + text("MiddleName"_L1));
    client->setBirthday(dateOf(text("BirthDate"_L1)));
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
    if (!card) {
        reportError(tr::Tr(u"Карта лояльности не указана"_s));
        return false;
    }
    try {
        const QString entered = card->getNumber().toString();
        const QJsonObject holder = customer.isEmpty() ? interface->searchCustomer(entered, type) : customer;
        const auto client = createClient(holder);
        if (const auto holderCard = card->getCard())
            holderCard->setClient(client);
        const QString found = holder.value("CardNumber"_L1).toString();
        if (!customer.isEmpty() && !entered.isEmpty() && entered != found)
            logger->warn(u"Карта чека (…%1) заменена картой покупателя, найденного по телефону (…%2)"_s.arg(
                entered.right(shownDigits), found.right(shownDigits)));
        card->setNumber(found);

        const QString number = card->getNumber().toString();
        const QJsonObject info = interface->cardInfo(number, client->getIdClient());
        setTier(*card, info.value("Tiers"_L1).toArray());

        const double balance = interface->loyaltyBonusInfo(number, client->getIdClient());
        card->setBonusBalance(balance);
        pointsForSpend = balance;
        updatePluginData();
        return true;
    } catch (const BasicException &error) {
        reportError(error.text());
        return false;
    }
}

} // namespace kvo
