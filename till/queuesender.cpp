// Sends queued requests with the plugin's own client: the only place where the till knows the loyalty service.
#include "queuesender.h"

#include "client/interface.h"

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// A host that kept no record of refusals would have them logged and forgotten. This one sets them aside.
class QueueClient : public kvo::Interface
{
public:
    void checkForError(const http::Response &response, bool /*logOnly*/) const override
    {
        Interface::checkForError(response, false);
    }
};

} // namespace

const QString loyaltyQueueOwner = u"kvo"_s;

QueueDrain::Handler makeLoyaltySender()
{
    const auto client = QSharedPointer<QueueClient>::create();
    return [client](const QJsonObject &event) { client->requestFromQueue(event); };
}

} // namespace till
