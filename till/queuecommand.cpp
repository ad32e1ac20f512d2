// Answers about the queue, for eyes and for machines.
#include "queuecommand.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <array>
#include <chrono>

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
    StateName{State::SetAside, u"отложена", u"setAside"},
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

QString isoText(const QDateTime &time)
{
    return time.toString(Qt::ISODateWithMs);
}

QString asText(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented));
}

QString listAnswer(const QueueAdmin &queue, bool json, const QDateTime &now)
{
    const QList<Entry> entries = queue.list();
    if (!json)
        return entries.isEmpty() ? u"Очередь пуста\n"_s : entriesAsTable(entries, now);
    QJsonArray array;
    for (const Entry &entry : entries)
        array.append(entryAsJson(entry));
    return asText({{u"entries"_s, array}});
}

QString showAnswer(const QueueAdmin &queue, qint64 id, bool json, const QDateTime &now)
{
    const Entry entry = queue.entry(id);
    const QJsonObject event = queue.event(id);
    if (!json)
        return entriesAsTable({entry}, now) + asText(event);
    QJsonObject object = entryAsJson(entry);
    object.insert(u"event"_s, event);
    return asText(object);
}

/// `count` entries were changed; `text` says how.
QString changeAnswer(int count, const QString &text, bool json)
{
    return json ? asText({{u"changed"_s, count}}) : text + u'\n';
}

} // namespace

QString answerTo(const QueueRequest &request, const QDateTime &now)
{
    QueueAdmin queue;
    switch (request.action) {
    case QueueRequest::Action::List:
        return listAnswer(queue, request.json, now);
    case QueueRequest::Action::Show:
        return showAnswer(queue, request.id, request.json, now);
    case QueueRequest::Action::Retry:
        queue.retry(request.id);
        return changeAnswer(1, u"Запись %1 будет отправлена снова"_s.arg(request.id), request.json);
    case QueueRequest::Action::RetryAll: {
        const int count = queue.retryAll();
        return changeAnswer(count, u"Будет отправлено снова: %1"_s.arg(count), request.json);
    }
    case QueueRequest::Action::Discard:
        queue.discard(request.id, request.reason);
        return changeAnswer(1, u"Запись %1 снята с отправки и сохранена с причиной"_s.arg(request.id), request.json);
    }
    return {};
}

QString entriesAsTable(const QList<Entry> &entries, const QDateTime &now)
{
    QList<QStringList> rows{
        {u"№"_s, u"ВОЗРАСТ"_s, u"ЗАКАЗ"_s, u"ОПЕРАЦИЯ"_s, u"ПОПЫТОК"_s, u"СОСТОЯНИЕ"_s, u"ПРИЧИНА"_s}};
    for (const Entry &entry : entries)
        rows.append({QString::number(entry.id), ageText(entry.stored, now), entry.order, entry.operation,
                     QString::number(entry.attempts), nameOf(entry.state).text.toString(), remarkOf(entry)});
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

QString progressBar(int total, int left)
{
    constexpr int width = 30;
    const int done = std::clamp(total - left, 0, std::max(total, 0));
    const int filled = total > 0 ? width * done / total : width;
    return u"[%1%2] %3/%4"_s.arg(QString(filled, u'#'), QString(width - filled, u'.'), QString::number(done),
                                 QString::number(total));
}

} // namespace till
