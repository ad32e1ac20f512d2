// The fault proxy does what its faults are called: what the till sees, and whether the service has got the request.
#include "child.h"
#include "fault.h"
#include "socket.h"

#include <net/restclient.h>

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtCore/QThread>

using namespace Qt::Literals::StringLiterals;
using prove::Fault;
using prove::Socket;
using Error = QNetworkReply::NetworkError;

namespace {

constexpr int tillTimeout = 1000; // milliseconds

/// What the till's client must make of it.
Error expectedError(const Fault &fault)
{
    switch (fault.answer) {
    case Fault::Answer::Late:
    case Fault::Answer::Slow:
    case Fault::Answer::Refusal:
        return Error::NoError;
    case Fault::Answer::Dripping:
    case Fault::Answer::Nothing:
        return Error::TimeoutError;
    case Fault::Answer::Halved:
    case Fault::Answer::GatewayPage:
        return Error::UnknownContentError;
    case Fault::Answer::Empty:
        return Error::ProtocolFailure;
    case Fault::Answer::Cut:
    case Fault::Answer::Reset:
    case Fault::Answer::Closed:
    case Fault::Answer::Refused:
        return Error::RemoteHostClosedError;
    }
    return Error::UnknownNetworkError;
}

/// The service, and a proxy with one kind of fault for each exchange.
class Line
{
public:
    explicit Line(const std::string &fault)
    {
        m_service.start(
            {u"serve"_s, u"--database"_s, file(u"service.db"_s), u"--port"_s, QString::number(m_servicePort.port())});
        m_proxy.start({u"--port"_s, QString::number(m_port.port()), u"--service"_s,
                       QString::number(m_servicePort.port()), u"--rate"_s, u"1"_s, u"--only"_s,
                       QString::fromStdString(fault), u"--record"_s, file(u"record"_s)});
        for (int tries = 0; tries < 2000 && !isUp(); ++tries)
            QThread::msleep(5);
    }

    bool isUp() const
    {
        return Socket::connectTo(m_port.port()).isOpen() && Socket::connectTo(m_servicePort.port()).isOpen();
    }

    http::Response ask() const
    {
        RestClient client;
        client.setTimeout(tillTimeout);
        const QString url = u"http://127.0.0.1:%1/api/ax/xpp/v1/searchCustomer?Brand=&CardNumber=7770000000001"_s;
        client.request(QNetworkAccessManager::GetOperation, QUrl(url.arg(m_port.port())), {},
                       {{u"Authorization"_s, u"Basic Og=="_s}});
        return client.response();
    }

    qsizetype recorded(const QByteArray &text)
    {
        QFile record(file(u"record"_s));
        return record.open(QFile::ReadOnly) ? record.readAll().count(text) : -1;
    }

private:
    QString file(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    Socket m_port = Socket::boundTo(0);
    Socket m_servicePort = Socket::boundTo(0);
    prove::Child m_service{QStringLiteral(KVO_SIMULATOR), file(u"service.out"_s)};
    prove::Child m_proxy{QStringLiteral(KVO_FAULT_PROXY), file(u"proxy.out"_s)};
};

TEST(FaultProxy, DoesWhatTheFaultIsCalled)
{
    for (const Fault &fault : prove::allFaults()) {
        SCOPED_TRACE(fault.name);
        Line line(fault.name);
        EXPECT_TRUE(!fault.keptConnection || line.ask().status() == 200);
        const http::Response response = line.ask();
        const bool answered = expectedError(fault) == Error::NoError;
        EXPECT_EQ(response.networkError(), expectedError(fault));
        EXPECT_EQ(response.status(), !answered ? 0 : fault.status > 0 ? fault.status : 200);
        EXPECT_EQ(response.json().object().value(u"success").toBool(), answered && fault.status == 0);
        EXPECT_EQ(line.recorded("\"fault\""), 1);
        EXPECT_EQ(line.recorded("\"accepted\":true"), (fault.processed ? 1 : 0) + (fault.keptConnection ? 1 : 0));
    }
}

/// The port is closed for a moment, after each exchange anew.
TEST(FaultProxy, RefusesConnections)
{
    Line line("connection refused");
    Error error = Error::NoError;
    for (int tries = 0; tries < 100 && error != Error::ConnectionRefusedError; ++tries)
        error = line.ask().networkError();
    EXPECT_EQ(error, Error::ConnectionRefusedError);
}

} // namespace
