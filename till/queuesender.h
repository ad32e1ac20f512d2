// What the till knows of the loyalty service: who sends the plugin's queued requests, and which settings there are.
#pragma once

#include <core/setting.h>
#include <queue/queuedrain.h>

#include <QtCore/QHash>
#include <QtCore/QUrl>

#include <chrono>

namespace till {

/// The owner under which the loyalty plugin stores its requests.
extern const QString loyaltyQueueOwner;

/// What the loyalty plugin and its client read from the configuration.
QList<Setting> loyaltySettings();

/// Sends to the loyalty service, with the settings of Singleton<Config> at the time of this call: its address and
/// credentials replace those that a request was stored with. The handler returns only when the service has accepted the
/// request: with a status of 2xx, or by saying "success": true. A refusal by the service is a QueueRefusal,
/// everything else a BasicException, so that the queue keeps the request.
QueueHandler makeLoyaltySender();

/// What the service can be asked without changing anything, addressed the way the plugin would.
struct LoyaltyQueries
{
    QUrl customer; ///< A GET searches for a card that nobody has.
    QUrl message;  ///< The message API; it sends by POST only, so that a GET is harmless.
    QHash<QString, QString> headers;
    std::chrono::milliseconds timeout{};
};
LoyaltyQueries loyaltyQueries();

/// Has the service send a text message. Throws BasicException when it does not.
void sendTextMessage(const QString &text, const QString &phone);

} // namespace till
