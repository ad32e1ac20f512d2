// Sends queued requests with the plugin's own client: the only place where the till knows the loyalty service.
#include "queuesender.h"

#include "client/interface.h"
#include "client/refusal.h"
#include "client/settings.h"

#include <core/basicexception.h>

#include <QtCore/QJsonObject>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

class QueueClient : public kvo::Interface
{
public:
    /// A request may have waited while the password was changed or the service moved, so it goes to the current address
    /// with the current credentials.
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

    /// The base class only logs refusals, for hosts that cannot keep them; this queue keeps them as dead letters. An
    /// answer that says neither yes nor no is a gateway's, not the service's: the request stays queued.
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

/// Records a request instead of sending it.
class Draft : public kvo::Interface
{
public:
    http::Response request(const kvo::Request &request, bool /*logOnly*/) const override
    {
        m_last = request;
        return {};
    }
    const kvo::Request &last() const { return m_last; }
    std::chrono::milliseconds time() const { return std::chrono::milliseconds(timeout); }

private:
    mutable kvo::Request m_last;
};

Setting::Kind kindOf(kvo::Setting::Kind kind)
{
    switch (kind) {
    case kvo::Setting::Kind::Whole:
        return Setting::Kind::Whole;
    case kvo::Setting::Kind::Decimal:
        return Setting::Kind::Decimal;
    case kvo::Setting::Kind::Address:
        return Setting::Kind::Address;
    case kvo::Setting::Kind::Path:
        return Setting::Kind::Path;
    case kvo::Setting::Kind::Text:
        break;
    }
    return Setting::Kind::Text;
}

} // namespace

const QString loyaltyQueueOwner = u"kvo"_s;

QList<Setting> loyaltySettings()
{
    QList<Setting> list;
    for (const kvo::Setting &setting : kvo::settings) {
        list.append({.key = setting.key.toString(),
                     .kind = kindOf(setting.kind),
                     .defaultValue = setting.defaultValue.toString(),
                     .meaning = setting.meaning.toString(),
                     .example = setting.example.toString(),
                     .lowest = setting.lowest,
                     .highest = setting.highest,
                     .placeholder = setting.placeholder.toString()});
    }
    return list;
}

QueueHandler makeLoyaltySender()
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

LoyaltyQueries loyaltyQueries()
{
    const Draft client;
    client.searchCustomer(u"0"_s, ECardNumberType::Manual);
    // A copy: the next call replaces it. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const kvo::Request customer = client.last();
    client.verification({}, {});
    return {customer.url, client.last().url, customer.headers, client.time()};
}

void sendTextMessage(const QString &text, const QString &phone)
{
    kvo::Interface().verification(text, phone);
}

} // namespace till
