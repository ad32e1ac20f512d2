// `kvo-till queue`: the persistent queue for the people who look after it.
#pragma once

#include <queue/queueadmin.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace till {

/// What the person asks for; one action a call.
struct QueueRequest
{
    enum class Action { List, Show, Retry, RetryAll, Discard };

    Action action = Action::List;
    qint64 id = 0;       ///< For Show, Retry and Discard.
    QString reason = {}; ///< For Discard.
    bool json = false;
};

/// Carries the request out and returns the answer to print: a table or sentences in Russian, or JSON with the same
/// content. Credentials are hidden and telephone numbers masked in both. `now` is what ages are counted from. Throws
/// BasicException when the queue cannot be read or the entry does not allow the action.
QString answerTo(const QueueRequest &request, const QDateTime &now);

/// Entries as a table, oldest first, and as JSON.
QString entriesAsTable(const QList<QueueAdmin::Entry> &entries, const QDateTime &now);
QJsonObject entryAsJson(const QueueAdmin::Entry &entry);

/// "[#####.....] 5/10" for a queue that had `total` requests and has `left`.
QString progressBar(int total, int left);

} // namespace till
