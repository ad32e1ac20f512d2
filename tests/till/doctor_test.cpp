// Each fault that the doctor can name is made for real: the line that it prints, with the remedy.
#include "tests/support/checkbuilder.h"
#include "tests/support/file.h"
#include "tests/support/golden.h"
#include "tests/support/service.h"
#include "tests/support/sql.h"
#include "tests/support/test.h"
#include "till/doctorhost.h"
#include "till/doctorservice.h"
#include "till/doctorstore.h"

#include <checks/checkstore.h>
#include <core/basicexception.h>
#include <core/config.h>
#include <core/singleton.h>
#include <queue/dbqueuebroker.h>

#include <sys/stat.h>

#include <QtCore/QLibraryInfo>
#include <QtCore/QRegularExpression>

using namespace till::doctor;

namespace {

using Handler = httplib::Server::Handler;

/// Answers like the loyalty service, with what a handler makes of it.
Handler loyalty(const Handler &handler = {})
{
    return [handler](const httplib::Request &request, httplib::Response &response) {
        const bool isSending = request.path == "/api/twofa/msg/v1/send";
        const bool isKnown = isSending || request.path == "/api/ax/xpp/v1/searchCustomer";
        response.status = isSending ? 405 : 404;
        response.set_content(R"({"success":false,"message":"no such\u001b[1m )" +
                                 std::string(isKnown ? "card\"}" : "address\"}"),
                             "application/json");
        if (handler)
            handler(request, response);
    };
}

Handler page(int status, const std::string &body, const char *type = "application/json", const char *ending = "")
{
    return [=](const httplib::Request &request, httplib::Response &response) {
        if (!QByteArrayView(request.path).endsWith(ending))
            return;
        response.status = status;
        response.set_content(body, type);
    };
}

Handler header(const char *name, const char *value)
{
    return [=](const httplib::Request &, httplib::Response &response) { response.set_header(name, value); };
}

/// Takes its time for one request. The answer and the queries of both APIs are 4.
Handler slow(int request)
{
    return [request, requests = std::make_shared<std::atomic<int>>(0)](const auto &, auto &) {
        if (++*requests == request)
            std::this_thread::sleep_for(std::chrono::milliseconds(1600));
    };
}

/// A line of the report from its beginning; "*" stands for anything.
void expectLine(const QString &report, const QString &line)
{
    const QString pattern = u'^' + QRegularExpression::escape(line).replace(u"\\*"_s, u".*"_s);
    EXPECT_TRUE(QRegularExpression(pattern, QRegularExpression::MultilineOption).match(report).hasMatch())
        << line.toStdString() << "\n"
        << report.toStdString();
}

} // namespace

struct DoctorTest : testing::Test
{
    DoctorTest() { ::umask(022); }
    ~DoctorTest() override { Singleton<Config>::replace({}); }

    /// What the doctor finds with a sound configuration to which `ini` is added; a section that comes twice is joined.
    QString report(const QByteArray &host, const QByteArray &ini, const QString &phone = {})
    {
        writeFile(m_file, "[Host]\ndataFolder = " + path("data") + "\n[Kvo]\nbrand = B\nhost = " + host + '\n' + ini);
        return reportText(examine(hostChecks(m_file) + storeChecks() + serviceChecks(phone)));
    }
    QString report(const QByteArray &ini) { return report("http://" + m_service.address(), ini); }

    QByteArray path(const char *name) const { return QFile::encodeName(m_folder.filePath(QLatin1StringView(name))); }

    void write(const char *name, const QByteArray &bytes) { writeFile(QFile::decodeName(path(name)), bytes); }

    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath(u"till.ini"_s);
    const Service m_service{loyalty()};
};

