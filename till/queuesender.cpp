// Sends queued requests with the plugin's own client: the only place where the till knows the loyalty service.
#include "queuesender.h"

#include "client/interface.h"
#include "client/refusal.h"

#include <core/basicexception.h>

#include <QtCore/QJsonObject>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

class QueueClient : public kvo::Interface
{
public:
    /// A request may have waited while the password was changed or the service moved: it goes where requests go now,
    /// with the credentials of now.
    http::Response request(const kvo::Request &stored, bool logOnly) const override
    {
        kvo::Request current = stored;
        if (const QUrl service = getUrl(QString()); service.errorString().isEmpty()) {
            current.url.setScheme(service.scheme());
            current.url.setAuthority(service.authority(QUrl::FullyEncoded));
        } else {
            current.url = service;
        }
        current.headers.insert(u"Authorization"_s, headers.value(u"Authorization"_s));
        return Interface::request(current, logOnly);
    }

    /// A host that kept no record of refusals would have them logged and forgotten. This one keeps them as dead
    /// letters. And a gateway's answer, which says neither yes nor no, is not the service's: the request stays.
    void checkForError(const http::Response &response, bool /*logOnly*/) const override
    {
        Interface::checkForError(response, false);
        const bool succeeded = response.status() >= 200 && response.status() < 300;
        const QJsonObject body = response.json().object();
        if (succeeded || body.value("success"_L1).toBool())
            return;
        const QString message = body.value("message"_L1).toString();
        throw BasicException(
            u"Запрос не принят, код ответа %1. %2"_s.arg(QString::number(response.status()), message).trimmed());
    }
};

} // namespace

const QString loyaltyQueueOwner = u"kvo"_s;

QueueDrain::Handler makeLoyaltySender()
{
    const auto client = QSharedPointer<QueueClient>::create();
    return [client](const QJsonObject &event) {
        try {
            client->requestFromQueue(event);
        } catch (const kvo::Refusal &refusal) {
            throw QueueRefusal(refusal.text());
        }
    };
}

} // namespace till
