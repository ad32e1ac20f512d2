// Each fault that the doctor can name is made for real: what it is called, and what is to be done about it.
#include "tests/support/file.h"
#include "tests/till/certificate.h"
#include "till/doctorhost.h"
#include "till/doctorqueue.h"
#include "till/doctorservice.h"

#include <core/singleton.h>
#include <queue/dbqueuebroker.h>

#include <gmock/gmock.h>
#include <httplib.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QLibraryInfo>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QTcpServer>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

#include <thread>

using namespace Qt::Literals::StringLiterals;
using namespace till::doctor;
using testing::HasSubstr;

namespace {

Finding of(const QList<Finding> &findings, const QString &check)
{
    for (const Finding &finding : findings) {
        if (finding.check == check)
            return finding;
    }
    ADD_FAILURE() << "no check " << check.toStdString();
    return {};
}

void expect(const QList<Finding> &findings, const QString &check, Verdict verdict, const char *found,
            const char *remedy)
{
    const Finding finding = of(findings, check);
    EXPECT_EQ(finding.verdict, verdict) << reportText(findings).toStdString();
    EXPECT_THAT(finding.found.toStdString(), HasSubstr(found));
    EXPECT_THAT(finding.remedy.toStdString(), HasSubstr(remedy));
}

constexpr auto failure = Verdict::Failure;
constexpr auto warning = Verdict::Warning;
constexpr auto ok = Verdict::Ok;

/// Answers like the loyalty service unless a test puts its own handler first.
class Service
{
public:
    using Handler = httplib::Server::Handler;

    explicit Service(const Handler &handler, const Certificate *certificate = nullptr)
        : m_server(certificate ? std::make_unique<httplib::SSLServer>(certificate->x509(), certificate->key())
                               : std::make_unique<httplib::Server>())
    {
        m_server->Get(".*", [handler](const httplib::Request &request, httplib::Response &response) {
            const bool customer = request.path == "/api/ax/xpp/v1/searchCustomer";
            const bool message = request.path == "/api/twofa/msg/v1/send";
            response.status = message ? 405 : 404;
            response.set_content(customer  ? R"({"success":false,"message":"no such card"})"
                                 : message ? R"({"success":false,"message":"POST"})"
                                           : R"({"success":false,"message":"no such address"})",
                                 "application/json");
            if (handler)
                handler(request, response);
        });
        m_server->set_keep_alive_max_count(100);
        m_server->set_tcp_nodelay(true);
        m_port = m_server->bind_to_any_port("127.0.0.1");
        m_thread = std::thread([this] { m_server->listen_after_bind(); });
        while (!m_server->is_running())
            std::this_thread::yield(); // before that it cannot be stopped
    }
    ~Service()
    {
        m_server->stop();
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(Service)

    QByteArray port() const { return QByteArray::number(m_port); }

private:
    std::unique_ptr<httplib::Server> m_server;
    std::thread m_thread;
    int m_port = 0;
};

Service::Handler page(int status, const std::string &body, const char *type = "application/json")
{
    return [=](const httplib::Request &, httplib::Response &response) {
        response.status = status;
        response.set_content(body, type);
    };
}

} // namespace

class DoctorTest : public testing::Test
{
protected:
    ~DoctorTest() override { Singleton<Config>::replace({}); }

    QList<Finding> examineHost(const QByteArray &ini, qint64 spaceWanted = 0)
    {
        writeFile(m_file, ini.contains("dataFolder") ? ini : "[Host]\ndataFolder = " + path(u"data"_s) + '\n' + ini);
        return examine(hostChecks(m_file, spaceWanted));
    }

    QList<Finding> examineService(const QByteArray &ini, const QString &trustFile = {})
    {
        writeFile(m_file, "[Kvo]\nbrand = B\n" + ini);
        return examine(hostChecks(m_file).mid(0, 1) + serviceChecks({}, trustFile));
    }

    QByteArray path(const QString &name) const { return QFile::encodeName(m_folder.filePath(name)); }

