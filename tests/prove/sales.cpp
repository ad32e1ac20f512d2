// What customers buy and cashiers do. A step that does not fit the check fails with a message, and the next one
// follows.
#include "sales.h"

using namespace Qt::Literals::StringLiterals;

namespace prove {

namespace {

struct Holder
{
    const char16_t *card;
    const char16_t *phone;
    const char16_t *balance;
    int earns; ///< Per cent.
};

// Some have points for all sales, some run out of them.
constexpr Holder holders[]{{u"7770000000001", u"+79001000001", u"1000000.00", 5},
                           {u"7770000000002", u"+79001000002", u"250000.00", 3},
                           {u"7770000000003", u"+79001000003", u"4321.09", 7},
                           {u"7770000000004", u"+79001000004", u"0.00", 10}};

/// The till asks as many questions as there are failures; what is left unanswered ends with the card removed.
constexpr int answersPerCheck = 30;

constexpr int undisturbedChecks = 12;

} // namespace

QJsonArray customers()
{
    QJsonArray array;
    for (const Holder &holder : holders) {
        const QString card = QString::fromUtf16(holder.card);
        array.append(
            QJsonObject{{u"CustAccount"_s, u"C-"_s + card.right(4)},
                        {u"LastName"_s, u"Покупатель"_s},
                        {u"FirstName"_s, card.right(1)},
                        {u"Phone"_s, QString::fromUtf16(holder.phone)},
                        {u"Cards"_s, QJsonArray{card}},
                        {u"Balance"_s, QString::fromUtf16(holder.balance)},
                        {u"Tiers"_s, QJsonArray{QJsonObject{{u"Name"_s, u"Tier"_s}, {u"Discount"_s, holder.earns}}}}});
    }
    return array;
}

int Sales::number(int least, int most)
{
    return std::uniform_int_distribution(least, most)(m_random);
}

bool Sales::chance(int percent)
{
    return number(1, 100) <= percent;
}

QJsonObject Sales::goods()
{
    const int kopecks = number(1, chance(80) ? 50'000 : 500'000);
    QJsonObject item{{u"barcode"_s, QString::number(number(1, 99'999))},
                     {u"name"_s, u"Товар"_s},
                     {u"price"_s, u"%1.%2"_s.arg(QString::number(kopecks / 100),
                                                 QString::number(kopecks % 100).rightJustified(2, u'0'))},
                     {u"quantity"_s, chance(70) ? number(1, 4) : number(1, 3000) / 1000.0}};
    if (chance(15))
        item.insert(u"labels"_s, QJsonArray{chance(50) ? u"NOSPEND"_s : u"NOBONUS"_s});
    if (chance(10))
        item.insert(u"onSale"_s, true);
    if (chance(5))
        item.insert(u"allowDiscount"_s, false);
    if (chance(5))
        item.insert(u"allowBonusEarn"_s, false);
    return item;
}

QJsonObject Sales::change()
{
    return {{u"change"_s, QJsonObject{{u"line"_s, number(1, 4)}, {u"quantity"_s, number(1, 5)}}}};
}

/// The same card several times: where the service failed to find it, the cashier tries again.
QJsonArray Sales::cardSteps()
{
    const Holder &holder = holders[number(0, std::size(holders) - 1)];
    const bool byPhone = chance(40);
    const QJsonObject step{
        {byPhone ? u"phone"_s : u"card"_s, QString::fromUtf16(byPhone ? holder.phone : holder.card)}};
    return {step, step, step};
}

QJsonValue Sales::changeOrPrice()
{
    switch (number(0, 7)) {
    case 0:
        return QJsonObject{{u"add"_s, goods()}};
    case 1:
        return QJsonObject{{u"remove"_s, number(2, 4)}};
    case 2:
        return u"restore"_s;
    case 3:
        return u"subtotal"_s;
    case 4:
        return u"price"_s;
    case 5:
        return u"spend"_s;
    default:
        return change();
    }
}

QString Sales::ending()
{
    return chance(85) ? u"close"_s : u"void"_s;
}

QJsonObject Sales::answers()
{
    QJsonArray dialogs;
    for (int i = 0; i < answersPerCheck; ++i)
        dialogs.append(chance(95) ? u"retry"_s : u"remove"_s);
    QJsonObject answers{{u"dialogs"_s, dialogs}};
    if (chance(5))
        answers.insert(u"codes"_s, QJsonArray{chance(50) ? u"give-up"_s : u"wrong"_s});
    return answers;
}

QJsonObject Sales::newCheck(int cardPercent, int leastLines)
{
    QJsonArray lines;
    for (int i = number(leastLines, 4); i > 0; --i)
        lines.append(goods());
    QJsonArray steps = chance(cardPercent) ? cardSteps() : QJsonArray();
    if (chance(85))
        steps.append(u"price"_s);
    for (int i = number(0, 3); i > 0; --i)
        steps.append(changeOrPrice());
    if (chance(60))
        steps.append(u"spend"_s);
    steps.append(ending());
    return {{u"goods"_s, lines}, {u"steps"_s, steps}, {u"answers"_s, answers()}};
}

QJsonObject Sales::continuation()
{
    QJsonArray steps{QJsonObject{{u"add"_s, goods()}}}; // A check without goods could not be closed.
    if (chance(50))
        for (const QJsonValue step : cardSteps())
            steps.append(step);
    if (chance(30))
        steps.append(changeOrPrice());
    if (chance(40))
        steps.append(u"spend"_s);
    steps.append(ending());
    return {{u"continue"_s, true}, {u"steps"_s, steps}, {u"answers"_s, answers()}};
}

QJsonObject Sales::shift()
{
    QJsonArray checks{continuation()};
    for (int i = number(1, 5); i > 0; --i)
        checks.append(newCheck(92, 1));
    return {{u"checks"_s, checks}};
}

QJsonObject Sales::lastShift()
{
    return {{u"checks"_s, QJsonArray{continuation()}}};
}

QJsonObject Sales::undisturbedShift()
{
    QJsonArray checks;
    while (checks.size() < undisturbedChecks) {
        QJsonObject check = newCheck(100, 2); // With one line "restore" may leave nothing to be sold.
        check.remove(u"answers"_s);
        checks.append(check);
    }
    return {{u"checks"_s, checks}};
}

} // namespace prove
