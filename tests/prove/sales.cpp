// What customers buy and cashiers do. A step that does not fit the check fails with a message, and the next one
// follows.
#include "sales.h"

using namespace Qt::Literals::StringLiterals;

namespace prove {

// Some have points for all sales, some run out of them.
const char customers[] = R"([
    {"CustAccount": "C-1", "LastName": "Покупатель", "FirstName": "1", "Phone": "+79001000001",
     "Cards": ["7770000000001"], "Balance": "1000000.00", "Tiers": [{"Name": "Tier", "Discount": 5}]},
    {"CustAccount": "C-2", "LastName": "Покупатель", "FirstName": "2", "Phone": "+79001000002",
     "Cards": ["7770000000002"], "Balance": "250000.00", "Tiers": [{"Name": "Tier", "Discount": 3}]},
    {"CustAccount": "C-3", "LastName": "Покупатель", "FirstName": "3", "Phone": "+79001000003",
     "Cards": ["7770000000003"], "Balance": "4321.09", "Tiers": [{"Name": "Tier", "Discount": 7}]},
    {"CustAccount": "C-4", "LastName": "Покупатель", "FirstName": "4", "Phone": "+79001000004",
     "Cards": ["7770000000004"], "Balance": "0.00", "Tiers": [{"Name": "Tier", "Discount": 10}]}])";

QJsonObject Sales::goods()
{
    const int kopecks = number(1, chance(80) ? 50'000 : 500'000);
    QJsonObject item{{u"barcode"_s, QString::number(number(1, 99'999))},
                     {u"name"_s, u"Товар"_s},
                     {u"price"_s, QString::number(kopecks / 100.0, 'f', 2)},
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

/// The same card several times: where the service failed to find it, the cashier tries again.
QJsonArray Sales::cardSteps()
{
    const QString customer = QString::number(number(1, 4));
    const QJsonObject step = chance(40) ? QJsonObject{{u"phone"_s, QString(u"+7900100000"_s + customer)}}
                                        : QJsonObject{{u"card"_s, QString(u"777000000000"_s + customer)}};
    return {step, step, step};
}

QJsonValue Sales::changeOrPrice()
{
    const QJsonObject change{{u"change"_s, QJsonObject{{u"line"_s, number(1, 4)}, {u"quantity"_s, number(1, 5)}}}};
    const QJsonArray steps{u"restore"_s,
                           u"subtotal"_s,
                           u"price"_s,
                           u"spend"_s,
                           change,
                           change,
                           QJsonObject{{u"add"_s, goods()}},
                           QJsonObject{{u"remove"_s, number(2, 4)}}};
    return steps.at(number(0, 7));
}

QString Sales::ending()
{
    return chance(85) ? u"close"_s : u"void"_s;
}

QJsonObject Sales::answers()
{
    QJsonArray dialogs;
    while (dialogs.size() < 30) // as many as there are failures; what is left unanswered ends with the card removed
        dialogs.append(chance(95) ? u"retry"_s : u"remove"_s);
    QJsonObject answers{{u"dialogs"_s, dialogs}};
    if (chance(5))
        answers.insert(u"codes"_s, QJsonArray{chance(50) ? u"give-up"_s : u"wrong"_s});
    return answers;
}

QJsonObject Sales::newCheck()
{
    QJsonArray lines;
    for (int i = number(1, 4); i > 0; --i)
        lines.append(goods());
    QJsonArray steps = chance(92) ? cardSteps() : QJsonArray();
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
        checks.append(newCheck());
    return {{u"checks"_s, checks}};
}

} // namespace prove
