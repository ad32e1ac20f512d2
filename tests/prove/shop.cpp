// The processes of the shop and the files they work on.
#include "shop.h"

#include "sales.h"
#include "tests/support/file.h"

#include <signal.h>
#include <sys/prctl.h>

#include <QtCore/QJsonDocument>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace prove {

namespace {

constexpr auto patience = 60s;
constexpr int patienceInMilliseconds = 60'000;
const QString tillProgram = QStringLiteral(KVO_TILL);
const QString serviceProgram = QStringLiteral(KVO_SIMULATOR);

/// The exit status, or the negative number of the signal.
int statusOf(const QProcess &process)
{
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -process.exitCode();
}

/// What a program printed, and its exit status.
std::pair<QByteArray, int> runToEnd(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(patienceInMilliseconds))
        throw std::runtime_error(program.toStdString() + " does not finish");
    return {process.readAll(), statusOf(process)};
}

void bindToAnyPort(QTcpSocket &socket)
{
    if (!socket.bind(QHostAddress::LocalHost, 0, QAbstractSocket::ShareAddress))
        throw std::runtime_error("no port on 127.0.0.1");
}

void waitForListener(quint16 port)
{
    for (const QDeadlineTimer deadline(patience); !deadline.hasExpired();) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        if (socket.waitForConnected(patienceInMilliseconds))
            return;
    }
    throw std::runtime_error("the service cannot be reached any more");
}

} // namespace

Shop::Shop(const QString &folder, quint64 seed, double faultRate)
    : m_folder(folder), m_seed(seed), m_faultRate(faultRate)
{
    bindToAnyPort(m_proxyPort);
    bindToAnyPort(m_servicePort);
    writeFile(path(u"customers.json"), customers);
    if (!m_postgres.isEmpty())
        makeDatabase();
    writeConfigurations(500ms);
    startService();
    startProxy();
}

Shop::~Shop()
{
    for (auto &[name, part] : m_parts) {
        part.process.kill();
        part.process.waitForFinished();
    }
}

void Shop::makeDatabase() const
{
    const auto [output, status] =
        runToEnd(u"createdb"_s, {u"-h"_s, m_postgres, u"-U"_s, u"postgres"_s, m_folder.dirName()});
    if (status != 0)
        throw std::runtime_error("createdb: " + output.toStdString());
}

/// Both tills use one queue.
void Shop::writeConfigurations(std::chrono::milliseconds timeout) const
{
    const QString ini =
        u"[Host]\ndataFolder = %1\n[Log]\nfile = %2\n[Kvo]\nhost = http://127.0.0.1:%3\n"
        "timeout = %4\nbrand = B\nonlineStore = S\nterminal = T\nverificationLimit = 200\n[Queue]\n%5\n"_s;
    const QString queue =
        m_postgres.isEmpty()
            ? u"database = "_s + path(u"queue.db")
            : u"driver = QPSQL\nhost = %1\nuser = postgres\ndatabase = %2"_s.arg(m_postgres, m_folder.dirName());
    for (const QString &name : {u"till"_s, u"host"_s})
        writeFile(path(QString(name + u".ini"_s)),
                  ini.arg(path(name), path(QString(name + u".log"_s)), QString::number(m_proxyPort.localPort()),
                          QString::number(timeout.count()), queue)
                      .toUtf8());
}

void Shop::startWorker(const QString &name, const QString &program, const QStringList &arguments)
{
    m_worker = name;
    start(name, program, arguments);
}

void Shop::start(const QString &name, const QString &program, const QStringList &arguments)
{
    QProcess &process = m_parts[name].process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardOutputFile(path(QString(name + u".out"_s)), QIODevice::Append);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }); // ends with the proof
    process.start(program, arguments);
    if (!process.waitForStarted(patienceInMilliseconds))
        throw std::runtime_error(program.toStdString() + ": " + process.errorString().toStdString());
}

void Shop::startService()
{
    start(u"service"_s, serviceProgram,
          {u"serve"_s, u"--database"_s, path(u"service.db"), u"--customers"_s, path(u"customers.json"), u"--port"_s,
           QString::number(m_servicePort.localPort())});
}

void Shop::startProxy()
{
    start(u"proxy"_s, QStringLiteral(KVO_FAULT_PROXY),
          {u"--port"_s, QString::number(m_proxyPort.localPort()), u"--service"_s,
           QString::number(m_servicePort.localPort()), u"--seed"_s, QString::number(m_seed + ++m_proxies), u"--rate"_s,
           QString::number(m_faultRate), u"--record"_s, path(u"record.jsonl")});
}

