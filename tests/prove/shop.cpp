// The processes of the shop and the files they work on.
#include "shop.h"

#include "sales.h"

#include <QtCore/QFile>
#include <QtCore/QThread>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace prove {

namespace {

constexpr auto patience = 60s;
const QString tillProgram = QStringLiteral(KVO_TILL);
const QString serviceProgram = QStringLiteral(KVO_SIMULATOR);
const QString proxyProgram = QStringLiteral(KVO_FAULT_PROXY);

void write(const QString &fileName, const QByteArray &content)
{
    QFile file(fileName);
    if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error(qPrintable(fileName + u": "_s + file.errorString()));
}

QByteArray json(const auto &value)
{
    return QJsonDocument(value).toJson(QJsonDocument::Compact);
}

/// Empty where there is no such file.
QByteArray read(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

QList<QJsonObject> readLines(const QString &fileName)
{
    QList<QJsonObject> objects;
    const QByteArray content = read(fileName).trimmed();
    for (const QByteArray &line : content.isEmpty() ? QByteArrayList() : content.split('\n')) {
        const QJsonDocument document = QJsonDocument::fromJson(line);
        if (!document.isObject())
            throw std::runtime_error(
                qPrintable(u"%1: a line that is no object: %2"_s.arg(fileName, QString::fromUtf8(line))));
        objects.append(document.object());
    }
    return objects;
}

QString nameOf(Shop::Part part)
{
    static const QMap<Shop::Part, QString> names{{Shop::Part::Till, u"till"_s},
                                                 {Shop::Part::Drain, u"drain"_s},
                                                 {Shop::Part::Proxy, u"proxy"_s},
                                                 {Shop::Part::Service, u"service"_s}};
    return names.value(part);
}

/// What a program printed, and its exit status.
std::pair<QByteArray, int> runToEnd(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(static_cast<int>(std::chrono::milliseconds(patience).count())))
        throw std::runtime_error(qPrintable(program + u" does not come to an end"_s));
    return {process.readAll(), process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1};
}

} // namespace

Shop::Shop(const QString &folder, quint64 seed, double faultRate, const QString &postgres)
    : m_folder(folder),
      m_seed(seed),
      m_faultRate(faultRate),
      m_postgres(postgres),
      m_proxyPort(Socket::boundTo(0)),
      m_servicePort(Socket::boundTo(0)),
      m_service(serviceProgram, path(u"service.out")),
      m_proxy(proxyProgram, path(u"proxy.out")),
      m_till(tillProgram, path(u"till.out"))
{}

void Shop::open()
{
    write(path(u"customers.json"), json(customers()));
    if (!m_postgres.isEmpty())
        makeDatabase();
    writeConfiguration(500ms);
    startService();
    startProxy();
}

void Shop::makeDatabase() const
{
    const auto [output, status] =
        runToEnd(u"createdb"_s, {u"-h"_s, m_postgres, u"-U"_s, u"postgres"_s, m_folder.dirName()});
    if (status != 0)
        throw std::runtime_error("createdb: " + output.toStdString());
}

void Shop::writeConfiguration(std::chrono::milliseconds timeout) const
{
    const QString queue = u"[Queue]\ndriver = QPSQL\nhost = %1\nuser = postgres\ndatabase = %2\n"_s;
    const QString ini = u"[Host]\ndataFolder = %1\n[Log]\nfile = %2\n[Kvo]\nhost = http://127.0.0.1:%3\n"
                        "timeout = %4\nbrand = B\nonlineStore = S\nterminal = T\nverificationLimit = 200\n"_s;
    write(
        path(u"till.ini"),
        ini.arg(path(u"data"), path(u"till.log"), QString::number(m_proxyPort.port()), QString::number(timeout.count()))
                .toUtf8() +
            (m_postgres.isEmpty() ? QString() : queue.arg(m_postgres, m_folder.dirName())).toUtf8());
}

