// Answers about the queue, for people and for machines.
#include "queuecommand.h"

#include <core/basicexception.h>
#include <core/plaintext.h>
#include <database/databaseerror.h>
#include <queue/dbqueuebroker.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

using Entry = QueueAdmin::Entry;
using State = QueueAdmin::State;

/// Names of a state: for people, and for machines.
struct StateName
{
    State state;
    QStringView text;
    QStringView code;
};
constexpr std::array stateNames = {
    StateName{State::Waiting, u"ожидает", u"waiting"},
    StateName{State::Sending, u"отправляется", u"sending"},
    StateName{State::DeadLetter, u"отклонена", u"deadLetter"},
    StateName{State::Discarded, u"снята", u"discarded"},
};

const StateName &nameOf(State state)
{
    return *std::find_if(stateNames.cbegin(), stateNames.cend(),
                         [state](const StateName &name) { return name.state == state; });
}

/// In the largest unit of which there is at least one.
QString ageText(const QDateTime &since, const QDateTime &now)
{
    const qint64 seconds = std::max<qint64>(0, since.secsTo(now));
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    if (seconds >= day)
        return u"%1 дн"_s.arg(seconds / day);
    if (seconds >= hour)
        return u"%1 ч"_s.arg(seconds / hour);
    return seconds >= minute ? u"%1 мин"_s.arg(seconds / minute) : u"%1 с"_s.arg(seconds);
}

QString remarkOf(const Entry &entry)
{
    return entry.state == State::Discarded ? entry.discardReason : entry.lastError;
}

/// For machines: in UTC, so that the till's time zone does not matter.
QString isoText(const QDateTime &time)
{
    return time.toUTC().toString(Qt::ISODateWithMs);
}

QString timeText(const QDateTime &time)
{
    return time.toString(u"dd.MM.yyyy HH:mm:ss"_s);
}

/// Escapes what a terminal would obey, such as C1 controls, overrides of the writing direction and DEL; Qt escapes the
/// ASCII controls.
QString asText(const QJsonObject &object)
{
    QString text;
    for (const QChar c : QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented))) {
        const QChar::Category category = c.category();
        const bool isHidden = category == QChar::Other_Control || category == QChar::Other_Format ||
                              category == QChar::Separator_Line || category == QChar::Separator_Paragraph;
        if (isHidden && c != u'\n')
            text += u"\\u%1"_s.arg(ushort{c.unicode()}, 4, 16, QChar(u'0'));
        else
            text += c;
    }
    return text;
}

QString cell(const QString &text)
{
    constexpr qsizetype widest = 60;
    return plainText(text, widest);
}

