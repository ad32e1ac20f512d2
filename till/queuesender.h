// Who sends the requests that the loyalty plugin has put on the host's queue.
#pragma once

#include <queue/queuedrain.h>

namespace till {

/// The owner under which the loyalty plugin stores its requests.
extern const QString loyaltyQueueOwner;

/// Sends to the loyalty service, with the settings of Singleton<Config> at the time of this call. What the service
/// refuses is thrown, so that the queue keeps it.
QueueDrain::Handler makeLoyaltySender();

} // namespace till
