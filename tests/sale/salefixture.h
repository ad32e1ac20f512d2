// A shop for whole sales: the till with the loaded plugin and the service's stand-in as processes of their own, on
// loopback and on a fresh folder. Every wait has a condition and a bound.
#pragma once

#include "tests/support/file.h"
#include "tests/support/test.h"

#include <net/restclient.h>

#include <sys/prctl.h>
#include <sys/stat.h>

#include <QtCore/QProcess>

#include <csignal>

/// A scenario with one check: bread for 45.50 and milk twice for 91.00, 227.50 in all, up to 113.75 of it in points.
inline QByteArray check(const QByteArray &steps, const QByteArray &expect = "{}", const QByteArray &answers = "{}")
{
    return R"({"checks": [{"goods": [
        {"barcode": "1", "name": "Хлеб", "price": "45.50"},
        {"barcode": "2", "name": "Молоко", "price": "91.00", "quantity": 2}], "steps": [)" +
           steps + R"(], "answers": )" + answers + R"(, "expect": )" + expect + "}]}";
}

struct SaleTest : testing::Test
{
    SaleTest()
    {
        ::umask(022);
        startService();
    }
    ~SaleTest() override
    {
        stopService();
        if (HasFailure())
            std::fputs(readFile(folder.filePath(u"till.log"_s)).constData(), stderr);
    }

    /// Starts the service, on the port it had before, or on a free one.
    void startService(const QStringList &options = {})
    {
        m_service.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_service.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }); // ends with a killed test
        const QStringList port{u"--port"_s, QString::number(m_port), u"--port-file"_s, folder.filePath(u"port"_s)};
        m_service.start(m_simulator, QStringList{u"serve"_s} + m_ledger + port + options);
        ASSERT_TRUE(m_service.waitForStarted(patience));
        ASSERT_TRUE(m_service.waitForReadyRead(patience)) << "the service does not say that it listens";
        m_port = readFile(folder.filePath(u"port"_s)).trimmed().toInt();
        const QByteArray here = QFile::encodeName(folder.path());
        writeFile(ini, "[Host]\ndataFolder = " + here + "/data\n[Log]\nfile = " + here + "/till.log\n" +
                           "[Kvo]\nhost = http://127.0.0.1:" + QByteArray::number(m_port) +
                           "\ntimeout = 20000\nbrand = B\nonlineStore = S\nterminal = T\nverificationLimit = 100\n");
    }

    /// Gives the till further settings.
    void configure(const QByteArray &lines) { writeFile(ini, readFile(ini) + lines); }

    /// To a folder without plugin.
    void movePluginFolder() { configure("[Till]\npluginFolder = " + QFile::encodeName(folder.path()) + '\n'); }

    void stopService()
    {
        if (m_service.state() == QProcess::NotRunning)
            return;
        recordExchanges();
        m_service.terminate();
        EXPECT_TRUE(m_service.waitForFinished(patience));
    }

    /// Has the service do something wrong, see the simulator's README.
    void addFault(const QJsonObject &fault) { exchange("POST", u"/sim/faults"_s, fault); }

    /// How many requests of this method the service has received since it was started.
    int requestsOf(const QString &method)
    {
        return exchange("GET", u"/sim/requests"_s).value(u"counts"_s).toObject().value(method).toInt();
    }

    /// Has the till play a scenario, JSON text or the name of a sample scenario, and expects `status`; returns what it
    /// printed.
    QString runTill(const QByteArray &scenario, int status = 0, const QStringList &options = {})
    {
        QString file = folder.filePath(u"scenario.json"_s);
        if (scenario.startsWith('{'))
            writeFile(file, scenario);
        else
            file = QStringLiteral(KVO_SCENARIOS) + u'/' + QString::fromUtf8(scenario);
        const QString code = u"\"%1\" outbox --database \"%2\" --last --code"_s.arg(m_simulator, ledger);
        return askTill(QStringList{u"run"_s, file, u"--code-command"_s, code} + options, {}, status);
    }

    /// What `loyalty-sim` prints for a command on the ledger.
    QByteArray askService(const QStringList &command) const { return run(m_simulator, command + m_ledger); }

    /// What `kvo-till` prints for another command, with `input` typed in.
    QString askTill(const QStringList &command, const QByteArray &input = {}, int status = 0) const
    {
        return QString::fromUtf8(run(m_till, command + m_config, input, status));
    }

    /// What `kvo-till` shows in a terminal for a command without arguments.
    QString askTerminal(const QString &command) const
    {
        return QString::fromUtf8(
            run(u"script"_s, {u"-qec"_s, u"'%1' %2 --config '%3'"_s.arg(m_till, command, ini), u"/dev/null"_s}));
    }

    /// Runs `kvo-till drain` and expects it to deliver everything.
    void drain() { askTill({u"drain"_s, u"--seconds"_s, u"25"_s}); }

    /// Expects the till's journal and the service's ledger to agree, with this many checks in the journal.
    void expectEqualBooks(int checks)
    {
        const QByteArray lines = askTill({u"journal"_s, u"--json"_s}).toUtf8();
        EXPECT_EQ(lines.count('\n'), checks);
        compareBooks(lines);
    }

    /// `journal`: JSON lines.
    void compareBooks(const QByteArray &journal)
    {
        const QString file = folder.filePath(u"journal.jsonl"_s);
        writeFile(file, journal);
        askService({u"compare"_s, u"--journal"_s, file});
        askService({u"check"_s});
    }

    QTemporaryDir folder;
    const QString ini = folder.filePath(u"till.ini"_s);
    const QString ledger = folder.filePath(u"service.db"_s);

private:
    QJsonObject exchange(const QByteArray &method, const QString &path, const QJsonObject &body = {}) const
    {
        RestClient client;
        client.request(method == "GET" ? QNetworkAccessManager::GetOperation : QNetworkAccessManager::PostOperation,
                       QUrl(u"http://127.0.0.1:%1%2"_s.arg(QString::number(m_port), path)), QJsonDocument(body),
                       {{u"Content-Type"_s, u"application/json"_s}});
        EXPECT_EQ(client.response().status(), 200) << client.response().json().toJson().constData();
        return client.response().json().object();
    }

    /// Keeps what was exchanged for the check of the contract.
    void recordExchanges()
    {
        const QString records = qEnvironmentVariable("KVO_RECORDS");
        if (records.isEmpty() || !QDir().mkpath(records))
            return;
        const auto *test = testing::UnitTest::GetInstance()->current_test_info();
        const QString name =
            u"%1-%2.json"_s.arg(QString::fromLatin1(test->name()).replace(u'/', u'-'), QString::number(++m_records));
        writeFile(QDir(records).filePath(name), QJsonDocument(exchange("GET", u"/sim/requests"_s)).toJson());
    }

    static QByteArray run(const QString &program, const QStringList &arguments, const QByteArray &input = {},
                          int status = 0)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(patience));
        QByteArray output = process.readAll();
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << output.toStdString();
        EXPECT_EQ(process.exitCode(), status) << output.toStdString();
        return output;
    }

    static constexpr int patience = 30'000; // milliseconds
    const QString m_till = QStringLiteral(KVO_TILL);
    const QString m_simulator = QStringLiteral(KVO_SIMULATOR);
    const QStringList m_ledger{u"--database"_s, ledger};
    const QStringList m_config{u"--config"_s, ini};
    QProcess m_service;
    int m_port = 0;
    int m_records = 0;
};
