// The fault proxy does what its faults are called: what a till's client sees, and whether the service got the request.
#include "proxy.h"
#include "simulatorfixture.h"
#include "tests/support/golden.h"

#include <net/restclient.h>

#include <QtCore/QJsonObject>

using namespace Qt::Literals::StringLiterals;
using Error = QNetworkReply::NetworkError;

namespace sim {

static http::Response ask(int port)
{
    RestClient client;
    client.setTimeout(1000);
    const QJsonDocument body = QJsonDocument::fromJson(order("b", {line(1, "100.00")}).dump().c_str());
    client.request(QNetworkAccessManager::PostOperation,
                   QUrl(u"http://127.0.0.1:%1/api/ax/xpp/v1/createOrder"_s.arg(port)), body,
                   {{u"Authorization"_s, u"Basic dTpw"_s}, {u"Content-Type"_s, u"application/json"_s}});
    return client.response();
}

using FaultProxy = SimulatorTest;

TEST_F(FaultProxy, DoesWhatTheFaultIsCalled)
{
    const QString file = folder.filePath(u"record"_s);
    ProxyRecord record(file.toStdString());
    QString outcomes;
    int processed = 0;
    for (const ProxyFault &fault : allProxyFaults()) {
        SCOPED_TRACE(fault.name);
        ProxyFaults faults(0, 1, fault.name);
        Proxy proxy(port, faults, record);
        const int proxyPort = proxy.bind(0);
        const std::jthread serving([&proxy] { proxy.run(); });
        if (fault.name == "kept connection ends") {
            EXPECT_EQ(ask(proxyPort).status(), 200);
            ++processed;
        }
        const http::Response response = ask(proxyPort);
        if (fault.answer == ProxyFault::Answer::Refused) {
            EXPECT_EQ(ask(proxyPort).networkError(), Error::ConnectionRefusedError);
        }
        proxy.stop();
        const bool isGood = response.json().object().value(u"success"_s).toBool();
        outcomes += u"%1: status %2, %3, %4\n"_s.arg(
            QString::fromStdString(fault.name), QString::number(response.status()),
            response.networkError() == Error::NoError ? u"arrived"_s : u"failed"_s, isGood ? u"good"_s : u"not good"_s);
        processed += fault.processed ? 1 : 0;
        EXPECT_EQ(caller.requests()["counts"]["createOrder"], processed);
    }
    expectText(outcomes, u"simulator/proxy.txt"_s);
    const QByteArray lines = readFile(file);
    EXPECT_EQ(lines.count("\"fault\""), allProxyFaults().size());
    EXPECT_EQ(lines.count("{\"accepted\":true,\"basket\":\"b\","), processed);
}

TEST_F(FaultProxy, EndsTheConnectionWhenTheServiceIsGone)
{
    ProxyRecord record({});
    ProxyFaults none(0, 0, {});
    Proxy proxy(1, none, record); // no service has that port
    const int proxyPort = proxy.bind(0);
    const std::jthread serving([&proxy] { proxy.run(); });
    EXPECT_EQ(ask(proxyPort).networkError(), Error::RemoteHostClosedError);
    proxy.stop();
}

} // namespace sim
