// Collects the result of a check. Sums stay in kopecks; they become text only at the border.
#include "checkresult.h"

#include <core/plaintext.h>
#include <core/session.h>
#include <core/singleton.h>
#include <document/saledocument.h>

#include <QtCore/QJsonArray>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Characters of a name or number that are kept for people to read.
constexpr qsizetype longestName = 200;

QString outcomeOf(const SaleDocument &document)
{
    switch (document.getState()) {
    case SaleDocument::State::Closed:
        return u"closed"_s;
    case SaleDocument::State::Voided:
        return u"voided"_s;
    case SaleDocument::State::Open:
        break;
    }
    return u"open"_s;
}

/// Points paid for each line, by position.
QHash<int, Money> spentByPosition(const SaleDocument &document)
{
    QHash<int, Money> spent;
    for (const auto impacts = document.getDiscountImpacts(); const auto &impact : impacts) {
        if (impact->getTotals()->getDiscountType() != EDiscountType::Bonus)
            continue;
        for (const auto details = impact->getDetails(); const auto &detail : details)
            spent[detail->getPosition()] += Money::fromRubles(detail->getDiscountSum());
    }
    return spent;
}

QList<ResultLine> linesOf(const SaleDocument &document)
{
    const QHash<int, Money> spent = spentByPosition(document);
    QList<ResultLine> lines;
    for (const auto items = document.getGoodsItems(); const auto &item : items) {
        const Money points = spent.value(item->getPosnum());
        const Money otherDiscounts = item->getDiscountSum() - points;
        const QVariantList labels = item->getCampaignLabels();
        lines.append({item->getPosnum(), plainText(item->getTmc()->getName(), longestName), item->getQuantity(),
                      item->getPrice(), item->getSum() - otherDiscounts, points,
                      item->isAllowDiscount() && !labels.contains(QVariant(u"NOSPEND"_s)),
                      item->isAllowBonusEarn() && !labels.contains(QVariant(u"NOBONUS"_s))});
    }
    return lines;
}

void readCard(const DocumentCardRecord &card, CheckResult &result)
{
    result.card = card.getNumber().toString();
    result.basket = card.getOperationId();
    if (const auto client = card.getCard()->getClient())
        result.customer = plainText(client->getName(), longestName);
    result.tier = plainText(card.getExtendedOptions().toMap().value(u"loyaltyStatus"_s).toString(), longestName);
    if (!card.getBonusBalance().isNull())
        result.balance = Money::fromRubles(card.getBonusBalance().toDouble());
}

template <class Amount>
Money sumOver(const QList<ResultLine> &lines, Amount amount)
{
    Money sum;
    for (const ResultLine &line : lines)
        sum += line.*amount;
    return sum;
}

} // namespace

Money CheckResult::sum() const
{
    return sumOver(lines, &ResultLine::amount);
}

Money CheckResult::spent() const
{
    return sumOver(lines, &ResultLine::spent);
}

std::optional<Money> CheckResult::balanceAfter() const
{
    if (!balance || *balance < spent())
        return std::nullopt;
    return *balance - spent() + earned;
}

QMap<QString, QString> CheckResult::fields() const
{
    return {{u"outcome"_s, outcome},
            {u"sum"_s, sum().toText()},
            {u"discount"_s, spent().toText()},
            {u"total"_s, total().toText()},
            {u"card"_s, card},
            {u"customer"_s, customer},
            {u"tier"_s, tier},
            {u"balance"_s, balance ? balance->toText() : QString()},
            {u"spent"_s, spent().toText()},
            {u"earned"_s, earned.toText()}};
}

QJsonObject CheckResult::toJournal() const
{
    QJsonArray jsonLines;
    for (const ResultLine &line : lines) {
        jsonLines.append(QJsonObject{{u"lineId"_s, line.lineId},
                                     {u"name"_s, line.name},
                                     {u"quantity"_s, line.quantity},
                                     {u"price"_s, line.price.toText()},
                                     {u"amount"_s, line.amount.toText()},
                                     {u"spent"_s, line.spent.toText()}});
    }
    QJsonObject entry{{u"check"_s, identifier},       {u"opened"_s, dateTime.toString(Qt::ISODateWithMs)},
                      {u"outcome"_s, outcome},        {u"card"_s, card},
                      {u"customer"_s, customer},      {u"tier"_s, tier},
                      {u"basket"_s, basket},          {u"lines"_s, jsonLines},
                      {u"spent"_s, spent().toText()}, {u"earned"_s, earned.toText()},
                      {u"cashier"_s, cashier}};
    if (balance)
        entry.insert(u"balance"_s, balance->toText());
    return entry;
}

CheckResult resultFromJournal(const QJsonObject &entry)
{
    const auto money = [](const QJsonValue &text) { return Money::fromRubles(text.toString().toDouble()); };
    CheckResult result;
    result.identifier = entry.value("check"_L1).toString();
    result.dateTime = QDateTime::fromString(entry.value("opened"_L1).toString(), Qt::ISODateWithMs);
    result.outcome = entry.value("outcome"_L1).toString();
    for (const QJsonArray lines = entry.value("lines"_L1).toArray(); const auto &value : lines) {
        const QJsonObject line = value.toObject();
        result.lines.append({line.value("lineId"_L1).toInt(), line.value("name"_L1).toString(),
                             line.value("quantity"_L1).toDouble(), money(line.value("price"_L1)),
                             money(line.value("amount"_L1)), money(line.value("spent"_L1))});
    }
    result.card = entry.value("card"_L1).toString();
    result.basket = entry.value("basket"_L1).toString();
    result.customer = entry.value("customer"_L1).toString();
    result.tier = entry.value("tier"_L1).toString();
    if (entry.contains("balance"_L1))
        result.balance = money(entry.value("balance"_L1));
    result.earned = money(entry.value("earned"_L1));
    result.cashier = entry.value("cashier"_L1).toString();
    return result;
}

CheckResult resultOf(const SaleDocument &document, const QSharedPointer<DocumentCardRecord> &card, double earned)
{
    CheckResult result;
    result.identifier = document.getIdentifier();
    result.dateTime = document.getDateTime();
    result.outcome = outcomeOf(document);
    result.lines = linesOf(document);
    if (card)
        readCard(*card, result);
    result.earned = Money::fromRubles(earned);
    result.cashier = Singleton<Session>::instance()->getUser()->getName();
    return result;
}

} // namespace till
