// Who sends the requests that the loyalty plugin has put on the host's queue.
#pragma once

#include <queue/queuedrain.h>

namespace till {

/// The owner under which the loyalty plugin stores its requests.
extern const QString loyaltyQueueOwner;

/// Sends to the loyalty service, with the settings of Singleton<Config> at the time of this call: its address and
/// credentials replace those that a request was stored with. The handler returns only when the service has accepted the
/// request: with a status of 2xx, or by saying "success": true. A refusal by the service is a QueueRefusal,
/// everything else a BasicException, so that the queue keeps the request.
QueueDrain::Handler makeLoyaltySender();

} // namespace till
