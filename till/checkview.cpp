// Lays out the open check for a terminal: numbers of lines first, because the cashier types them.
#include "checkview.h"

#include <core/plaintext.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr qsizetype longestShown = 40;

QString lineView(const ResultLine &line)
{
    QString view =
        u"%1. %2  %3 x %4 = %5"_s.arg(QString::number(line.lineId), plainText(line.name, longestShown),
                                      quantityText(line.quantity), line.price.toText(), line.amount.toText());
    if (!line.spent.isZero())
        view += u", баллами "_s + line.spent.toText();
    return view + u'\n';
}

QString cardView(const CheckResult &result)
{
    if (result.card.isEmpty())
        return u"Карты нет\n"_s;
    QStringList parts{u"Карта "_s + maskedCard(result.card)};
    for (const QString &part : {result.customer, result.tier}) {
        if (!part.isEmpty())
            parts.append(plainText(part, longestShown));
    }
    if (result.balance)
        parts.append(u"баланс "_s + result.balance->toText());
    if (result.isOffered && result.spent().isZero() && !result.offered.isZero())
        parts.append(u"можно списать "_s + result.offered.toText());
    if (result.isPriced)
        parts.append(u"будет начислено "_s + result.earned.toText());
    return parts.join(u", "_s) + u'\n';
}

} // namespace

QString quantityText(double quantity)
{
    QString text = QString::number(quantity, 'f', 3);
    while (text.endsWith(u'0'))
        text.chop(1);
    return text.endsWith(u'.') ? text.chopped(1) : text;
}

QString maskedCard(const QString &card)
{
    constexpr qsizetype shown = 4;
    const QString plain = plainText(card, longestShown);
    return plain.size() <= shown ? plain : u"*"_s.repeated(plain.size() - shown) + plain.right(shown);
}

QString checkView(const CheckResult &result)
{
    QString view = u"Чек открыт "_s + result.dateTime.toString(u"dd.MM.yyyy HH:mm:ss"_s) + u'\n';
    for (const ResultLine &line : result.lines)
        view += lineView(line);
    view += cardView(result) + u"Итого "_s + result.total().toText();
    if (!result.spent().isZero())
        view += u" (баллами "_s + result.spent().toText() + u')';
    view += u'\n';
    if (!result.loyaltyOff.isEmpty())
        view += u"Бонусы не работают: "_s + plainText(result.loyaltyOff, longestReason) + u'\n';
    return view;
}

QString waitingFor(const TillState &state)
{
    switch (state.ending) {
    case TillState::Ending::Closing:
        return u"Чек закрывается; закрытие завершится при следующем запуске кассы"_s;
    case TillState::Ending::Voiding:
        return u"Чек аннулируется; это завершится при следующем запуске кассы"_s;
    case TillState::Ending::None:
        break;
    }
    return state.order == TillState::Order::Uncertain ? u"Чек ждёт кассира; заказ будет рассчитан заново"_s
                                                      : u"Чек ждёт кассира"_s;
}

QString keptChecksView(const QList<CheckStore::KeptCheck> &checks)
{
    QString view;
    int number = 0;
    for (const CheckStore::KeptCheck &check : checks) {
        if (check.standing == CheckStore::Standing::Current)
            continue;
        ++number;
        view += u"Чек %1: %2, %3 с %4"_s.arg(QString::number(number), plainText(check.identifier, longestShown),
                                             check.standing == CheckStore::Standing::Unreadable ? u"не читается"_s
                                                                                                : u"отложен"_s,
                                             check.since.toString(u"dd.MM.yyyy HH:mm:ss"_s));
        if (!check.reason.isEmpty())
            view += u": "_s + plainText(check.reason, longestReason);
        view += u'\n';
    }
    return view;
}

QString waysToGoOn(const QString &configFile)
{
    const QString config = u" --config "_s + configFile;
    return u"Продолжить вручную: kvo-till sell%1\n"
           "Продолжить по сценарию с \"continue\": true: kvo-till run%1 ФАЙЛ\n"
           "Аннулировать: kvo-till void%1\n"_s.arg(config);
}

} // namespace till
