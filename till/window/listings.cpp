// Puts lines, goods, requests and finished checks into rows of text.
#include "listings.h"

#include <QtCore/QLocale>
#include <QtCore/QObject>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Several texts, written in one with bars between them.
QStringList each(const char *texts)
{
    return QObject::tr(texts).split(u'|');
}

const QString timeFormat = u"dd.MM HH:mm:ss"_s;

QString stateText(QueueAdmin::State state)
{
    switch (state) {
    case QueueAdmin::State::Waiting:
        return QObject::tr("ожидает");
    case QueueAdmin::State::Sending:
        return QObject::tr("отправляется");
    case QueueAdmin::State::DeadLetter:
        return QObject::tr("отклонён");
    case QueueAdmin::State::Discarded:
        return QObject::tr("снят");
    }
    return {};
}

} // namespace

QString moneyText(Money sum)
{
    return QLocale().toString(sum.toRubles(), 'f', 2);
}

Page linesPage(const QList<ResultLine> &lines)
{
    const QStringList marks = each("без баллов|не списать|не начислить|");
    Page page{.header = each("№|Товар|Кол-во|Цена|Баллы|Сумма"), .numbers = {0, 2, 3, 4, 5}, .wide = 1};
    for (const ResultLine &line : lines) {
        const QString id = QString::number(line.lineId);
        const QString mark = marks.value(2 * line.takesPoints + line.earnsPoints);
        const QString quantity = QLocale().toString(line.quantity, 'g', QLocale::FloatingPointShortest);
        const QString points = line.spent.isZero() ? mark : moneyText(-line.spent) + u'\n' + mark;
        page.rows.append(
            {id,
             {id, line.name, quantity, moneyText(line.price), points.trimmed(), moneyText(line.amount - line.spent)}});
    }
    return page;
}

Page goodsPage(const QList<Goods> &goods)
{
    Page page{Page::Kind::Goods, QObject::tr("Выберите товар"), {}, each("Товар|Цена|Штрихкод"), {1}};
    for (const Goods &article : goods) {
        const QString id = QString::number(article.quantity, 'f', 3) + u'*' + article.barcode;
        page.rows.append({id, {article.name, moneyText(article.price), article.barcode}});
    }
    return page;
}

Page queuePage(const QList<QueueAdmin::Entry> &entries)
{
    const QString count = QObject::tr("Записей: %1").arg(entries.size());
    const QStringList header = each("№|Сохранён|Запрос|Состояние|Попыток|Причина");
    Page page{Page::Kind::Queue, QObject::tr("Запросы к сервису лояльности"), count, header, {0, 4}, 5};
    for (const QueueAdmin::Entry &entry : entries) {
        const QString id = QString::number(entry.id);
        const QString reason = entry.state == QueueAdmin::State::Discarded ? entry.discardReason : entry.lastError;
        page.rows.append({id,
                          {id, entry.stored.toString(timeFormat), entry.operation, stateText(entry.state),
                           QString::number(entry.attempts), reason}});
    }
    return page;
}

Page parkedPage(const QList<std::pair<CheckStore::KeptCheck, CheckResult>> &checks)
{
    const QString count = QObject::tr("Записей: %1").arg(checks.size());
    const QStringList header = each("Отложен|Сумма|Покупатель или товар|Причина");
    Page page{Page::Kind::Parked, QObject::tr("Отложенные чеки"), count, header, {1}, 2};
    for (const auto &[kept, check] : checks) {
        const QString goods = check.lines.value(0).name;
        page.rows.append({kept.identifier,
                          {kept.since.toString(timeFormat), goods.isEmpty() ? QString() : moneyText(check.total()),
                           check.customer.isEmpty() ? goods : check.customer, kept.reason}});
    }
    return page;
}

Page journalPage(const QList<CheckResult> &finished)
{
    const QStringList header = each("Открыт|Итог|Сумма|Баллами|Начислено|Покупатель|Чек");
    Page page{Page::Kind::Journal, QObject::tr("Журнал за сегодня"), {}, header, {2, 3, 4}, 6};
    Money sum, spent;
    for (const CheckResult &check : finished) {
        const bool isClosed = check.outcome == "closed"_L1;
        page.rows.append({check.identifier,
                          {check.dateTime.toString(timeFormat),
                           isClosed ? QObject::tr("закрыт") : QObject::tr("аннулирован"), moneyText(check.total()),
                           moneyText(check.spent()), moneyText(check.earned), check.customer, check.identifier}});
        sum += isClosed ? check.total() : Money();
        spent += isClosed ? check.spent() : Money();
    }
    page.text = QObject::tr("Чеков: %1, оплачено %2, баллами %3")
                    .arg(QString::number(finished.size()), moneyText(sum), moneyText(spent));
    return page;
}

} // namespace till