TEST_F(DoctorTest, NamesEachFaultAndItsRemedy)
{
    write("file", QByteArray(9999, 'x'));
    write("data/any", {});
    write("stranger/libKvo.so", readFile(QStringLiteral(KVO_STRANGER)));
    write("incomplete/libKvo.so", readFile(QStringLiteral(KVO_STRANGER)).replace("libQt6Core.so.6", "libQt6None.so.6"));
    write("driver/libKvo.so", readFile(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/sqldrivers/libqsqlite.so"_s));
    const QString sound = report({});
    expectLine(sound, u"warning  goods: *data/goods.json does not exist*Till:goods"_s);
    expectCases(u"till/doctor.txt"_s, [&](QByteArray ini) {
        ini.replace("@", path("")).replace("TOO-LONG", QByteArray("x.").repeated(200)); // no name server is asked
        QStringList faults = report(ini).split(u'\n');
        faults.removeIf([&](const QString &line) { return line.startsWith(u"ok") || sound.contains(line); });
        return faults.join(u'\n');
    });
    const struct
    {
        const char *line;
        QByteArray ini = {};
        Handler handler = {};
    } cases[] = {
        {"ok       keys: all are known", "timeout = x"},
        {"ok       goods: *goods.json has 30 articles\n", "[Till]\ngoods = " KVO_GOODS},
        {"ok       queue: *does not exist yet*", "[Queue]\ndriver = qsqlite"},
        {"failure  connection: *(Connection refused)*firewall", "host = http://" + Service({}).address()},
        {"failure  answer: status 200 with a web page*portal", {}, page(200, "Welcome", "text/html")},
        {"failure  answer: status 200 without the service's JSON*Kvo:path", {}, page(200, "Welcome", "text/plain")},
        {"failure  answer: status 503 from a gateway*run the service", {}, page(503, "<html>", "text/html")},
        {"failure  answer: status 429: the service is overloaded*run the service", {}, page(429, "{}")},
        {"failure  answer: status 407 from a proxy*directly", {}, page(407, "")},
        {"failure  answer: status 302, a redirect*Kvo:host", {}, page(302, "")},
        {"failure  answer: *timed out*Kvo:timeout", "timeout = 500", slow(1)},
        {"failure  login: the service refuses user \"me\" (status 401)*Kvo:password", "user = me", page(401, "{}")},
        {"ok       loyalty API: *\"no such card\""},
        {"failure  loyalty API: *\"brand unknown\"*Kvo:brand", {}, page(400, R"({"message":"brand unknown"})")},
        {"warning  loyalty API: * refused (status 200, \"no\")*Kvo:brand",
         {},
         page(200, R"({"success":false,"message":"no"})")},
        {"failure  loyalty API: the service fails*run the service", {}, page(500, R"({"a":1})")},
        {"failure  message API: *timed out*Kvo:verificationPath", "timeout = 500", slow(3)},
        {"failure  message API: status 200 in place*Kvo:verificationPath", {}, page(200, "<", "text/plain", "send")},
        {"failure  message API: *refuses the user*Kvo:user", {}, page(403, "{}", "application/json", "send")},
        {"warning  clock: *ahead of the service*Set the clock", {}, header("Date", "Sun, 06 Nov 1994 08:49:37 GMT")},
        {"warning  clock: *behind the service*Set the clock", {}, header("Date", "Sun, 06 Nov 2061 08:49:37 GMT")},
        {"failure  round trips: exchange 2 of 10 failed*bad line", "timeout = 500", slow(6)},
        {"warning  round trips: 10 exchanges: median*The cashier waits", "timeout = 3000", slow(6)},
        {"warning  kept connections: 10 of 10 exchanges*keep connections", {}, header("Connection", "close")},
    };
    for (const auto &[line, ini, handler] : cases) {
        const Service service(loyalty(handler));
        expectLine(handler ? report("http://" + service.address(), ini) : report(ini), QString::fromUtf8(line));
    }
    expectLine(report("http://" + m_service.address(), {}, u"+7900"_s),
               u"failure  text message: *not taken the message*Kvo:verificationPath*\n *no such card"_s);
    expectLine(reportText(examine(hostChecks(m_file, qint64{1} << 60))), u"warning  disk space: *MiB*Make room"_s);
    expectLine(reportText(examine(hostChecks(u"/nowhere"_s))), u"failure  *: /nowhere does not exist*--config"_s);
    expectLine(reportText(examine(hostChecks(m_folder.path()))), u"failure  *: * cannot be read*chmod"_s);
    writeFile(m_file, "host = x\n");
    expectLine(reportText(examine(hostChecks(m_file))), u"failure  keys: line 1, *: stands before the first section"_s);
}

TEST_F(DoctorTest, NamesWhatIsWrongWithTls)
{
    const auto expect = [this](const QString &line, const char *names, int fromDay, int toDay, bool isTrusted = true) {
        const Certificate certificate(names, fromDay, toDay, isTrusted ? &trustedAuthority() : nullptr);
        const Service service(loyalty(), &certificate);
        expectLine(report("https://" + service.address(), {}), line);
    };
    expect(u"ok       TLS: TLSv1.3, certificate of CN = doctor, 99 days left\n"_s, "IP:127.0.0.1", -1, 100);
    expect(u"warning  TLS: *9 days left*renewed in time"_s, "IP:127.0.0.1", -1, 10);
    expect(u"failure  TLS: *expired*renewed"_s, "IP:127.0.0.1", -2, -1);
    expect(u"failure  TLS: *not yet valid*clock"_s, "IP:127.0.0.1", 1, 2);
    expect(u"failure  TLS: *certificate*Use the name"_s, "DNS:other.example", -1, 100);
    expect(u"failure  TLS: *self-signed*update-ca-certificates"_s, "IP:127.0.0.1", -1, 100, false);
    expectLine(report("https://" + m_service.address(), {}), u"failure  TLS: *scheme and port"_s);
    const Service secure(loyalty(), &trustedAuthority());
    expectLine(report("http://" + secure.address(), {}), u"failure  answer: *scheme and port"_s);
}

TEST_F(DoctorTest, LooksIntoQueueAndCheckStore)
{
    const QString queue = m_folder.filePath(u"data/queue.db"_s);
    const QString checks = m_folder.filePath(u"data/checks.db"_s);
    const auto expectLines = [this](const QStringList &lines) {
        const QString found = report({});
        for (const QString &line : lines)
            expectLine(found, line);
    };
    expectLines({u"ok       queue: *does not exist yet"_s, u"ok       open check: none"_s});
    DBQueueBroker().push(u"kvo"_s, {{u"url"_s, u"http://a/postOrder"_s}}, u"1"_s);
    DBQueueBroker().push(u"kvo"_s, {{u"url"_s, u"http://a/postOrder"_s}}, u"2"_s);
    const auto check = builder::check({100});
    CheckStore().save(*builder::check({100}));
    CheckStore().park(u"no\nloyalty"_s);
    CheckStore().save(*check);
    expectLines({u"ok       queue: *2 waiting, the oldest since "_s, u"ok       refused requests: none"_s,
                 u"ok       open check: "_s + check->getIdentifier() + u", since 20"_s,
                 u"ok       checks put aside: *(no loyalty)"_s});
    runSql(queue, u"UPDATE event SET created = created - 7200000 WHERE id = 2"_s);
    runSql(checks, u"UPDATE sale SET since = since - 7200000"_s);
    expectLines({u"warning  queue: *2 waiting*kvo-till drain"_s, u"warning  open check: *kvo-till void"_s});
    runSql(queue, u"UPDATE event SET state = 'dead', rejected = 1 WHERE id = 2"_s);
    runSql(checks, u"UPDATE sale SET standing = 3 WHERE standing = 1"_s);
    expectLines({u"ok       queue: *1 waiting"_s, u"warning  checks put aside: closed, but*Mend the queue"_s});
    runSql(checks, u"UPDATE sale SET standing = 2 WHERE standing = 3"_s);
    expectLines({u"warning  refused requests: 1 refused for good*retry or discard"_s,
                 u"warning  checks put aside: cannot be read: *support"_s});
    runSql(checks, u"UPDATE part SET content = 'x' WHERE kind = 'goods'"_s);
    expectLines({u"failure  open check: *cannot be read*support*\n *"_s + check->getIdentifier()});
    write("data/checks.db", QByteArray(9999, 'x'));
    write("data/queue.db", QByteArray(9999, 'x'));
    expectLines({u"failure  open check: *checks.db cannot be read*support"_s, u"skipped  checks put aside"_s,
                 u"skipped  refused requests"_s});
}

TEST(Doctor, ReportsForEyesAndMachines)
{
    const auto findings = examine({
        {u"first"_s, {}, []() -> Finding { throw BasicException(u"one\ntwo\x1b[2J"_s); }},
        {u"second"_s, u"first"_s, [] { return Finding{}; }},
    });
    expectLine(reportText(findings),
               u"failure  first: the check could not be carried out*\n         one\n         two\n"_s);
    expectLine(reportJson(findings).simplified(),
               uR"({ "checks": [ { "check": "first", "found": "*", "message": "one\ntwo", "remedy": "The till*", )"
               uR"("verdict": "failure" *"skipped" * "status": 2 })"_s);
    EXPECT_EQ(exitStatus({{Verdict::Ok, {}}, {Verdict::Warning, {}}}), 1);
    EXPECT_EQ(exitStatus({}), 0);
}
