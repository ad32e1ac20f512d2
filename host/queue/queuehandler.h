// How stored events are sent: what their owner gives to the drain.
#pragma once

#include <core/basicexception.h>
#include <poshost_export.h>

#include <QtCore/QJsonObject>

#include <functional>

/// Thrown by a handler to say that the receiver has refused the event for good. Sending it again would not help: the
/// event becomes a dead letter. The text is the receiver's reason.
class POSHOST_EXPORT QueueRefusal : public BasicException
{
public:
    using BasicException::BasicException;
};

/// Sends one event. Returns when the receiver has accepted it; throws QueueRefusal when it was refused for good, any
/// other exception to have it tried again. Called on the drain's thread; must not call the drain.
using QueueHandler = std::function<void(const QJsonObject &event)>;