void Shop::sell(const QJsonObject &scenario)
{
    const QString fileName = path(u"shift%1.json"_s.arg(++m_shifts));
    writeFile(fileName, QJsonDocument(scenario).toJson());
    const QString code = u"\"%1\" outbox --database \"%2\" --last --code"_s.arg(serviceProgram, path(u"service.db"));
    startWorker(u"till"_s, tillProgram,
                {u"run"_s, u"--config"_s, path(u"till.ini"), u"--code-command"_s, code, u"--drain-seconds"_s, u"0"_s,
                 fileName});
}

void Shop::sellElsewhere(int checks)
{
    startWorker(
        u"host"_s, QStringLiteral(KVO_RANDOM_HOST),
        {path(u"host.ini"), QString::number(m_seed + static_cast<quint64>(++m_shifts)), QString::number(checks)});
}

void Shop::drain(std::chrono::seconds time)
{
    startWorker(u"drain"_s, tillProgram,
                {u"drain"_s, u"--config"_s, path(u"till.ini"), u"--seconds"_s, QString::number(time.count())});
}

bool Shop::isRunning(const QString &name)
{
    QProcess &process = m_parts[name].process;
    return process.state() != QProcess::NotRunning && !process.waitForFinished(0);
}

QStringList Shop::running()
{
    QStringList names{u"service"_s, u"proxy"_s, m_worker};
    names.removeIf([this](const QString &name) { return !isRunning(name); });
    return names;
}

void Shop::kill(const QString &name, std::chrono::milliseconds downTime)
{
    Part &part = m_parts[name];
    part.process.kill();
    if (!part.process.waitForFinished(patienceInMilliseconds))
        throw std::runtime_error(name.toStdString() + " cannot be killed");
    part.due = QDeadlineTimer(downTime);
    if (name != m_worker && statusOf(part.process) == -SIGKILL)
        ++m_kills[name];
}

void Shop::tend()
{
    for (const QString &name : {u"service"_s, u"proxy"_s}) {
        if (isRunning(name) || !m_parts[name].due.hasExpired())
            continue;
        if (const int status = statusOf(m_parts[name].process); status != -SIGKILL)
            m_crashes.append(u"the %1 has ended by itself, status %2"_s.arg(name, QString::number(status)));
        name == u"proxy" ? startProxy() : startService();
    }
}

void Shop::endFaults()
{
    m_faultRate = 0;
    writeConfigurations(patience);
    for (const QString &name : {u"service"_s, u"proxy"_s}) {
        m_parts[name].process.kill();
        m_parts[name].process.waitForFinished();
    }
    startService();
    startProxy();
    waitForListener(m_servicePort.localPort());
    waitForListener(m_proxyPort.localPort());
}

void Shop::noteEndOfWorker()
{
    const int status = statusOf(m_parts[m_worker].process);
    if (status == -SIGKILL)
        ++m_kills[m_worker];
    else if (status != 0 && status != 1)
        m_crashes.append(u"the %1 has ended with status %2, see %1.out"_s.arg(m_worker, QString::number(status)));
}

QList<QJsonObject> Shop::journal() const
{
    QList<QJsonObject> entries;
    for (CheckStore *store : {&m_otherChecks, &m_checks})
        for (const auto &[entered, entry] : store->journal())
            entries.append(entry);
    return entries;
}

QString Shop::writeJournal() const
{
    QByteArray lines;
    for (const QJsonObject &entry : journal())
        lines += QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
    writeFile(path(u"journal.jsonl"), lines);
    return path(u"journal.jsonl");
}

qsizetype Shop::cardsRemoved() const
{
    // Chosen by script, and asked with nobody there to answer.
    const QByteArray output = readFile(path(u"till.out")) + readFile(path(u"host.out"));
    return output.count("| > Удалить") + output.count("2 - Удалить");
}

QList<QJsonObject> Shop::readLines(const QString &fileName)
{
    QList<QJsonObject> objects;
    const QByteArray content = readFile(fileName).trimmed();
    for (const QByteArray &line : content.isEmpty() ? QByteArrayList() : content.split('\n')) {
        const QJsonDocument document = QJsonDocument::fromJson(line);
        if (!document.isObject())
            throw std::runtime_error(fileName.toStdString() + ": a line that is no object: " + line.toStdString());
        objects.append(document.object());
    }
    return objects;
}

std::pair<QByteArray, int> Shop::inspect(const QStringList &arguments) const
{
    return runToEnd(serviceProgram, QStringList(arguments) << u"--database"_s << path(u"service.db"));
}

QJsonObject Shop::askQueue(const QStringList &arguments) const
{
    const QStringList always{u"queue"_s, u"--json"_s, u"--config"_s, path(u"till.ini")};
    const auto [output, status] = runToEnd(tillProgram, always + arguments);
    const QJsonDocument answer = QJsonDocument::fromJson(output);
    if (status != 0 || !answer.isObject())
        throw std::runtime_error("kvo-till queue: " + output.toStdString());
    return answer.object();
}

} // namespace prove
