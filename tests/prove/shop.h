// The shop: the service's stand-in, the fault proxy in front of it, the till, and a till of another make, each a
// process that may be killed.
#pragma once

#include <checks/checkstore.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtNetwork/QTcpSocket>

#include <map>

namespace prove {

/// Its operations throw std::runtime_error for what the proof itself cannot do.
class Shop
{
public:
    /// Works in `folder`. `faultRate` is the part of the exchanges that meet with a fault.
    Shop(const QString &folder, quint64 seed, double faultRate);
    ~Shop();
    Q_DISABLE_COPY_MOVE(Shop)

    // Each of these three starts a worker; the one before must have ended.

    /// Has the till work through a scenario.
    void sell(const QJsonObject &scenario);

    /// Has the other host sell so many checks at random, after the one that it has left open.
    void sellElsewhere(int checks);

    /// Starts the command that delivers what is queued, for at most `time`.
    void drain(std::chrono::seconds time);

    bool isWorking() { return isRunning(m_worker); }

    /// What can be killed now: "service", "proxy", and last the worker if there is one.
    QStringList running();

    /// Kills it. The service and the proxy come back after `downTime`, see tend().
    void kill(const QString &name, std::chrono::milliseconds downTime);

    /// Starts again what was killed and is due.
    void tend();

    /// From here on there are no faults, nobody is killed, and the till is patient. Returns when the service can be
    /// reached.
    void endFaults();

    /// Processes killed, by name; the other host also kills itself.
    const QMap<QString, int> &kills() const { return m_kills; }

    /// Records a kill or crash of the worker.
    void noteEndOfWorker();

    /// Processes that ended neither by a kill nor in order.
    const QStringList &crashes() const { return m_crashes; }

    /// The finished checks, the till's last.
    QList<QJsonObject> journal() const;

    bool isAnyCheckOpen() const { return m_checks.restore() || m_otherChecks.restore(); }

    /// How often a cashier took a card off a check; tills ask only after a failure.
    qsizetype cardsRemoved() const;

    /// What the proxies have done and seen.
    QList<QJsonObject> record() const { return readLines(path(u"record.jsonl")); }

    /// Runs an inspecting command of the service's stand-in; returns what it printed, and its exit status.
    std::pair<QByteArray, int> inspect(const QStringList &arguments) const;

    /// Runs `kvo-till queue` and returns its answer.
    QJsonObject askQueue(const QStringList &arguments) const;

    /// Writes the journal as `loyalty-sim compare` reads it, and returns the file's name.
    QString writeJournal() const;

private:
    struct Part
    {
        QProcess process;
        QDeadlineTimer due; ///< To come back after a kill.
    };

    static QList<QJsonObject> readLines(const QString &fileName);
    QString path(QStringView name) const { return m_folder.filePath(name.toString()); }
    void makeDatabase() const;
    void writeConfigurations(std::chrono::milliseconds timeout) const;
    void startService();
    void startProxy();
    void startWorker(const QString &name, const QString &program, const QStringList &arguments);
    void start(const QString &name, const QString &program, const QStringList &arguments);
    bool isRunning(const QString &name);

    QDir m_folder;
    mutable CheckStore m_checks{path(u"till"), CheckStore::Access::Look};
    mutable CheckStore m_otherChecks{path(u"host"), CheckStore::Access::Look};
    quint64 m_seed;
    double m_faultRate;
    QString m_postgres = qEnvironmentVariable("KVO_POSTGRES"); ///< Of the socket's folder; empty: a file is the queue.
    QTcpSocket m_proxyPort; ///< Keeps the port for a process that is killed and started again; likewise:
    QTcpSocket m_servicePort;
    std::map<QString, Part> m_parts;
    QString m_worker; ///< "till", "host" or "drain": who was started last.
    QMap<QString, int> m_kills;
    QStringList m_crashes;
    int m_proxies = 0;
    int m_shifts = 0;
};

} // namespace prove
