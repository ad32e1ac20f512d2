// Puts goods, requests and finished checks into rows of text.
#include "listings.h"

#include "texts.h"

#include <QtCore/QCoreApplication>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(Listings)
};

QString stateText(QueueAdmin::State state)
{
    switch (state) {
    case QueueAdmin::State::Waiting:
        return Texts::tr("ожидает");
    case QueueAdmin::State::Sending:
        return Texts::tr("отправляется");
    case QueueAdmin::State::DeadLetter:
        return Texts::tr("отклонён");
    case QueueAdmin::State::Discarded:
        return Texts::tr("снят");
    }
    return {};
}

QString timeText(const QDateTime &time)
{
    return time.toString(u"dd.MM HH:mm:ss"_s);
}

} // namespace

Listing goodsListing(const QList<Goods> &goods)
{
    Listing listing{Listing::Kind::Goods, {Texts::tr("Товар"), Texts::tr("Цена"), Texts::tr("Штрихкод")}, {}, {}};
    for (const Goods &article : goods) {
        const QString id = QString::number(article.quantity, 'f', 3) + u'*' + article.barcode;
        listing.rows.append({id, {article.name, moneyText(article.price), article.barcode}});
    }
    return listing;
}

Listing queueListing(const QList<QueueAdmin::Entry> &entries)
{
    Listing listing{Listing::Kind::Queue,
                    {Texts::tr("№"), Texts::tr("Сохранён"), Texts::tr("Запрос"), Texts::tr("Состояние"),
                     Texts::tr("Попыток"), Texts::tr("Причина")},
                    {},
                    {}};
    for (const QueueAdmin::Entry &entry : entries) {
        const QString reason = entry.state == QueueAdmin::State::Discarded ? entry.discardReason : entry.lastError;
        listing.rows.append({QString::number(entry.id),
                             {QString::number(entry.id), timeText(entry.stored), entry.operation,
                              stateText(entry.state), QString::number(entry.attempts), reason}});
    }
    listing.summary = Texts::tr("Записей: %1").arg(entries.size());
    return listing;
}

Listing parkedListing(const QList<CheckStore::KeptCheck> &checks)
{
    Listing listing{Listing::Kind::Parked, {Texts::tr("Отложен"), Texts::tr("Чек"), Texts::tr("Причина")}, {}, {}};
    for (const CheckStore::KeptCheck &check : checks)
        listing.rows.append({check.identifier, {timeText(check.since), check.identifier, check.reason}});
    listing.summary = Texts::tr("Записей: %1").arg(checks.size());
    return listing;
}

Listing journalListing(const QList<CheckResult> &finished)
{
    Listing listing{Listing::Kind::Journal,
                    {Texts::tr("Открыт"), Texts::tr("Итог"), Texts::tr("Сумма"), Texts::tr("Баллами"),
                     Texts::tr("Начислено"), Texts::tr("Покупатель"), Texts::tr("Чек")},
                    {},
                    {}};
    Money sum;
    Money spent;
    for (const CheckResult &check : finished) {
        const bool isClosed = check.outcome == "closed"_L1;
        listing.rows.append({check.identifier,
                             {timeText(check.dateTime), isClosed ? Texts::tr("закрыт") : Texts::tr("аннулирован"),
                              moneyText(check.total()), moneyText(check.spent()), moneyText(check.earned),
                              check.customer, check.identifier}});
        if (isClosed) {
            sum += check.total();
            spent += check.spent();
        }
    }
    listing.summary = Texts::tr("Чеков: %1, оплачено %2, баллами %3")
                          .arg(QString::number(finished.size()), moneyText(sum), moneyText(spent));
    return listing;
}

} // namespace till