void Shop::startService()
{
    m_service.start({u"serve"_s, u"--database"_s, path(u"service.db"), u"--customers"_s, path(u"customers.json"),
                     u"--port"_s, QString::number(m_servicePort.port())});
}

void Shop::startProxy()
{
    m_proxy.start({u"--port"_s, QString::number(m_proxyPort.port()), u"--service"_s,
                   QString::number(m_servicePort.port()), u"--seed"_s, QString::number(m_seed + ++m_proxies),
                   u"--rate"_s, QString::number(m_faultRate), u"--record"_s, path(u"record.jsonl")});
}

void Shop::startTill(const QString &command, const QStringList &arguments)
{
    m_till.start(QStringList{command, u"--config"_s, path(u"till.ini")} + arguments);
}

void Shop::sell(const QJsonObject &scenario)
{
    const QString fileName = path(u"shift%1.json"_s.arg(++m_shifts));
    write(fileName, json(scenario));
    const QString code = u"\"%1\" outbox --database \"%2\" --last --code"_s.arg(serviceProgram, path(u"service.db"));
    m_atWork = Part::Till;
    startTill(u"run"_s, {u"--code-command"_s, code, u"--drain-seconds"_s, u"0"_s, fileName});
}

void Shop::drain(std::chrono::seconds time)
{
    m_atWork = Part::Drain;
    startTill(u"drain"_s, {u"--seconds"_s, QString::number(time.count())});
}

Child &Shop::childOf(Part part)
{
    return part == Part::Proxy ? m_proxy : part == Part::Service ? m_service : m_till;
}

QList<Shop::Part> Shop::running()
{
    QList<Part> parts{Part::Proxy, Part::Service, m_atWork};
    parts.removeIf([this](Part part) { return !childOf(part).isRunning(); });
    return parts;
}

void Shop::kill(Part part, std::chrono::milliseconds downTime)
{
    if (!childOf(part).kill())
        return;
    ++m_kills[nameOf(part)];
    m_due[part] = QDeadlineTimer(downTime);
}

void Shop::tend()
{
    restart(Part::Service, m_service);
    restart(Part::Proxy, m_proxy);
}

void Shop::restart(Part part, Child &child)
{
    if (child.isRunning())
        return;
    if (!child.wasKilled())
        m_crashes.append(u"the %1 has ended by itself, status %2"_s.arg(nameOf(part), QString::number(child.status())));
    else if (!m_due.value(part).hasExpired())
        return;
    part == Part::Proxy ? startProxy() : startService();
}

void Shop::endFaults()
{
    m_faultRate = 0;
    writeConfiguration(patience);
    m_proxy.kill();
    m_service.kill();
    startService();
    startProxy();
    for (QDeadlineTimer deadline(patience);; QThread::msleep(5)) {
        if (Socket::connectTo(m_proxyPort.port()).isOpen() && Socket::connectTo(m_servicePort.port()).isOpen())
            return;
        if (deadline.hasExpired())
            throw std::runtime_error("the service cannot be reached any more");
    }
}

QString Shop::tillFault() const
{
    if (m_till.wasKilled() || m_till.status() == 0 || m_till.status() == 1)
        return {};
    return u"the till has ended with status %1, see till.out"_s.arg(m_till.status());
}

QList<QJsonObject> Shop::journal() const
{
    return readLines(journalFile());
}

int Shop::sold()
{
    if (QFileInfo(journalFile()).size() != m_soldSize) {
        const QByteArray lines = read(journalFile());
        m_sold = static_cast<int>(lines.count('\n'));
        m_soldSize = lines.size();
    }
    return m_sold;
}

QJsonObject Shop::openCheck() const
{
    return readLines(path(u"data/open-check.json")).value(0);
}

qsizetype Shop::cardsRemoved() const
{
    // Chosen by script, and asked with nobody there to answer.
    const QByteArray output = read(path(u"till.out"));
    return output.count("| > Удалить") + output.count("2 - Удалить");
}

QList<QJsonObject> Shop::record() const
{
    return readLines(path(u"record.jsonl"));
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