QString entriesAsTable(const QList<Entry> &entries, const QDateTime &now)
{
    QList<QStringList> rows{{u"№"_s, u"ВОЗРАСТ"_s, u"ЗАКАЗ"_s, u"ЧЕК"_s, u"КАРТА"_s, u"ОПЕРАЦИЯ"_s, u"ПОПЫТОК"_s,
                             u"СОСТОЯНИЕ"_s, u"ПРИЧИНА"_s}};
    for (const Entry &entry : entries)
        rows.append({QString::number(entry.id), ageText(entry.stored, now), cell(entry.order), cell(entry.check),
                     cell(entry.card), cell(entry.operation), QString::number(entry.attempts),
                     nameOf(entry.state).text.toString(), cell(remarkOf(entry))});
    QList<qsizetype> widths(rows.first().size(), 0);
    for (const QStringList &row : std::as_const(rows)) {
        for (qsizetype i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    QString table;
    for (const QStringList &row : std::as_const(rows)) {
        QString line;
        for (qsizetype i = 0; i < row.size(); ++i)
            line += row[i].leftJustified(widths[i]) + u"  "_s;
        table += line.trimmed() + u'\n';
    }
    return table;
}

QJsonObject entryAsJson(const Entry &entry)
{
    return {{u"id"_s, entry.id},
            {u"owner"_s, entry.owner},
            {u"order"_s, entry.order},
            {u"check"_s, entry.check},
            {u"card"_s, entry.card},
            {u"operation"_s, entry.operation},
            {u"state"_s, nameOf(entry.state).code.toString()},
            {u"attempts"_s, entry.attempts},
            {u"stored"_s, isoText(entry.stored)},
            {u"nextAttempt"_s, isoText(entry.nextAttempt)},
            {u"lastError"_s, entry.lastError},
            {u"refused"_s, isoText(entry.refused)},
            {u"discarded"_s, isoText(entry.discarded)},
            {u"discardReason"_s, entry.discardReason}};
}

QueueAdmin::Filter filterOf(const QueueRequest &request)
{
    QueueAdmin::Filter filter = request.filter;
    for (const StateName &name : stateNames)
        if (name.code == request.state)
            filter.state = name.state;
    return filter;
}

QString listAnswer(const QList<Entry> &entries, const QueueRequest &request, const QDateTime &now)
{
    if (!request.json) {
        const QueueAdmin::Filter filter = filterOf(request);
        const bool isWhole = !filter.state && filter.order.isEmpty() && filter.check.isEmpty();
        return !entries.isEmpty() ? entriesAsTable(entries, now)
               : isWhole          ? u"Очередь пуста\n"_s
                                  : u"Таких запросов нет\n"_s;
    }
    QJsonArray array;
    for (const Entry &entry : entries)
        array.append(entryAsJson(entry));
    return asText({{u"entries"_s, array}});
}

/// `problem` keeps requests from being stored; empty when nothing does.
QueueAnswer statusAnswer(const QueueStatus &status, const QueueRequest &request, const QDateTime &now,
                         const QString &problem = {})
{
    constexpr qint64 minute = 60;
    QStringList faults;
    if (!problem.isEmpty())
        faults.append(problem);
    if (status.blocked > 0)
        faults.append(u"есть отклонённые запросы"_s);
    if (request.maxWaiting >= 0 && status.waiting > request.maxWaiting)
        faults.append(u"ожидают отправки больше %1"_s.arg(request.maxWaiting));
    if (request.maxAgeMinutes >= 0 && status.oldest.isValid() &&
        status.oldest.secsTo(now) > request.maxAgeMinutes * minute)
        faults.append(u"самому раннему больше %1 мин"_s.arg(request.maxAgeMinutes));
    if (status.oldest.isValid() && now.secsTo(status.oldest) > minute)
        faults.append(u"самый ранний записан в будущем, проверьте часы"_s);
    if (request.json) {
        QJsonObject object = statusAsJson(status, now);
        object.insert(u"fine"_s, faults.isEmpty());
        object.insert(u"faults"_s, QJsonArray::fromStringList(faults));
        return {asText(object), faults.isEmpty()};
    }
    QString text = statusText(status) + u'\n';
    if (status.oldest.isValid())
        text += u"Возраст самого раннего: %1\n"_s.arg(ageText(status.oldest, now));
    if (status.lastSuccess.isValid())
        text += u"Последняя доставка: %1\n"_s.arg(timeText(status.lastSuccess));
    if (status.lastErrorTime.isValid())
        text += u"Последняя ошибка: %1, %2\n"_s.arg(timeText(status.lastErrorTime), cell(status.lastError));
    if (!faults.isEmpty())
        text += u"Внимание: %1\n"_s.arg(faults.join(u", "_s));
    return {text, faults.isEmpty()};
}

QString showAnswer(const Entry &entry, bool json, const QDateTime &now)
{
    if (!json)
        return entriesAsTable({entry}, now) + asText(entry.event);
    QJsonObject object = entryAsJson(entry);
    object.insert(u"event"_s, entry.event);
    return asText(object);
}

/// `count` entries were changed; `text` says how.
QString changeAnswer(int count, const QString &text, bool json)
{
    return json ? asText({{u"changed"_s, count}}) : text + u'\n';
}

QueueAnswer answerOf(QueueAdmin queue, const QueueRequest &request, const QDateTime &now)
{
    switch (request.action) {
    case QueueRequest::Action::List:
        return {listAnswer(queue.list(filterOf(request)), request, now)};
    case QueueRequest::Action::Status:
        return statusAnswer(queue.status(), request, now, DBQueueBroker().problem());
    case QueueRequest::Action::Show:
        return {showAnswer(queue.entry(request.id), request.json, now)};
    case QueueRequest::Action::Retry:
        queue.retry(request.id);
        return {changeAnswer(1, u"Запись %1 будет отправлена снова"_s.arg(request.id), request.json)};
    case QueueRequest::Action::RetryAll: {
        const int count = queue.retryAll();
        return {changeAnswer(count, u"Будет отправлено снова: %1"_s.arg(count), request.json)};
    }
    case QueueRequest::Action::Restore:
        queue.restore(request.id);
        return {changeAnswer(1, u"Запись %1 возвращена в очередь"_s.arg(request.id), request.json)};
    case QueueRequest::Action::Discard:
        queue.discard(request.id, request.reason);
        return {changeAnswer(1, u"Запись %1 снята с отправки и сохранена с причиной"_s.arg(request.id), request.json)};
    }
    return {};
}

} // namespace

QueueAnswer answerTo(const QueueRequest &request, const QDateTime &now)
{
    try {
        return answerOf(QueueAdmin(), request, now);
    } catch (const MissingDatabase &) { // until the first request is stored
        if (request.action == QueueRequest::Action::List)
            return {listAnswer({}, request, now)};
        if (request.action == QueueRequest::Action::Status)
            return statusAnswer({}, request, now);
        throw;
    }
}

QStringList stateCodes()
{
    QStringList codes;
    for (const StateName &name : stateNames)
        codes.append(name.code.toString());
    return codes;
}

QString statusText(const QueueStatus &status)
{
    if (status.waiting + status.blocked == 0)
        return u"Очередь пуста"_s;
    return u"В очереди: ожидает отправки %1, остановлено %2, самое раннее от %3"_s.arg(
        QString::number(status.waiting), QString::number(status.blocked), timeText(status.oldest));
}

QJsonObject statusAsJson(const QueueStatus &status, const QDateTime &now)
{
    return {{u"waiting"_s, status.waiting},
            {u"blocked"_s, status.blocked},
            {u"oldest"_s, isoText(status.oldest)},
            {u"oldestAgeSeconds"_s, status.oldest.isValid() ? std::max<qint64>(0, status.oldest.secsTo(now)) : 0},
            {u"lastSuccess"_s, isoText(status.lastSuccess)},
            {u"lastError"_s, status.lastError},
            {u"lastErrorTime"_s, isoText(status.lastErrorTime)}};
}

QString progressBar(int total, int left)
{
    if (total <= 0)
        return {};
    constexpr int width = 30;
    const int done = std::clamp(total - left, 0, total);
    const int filled = width * done / total;
    return u"[%1%2] %3/%4"_s.arg(QString(filled, u'#'), QString(width - filled, u'.'), QString::number(done),
                                 QString::number(total));
}

} // namespace till
