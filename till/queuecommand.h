// `kvo-till queue`: the persistent queue for the people who look after it.
#pragma once

#include <queue/queueadmin.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace till {

/// What the person asks for; one action a call.
struct QueueRequest
{
    enum class Action { List, Status, Show, Retry, RetryAll, Discard, Restore };

    Action action = Action::List;
    qint64 id = 0;                  ///< For actions on one request.
    QString reason = {};            ///< For Discard.
    QString state = {};             ///< For List: one of stateCodes().
    QueueAdmin::Filter filter = {}; ///< For List; its state is taken from `state`.
    qint64 maxWaiting = -1;         ///< For Status: more waiting requests are a fault; -1: any number is fine.
    qint64 maxAgeMinutes = -1;      ///< For Status: an older request is a fault; -1: any age is fine.
    bool json = false;
};

struct QueueAnswer
{
    QString text;       ///< To print: a table or sentences in Russian, or JSON with the same content.
    bool isFine = true; ///< False when Status has found dead letters or a threshold exceeded.
};

/// Carries the request out. Credentials are hidden, telephone and card numbers masked in the answer. `now` is what ages
/// are counted from. Throws BasicException when the queue cannot be read or the entry does not allow the action.
QueueAnswer answerTo(const QueueRequest &request, const QDateTime &now);

/// What --state and JSON call the states.
QStringList stateCodes();

/// The status in one sentence, and as JSON.
QString statusText(const QueueStatus &status);
QJsonObject statusAsJson(const QueueStatus &status, const QDateTime &now);

/// "[#####.....] 5/10" for a queue that had `total` requests and has `left`; empty when there were none.
QString progressBar(int total, int left);

} // namespace till
