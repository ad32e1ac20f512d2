// Starts and ends the processes of a shop. Every wait has a condition and a bound.
#include "salefixture.h"

#include "tests/support/file.h"

#include <net/restclient.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonDocument>
#include <QtCore/QThread>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int patience = 30'000; // milliseconds
const QString till = QStringLiteral(KVO_TILL);
const QString simulator = QStringLiteral(KVO_SIMULATOR);

void expectSuccess(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(patience));
    EXPECT_EQ(process.exitCode(), 0) << process.readAll().toStdString();
}

} // namespace

SaleTest::SaleTest()
{
    startService();
}

SaleTest::~SaleTest()
{
    stopService();
    if (HasFailure())
        std::fputs(readFile(folder.filePath(u"till.log"_s)).constData(), stderr);
}

void SaleTest::startService()
{
    m_service.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_service.start(simulator, {u"serve"_s, u"--database"_s, folder.filePath(u"service.db"_s), u"--port"_s,
                                QString::number(m_port), u"--port-file"_s, folder.filePath(u"port"_s)});
    ASSERT_TRUE(m_service.waitForStarted(patience));
    ASSERT_TRUE(m_service.waitForReadyRead(patience)) << "the service does not say that it listens";
    m_port = readFile(folder.filePath(u"port"_s)).trimmed().toInt();
    writeFile(folder.filePath(u"till.ini"_s),
              "[Host]\ndataFolder = " + QFile::encodeName(folder.filePath(u"data"_s)) +
                  "\n[Log]\nfile = " + QFile::encodeName(folder.filePath(u"till.log"_s)) +
                  "\n[Kvo]\nhost = http://127.0.0.1:" + QByteArray::number(m_port) +
                  "\ntimeout = 20000\nbrand = B\nonlineStore = S\nterminal = T\nverificationLimit = 100\n");
}

void SaleTest::stopService()
{
    m_service.terminate();
    EXPECT_TRUE(m_service.waitForFinished(patience));
}

QJsonObject SaleTest::exchange(const QByteArray &method, const QString &path, const QJsonObject &body) const
{
    RestClient client;
    client.request(method == "GET" ? QNetworkAccessManager::GetOperation : QNetworkAccessManager::PostOperation,
                   QUrl(u"http://127.0.0.1:%1%2"_s.arg(QString::number(m_port), path)), QJsonDocument(body),
                   {{u"Content-Type"_s, u"application/json"_s}});
    EXPECT_EQ(client.response().status(), 200) << client.response().json().toJson().constData();
    return client.response().json().object();
}

void SaleTest::addFault(const QJsonObject &fault)
{
    exchange("POST", u"/sim/faults"_s, fault);
}

int SaleTest::requestsOf(const QString &method)
{
    return exchange("GET", u"/sim/requests"_s).value(u"counts"_s).toObject().value(method).toInt();
}

std::unique_ptr<QProcess> SaleTest::startTill(const QByteArray &scenario, const QStringList &options)
{
    const QString code =
        u"\"%1\" outbox --database \"%2\" --last --code"_s.arg(simulator, folder.filePath(u"service.db"_s));
    QStringList arguments{u"run"_s, u"--config"_s, folder.filePath(u"till.ini"_s), u"--code-command"_s, code};
    arguments += options;
    if (scenario.startsWith('{')) {
        const QString fileName = folder.filePath(u"scenario%1.json"_s.arg(++m_scenarios));
        writeFile(fileName, scenario);
        arguments.append(fileName);
    } else if (!scenario.isEmpty()) {
        arguments.append(QStringLiteral(KVO_SCENARIOS) + u'/' + QString::fromUtf8(scenario));
    }
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->setStandardInputFile(QProcess::nullDevice());
    process->start(till, arguments);
    EXPECT_TRUE(process->waitForStarted(patience));
    return process;
}

QString SaleTest::runTill(const QByteArray &scenario, int status, const QStringList &options)
{
    const auto process = startTill(scenario, options);
    EXPECT_TRUE(process->waitForFinished(patience));
    const QString output = QString::fromUtf8(process->readAll());
    EXPECT_EQ(process->exitStatus(), QProcess::NormalExit) << output.toStdString();
    EXPECT_EQ(process->exitCode(), status) << output.toStdString();
    return output;
}

void SaleTest::drain()
{
    expectSuccess(till, {u"drain"_s, u"--config"_s, folder.filePath(u"till.ini"_s), u"--seconds"_s, u"25"_s});
}

void SaleTest::kill(QProcess &process)
{
    process.kill();
    EXPECT_TRUE(process.waitForFinished(patience));
}

bool SaleTest::waitFor(const std::function<bool()> &condition)
{
    QElapsedTimer waited;
    for (waited.start(); !waited.hasExpired(patience); QThread::msleep(5)) {
        if (condition())
            return true;
    }
    return false;
}

int SaleTest::checksInJournal() const
{
    return static_cast<int>(readFile(folder.filePath(u"data/journal.jsonl"_s)).count('\n'));
}

void SaleTest::expectEqualBooks(int checks)
{
    EXPECT_EQ(checksInJournal(), checks);
    const QStringList ledger{u"--database"_s, folder.filePath(u"service.db"_s)};
    expectSuccess(simulator,
                  QStringList{u"compare"_s, u"--journal"_s, folder.filePath(u"data/journal.jsonl"_s)} + ledger);
    expectSuccess(simulator, QStringList{u"check"_s} + ledger);
}