    char m_name[5] = "test";
    char *m_arguments[1] = {m_name};
    int m_count = 1;
    const QCoreApplication m_application{m_count, m_arguments};
    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath(u"till.ini"_s);
};

TEST_F(DoctorTest, NamesWhatIsWrongOnThisMachine)
{
    writeFile(m_folder.filePath(u"file"_s), "x");
    writeFile(m_folder.filePath(u"text/libKvo.so"_s), "no plugin");
    writeFile(m_folder.filePath(u"other/libKvo.so"_s),
              readFile(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/sqldrivers/libqsqlite.so"_s));
    const auto plugin = [this](const QString &name) { return "[Till]\npluginFolder = " + path(name); };
    const struct
    {
        QString check;
        QByteArray ini;
        Verdict verdict;
        const char *found;
        const char *remedy;
    } cases[] = {
        {u"configuration file"_s, "dataFolder", failure, "is not a configuration", "name = value"},
        {u"access to it"_s, "[Kvo]\npassword = p", warning, "every user of this machine", "chmod o-r"},
        {u"keys"_s, "[Kvo]\nhots = x", failure, "line 4, Kvo:hots: unknown key, did you mean Kvo:host?", "Correct"},
        {u"keys"_s, "[kvo]\nhost = x", failure, "unknown section, did you mean Kvo?", "Correct"},
        {u"keys"_s, "[Kvo]\ntimeout = x", ok, "all are known", ""},
        {u"values"_s, "[Kvo]\nverificationLimit = 0,5", failure, "Kvo:verificationLimit: use a point: 0.5", "Correct"},
        {u"values"_s, "[Kvo]\ntimeout = x", failure, "\"x\" is not a number 1 ... 600000", "Correct"},
        {u"values"_s, "[Kvo]\ntimeout = 0", failure, "0 is not in the range 1 ... 600000", "Correct"},
        {u"values"_s, "[Queue]\ndriver = X", failure, "\"X\" is none of QSQLITE, QPSQL", "Correct"},
        {u"values"_s, "[Kvo]\nhost = x", failure, "not an address like http[s]://HOST[:PORT]", "Correct"},
        {u"values"_s, "[Kvo]\nverificationMessage = x", failure, "%1 is missing", "Correct"},
        {u"log"_s, "[Log]\nfile = " + path(u"file/x/log"_s), failure, "does not exist", "Log:file"},
        {u"log"_s, "[Log]\nfile = " + m_folder.path().toUtf8(), failure, "is a folder", "Log:file"},
        {u"plugin"_s, plugin(u"none"_s), failure, "libKvo.so does not exist", "Till:pluginFolder"},
        {u"plugin"_s, plugin(u"text"_s), failure, "is not a plugin of this Qt", "Till:pluginFolder"},
        {u"plugin"_s, plugin(u"other"_s), failure, "is a plugin for org.qt-project", "Till:pluginFolder"},
        {u"data folder"_s, "[Host]\ndataFolder = " + path(u"file/x"_s), failure, "cannot be made", "Host:dataFolder"},
        {u"data folder"_s, "[Host]\ndataFolder = /proc", failure, "no file can be written", "Host:dataFolder"},
        {u"data folder"_s, "[Host]\ndataFolder = " + path(u"text"_s), warning, "open to other users", "chmod 0700"},
        {u"data folder"_s, "", ok, "can be written", ""},
    };
    for (const auto &[check, ini, verdict, found, remedy] : cases) {
        SCOPED_TRACE(check.toStdString() + ": " + ini.constData());
        expect(examineHost(ini), check, verdict, found, remedy);
    }
    expect(examineHost({}, qint64{1} << 60), u"disk space"_s, warning, "MiB are free", "Make room");
    expect(examine(hostChecks(u"/nowhere"_s)), u"configuration file"_s, failure, "does not exist", "--config");
    expect(examine(hostChecks(m_folder.path())), u"configuration file"_s, failure, "cannot be read", "chmod");
}

TEST_F(DoctorTest, NamesWhatIsWrongWithTheService)
{
    const auto only = [](const char *ending, const Service::Handler &handler) {
        return [=](const httplib::Request &request, httplib::Response &response) {
            if (QByteArrayView(request.path).endsWith(ending))
                handler(request, response);
        };
    };
    const auto closing = [](const httplib::Request &, httplib::Response &response) {
        response.set_header("Connection", "close");
    };
    const auto oldDate = [](const httplib::Request &, httplib::Response &response) {
        response.set_header("Date", "Sun, 06 Nov 1994 08:49:37 GMT");
    };
    const char refused[] = R"({"success":false,"message":"brand unknown"})";
    const struct
    {
        QString check;
        Service::Handler handler;
        Verdict verdict;
        const char *found;
        const char *remedy;
        QByteArray ini{};
    } cases[] = {
        {u"loyalty API"_s, {}, ok, "no such card", ""},
        {u"message API"_s, {}, ok, "status 405", ""},
        {u"kept connections"_s, {}, ok, "are kept", ""},
        {u"clock"_s, {}, ok, "does not tell", ""},
        {u"answer"_s, page(200, "<html>Welcome", "text/html"), failure, "status 200 with a web page", "portal"},
        {u"answer"_s, page(200, "Welcome", "text/plain"), failure, "without the service's JSON", "Kvo:path"},
        {u"answer"_s, page(503, "<html>", "text/html"), failure, "status 503 from a gateway", "run the service"},
        {u"answer"_s, page(407, ""), failure, "from a proxy", "directly"},
        {u"answer"_s, page(302, ""), failure, "a redirect", "Kvo:host"},
        {u"login"_s, page(401, R"({"success":false})"), failure, "refuses user \"me\" (status 401)", "Kvo:password",
         "user = me\n"},
        {u"loyalty API"_s, {}, failure, "does not know the address", "Kvo:path", "path = /elsewhere\n"},
        {u"loyalty API"_s, page(400, refused), failure, "\"brand unknown\"", "Kvo:brand"},
        {u"loyalty API"_s, page(500, refused), failure, "the service fails", "run the service"},
        {u"loyalty API"_s, {}, warning, "no brand", "Kvo:brand", "brand =\n"},
        {u"message API"_s, only("send", page(200, "<html>")), failure, "status 200 in place", "Kvo:verificationPath"},
        {u"message API"_s, only("send", page(403, "{}")), failure, "refuses the user", "Kvo:user"},
        {u"message API"_s, {}, warning, "may be no message API", "--sms", "verificationPath = /elsewhere\n"},
        {u"clock"_s, oldDate, warning, "ahead of the service", "Set the clock"},
        {u"kept connections"_s, closing, warning, "10 of 10 exchanges", "keep connections"},
    };
    for (const auto &[check, handler, verdict, found, remedy, ini] : cases) {
        SCOPED_TRACE(check.toStdString() + ": " + found);
        const Service service(handler);
        expect(examineService("host = http://127.0.0.1:" + service.port() + '\n' + ini), check, verdict, found, remedy);
    }
}

TEST_F(DoctorTest, NamesWhyNoConnectionComesAbout)
{
    const QByteArray closedPort = Service({}).port();
    expect(examineService("host = x"), u"service address"_s, failure, "not an address", "https://");
    expect(examineService("host = http://no-such.invalid"), u"encryption"_s, warning, "plain http to no-such", "https");
    expect(examineService("host = http://no-such.invalid"), u"service name"_s, failure, "no-such.invalid", "DNS");
    const auto findings = examineService("host = http://127.0.0.1:" + closedPort);
    expect(findings, u"connection"_s, failure, "(Connection refused)", "firewall");
    expect(findings, u"round trips"_s, Verdict::Skipped, "needs \"answer\"", "");
}

TEST_F(DoctorTest, NamesDelays)
{
    // The answer and the queries of both APIs take 4 requests.
    const struct
    {
        int slowRequest;
        QByteArray timeout;
        QString check;
        Verdict verdict;
        const char *found;
        const char *remedy;
    } cases[] = {
        {1, "500", u"answer"_s, failure, "timed out", "Kvo:timeout"},
        {6, "500", u"round trips"_s, failure, "of 10 failed", "bad line"},
        {6, "3000", u"round trips"_s, warning, "10 exchanges: median", "The cashier waits"},
    };
    for (const auto &[slowRequest, timeout, check, verdict, found, remedy] : cases) {
        std::atomic<int> requests = 0;
        const Service service([&requests, slow = slowRequest](const httplib::Request &, httplib::Response &) {
            if (++requests == slow)
                std::this_thread::sleep_for(std::chrono::milliseconds(1600));
        });
        expect(examineService("timeout = " + timeout + "\nhost = http://127.0.0.1:" + service.port()), check, verdict,
               found, remedy);
    }
}

TEST_F(DoctorTest, NamesWhatIsWrongWithTls)
{
    const QString trusted = m_folder.filePath(u"trusted.pem"_s);
    const struct
    {
        const char *names;
        int fromDay;
        int toDay;
        bool trust;
        Verdict verdict;
        const char *found;
        const char *remedy;
    } cases[] = {
        {"IP:127.0.0.1", -1, 100, true, ok, "TLSv1.3, certificate of CN = doctor, 99 days left", ""},
        {"IP:127.0.0.1", -1, 10, true, warning, "9 days left", "renewed in time"},
        {"IP:127.0.0.1", -2, -1, true, failure, "expired", "renewed"},
        {"IP:127.0.0.1", 1, 2, true, failure, "not yet valid", "clock"},
        {"DNS:other.example", -1, 100, true, failure, "certificate", "Use the name"},
        {"IP:127.0.0.1", -1, 100, false, failure, "self-signed", "update-ca-certificates"},
    };
    for (const auto &[names, fromDay, toDay, trust, verdict, found, remedy] : cases) {
        SCOPED_TRACE(found);
        const Certificate certificate(names, fromDay, toDay);
        writeFile(trusted, certificate.pem());
        const Service service({}, &certificate);
        expect(examineService("host = https://127.0.0.1:" + service.port(), trust ? trusted : QString()), u"TLS"_s,
               verdict, found, remedy);
    }
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    expect(examineService("timeout = 300\nhost = https://127.0.0.1:" + QByteArray::number(silent.serverPort())),
           u"TLS"_s, failure, "time", "scheme and port");
    const Service plain({});
    expect(examineService("host = https://127.0.0.1:" + plain.port()), u"TLS"_s, failure, "", "scheme and port");
}

TEST_F(DoctorTest, NamesWhatIsWrongWithTheQueue)
{
    const auto examineQueue = [this](const QByteArray &queue) {
        writeFile(m_file, "[Host]\ndataFolder = " + path(u"data"_s) + "\n[Queue]\n" + queue);
        return examine(hostChecks(m_file).mid(0, 1) + queueChecks());
    };
    expect(examineQueue({}), u"queue"_s, ok, "does not exist yet", "");
    DBQueueBroker().push(u"kvo"_s, {{u"url"_s, u"http://a/postOrder"_s}}, u"1"_s);
    expect(examineQueue({}), u"queue"_s, ok, "1 wait, the oldest since", "");
    expect(examineQueue({}), u"refused requests"_s, ok, "none", "");
    const auto sql = [this](const QString &statement) {
        {
            QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"doctor"_s);
            database.setDatabaseName(m_folder.filePath(u"data/queue.db"_s));
            EXPECT_TRUE(database.open());
            QSqlQuery query(database);
            EXPECT_TRUE(query.exec(statement));
        }
        QSqlDatabase::removeDatabase(u"doctor"_s);
    };
    sql(u"UPDATE event SET created = created - 7200000"_s);
    expect(examineQueue({}), u"queue"_s, warning, "1 wait", "kvo-till drain");
    sql(u"UPDATE event SET state = 'dead', rejected = 1"_s);
    expect(examineQueue({}), u"refused requests"_s, warning, "1 refused for good", "retry or discard");
    writeFile(m_folder.filePath(u"data/other.db"_s), QByteArray(9999, 'x'));
    const auto damaged = examineQueue("database = other.db");
    expect(damaged, u"queue"_s, failure, "other.db cannot be used", "docs/queue.md");
    EXPECT_NE(of(damaged, u"queue"_s).quote, QString());
    expect(examineQueue("driver = QPSQL\ndatabase = kvo\nhost = " + path(u"no-socket"_s)), u"queue"_s, failure,
           "cannot be used", "[Queue]");
}

TEST_F(DoctorTest, ReportsForEyesAndMachines)
{
    const auto findings = examineHost("[Till]\npluginFolder = /nowhere\n[Kvo]\nhots = x");
    EXPECT_EQ(exitStatus(findings), 2);
    EXPECT_THAT(reportText(findings).toStdString(),
                HasSubstr("\nfailure  plugin: /nowhere/libKvo.so does not exist. Install the plugin"));
    const QJsonObject json = QJsonDocument::fromJson(reportJson(findings).toUtf8()).object();
    EXPECT_EQ(json.value(u"status"_s), 2);
    EXPECT_EQ(json.value(u"checks"_s).toArray().at(2).toObject().value(u"verdict"_s), u"failure"_s);
    EXPECT_EQ(exitStatus({{Verdict::Ok, {}}, {Verdict::Warning, {}}}), 1);
}
