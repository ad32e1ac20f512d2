// An event of the queue, as a later run of the till reads it.
#include "client/request.h"
#include "fuzz.h"

void fuzz(const QByteArray &input)
{
    using kvo::Request;
    const QJsonObject stored = Request::fromQueueEvent(QJsonDocument::fromJson(input).object()).toQueueEvent();
    require(Request::fromQueueEvent(stored).toQueueEvent() == stored);
}
