// The shop: the service's stand-in, the fault proxy before it, and the till, each a process that may be killed.
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

    /// Has the till work through a scenario. No till may be at work.
    void sell(const QJsonObject &scenario);

    /// Starts the command that delivers what is queued, for at most `time`. No till may be at work.
    void drain(std::chrono::seconds time);

    /// Whether the till, or the command, is at work.
    bool isTillAtWork() { return isRunning(QStringLiteral("till")) || isRunning(QStringLiteral("drain")); }

    /// What can be killed now: "service", "proxy", and last "till" or "drain", where one is at work.
    QStringList running();

    /// Kills it; false when it had ended by itself before. The service and the proxy come back after `downTime`, see
    /// tend().
    [[nodiscard]] bool kill(const QString &name, std::chrono::milliseconds downTime);

    /// Starts again what was killed and is due.
    void tend();

    /// From here the exchanges are as good as the machine's own, nobody is killed, and the till is patient. Returns
    /// when the service can be reached.
    void endFaults();

    /// By what was killed.
    const QMap<QString, int> &kills() const { return m_kills; }

    /// Notes it when the till, or the command, has ended neither by a kill nor in order.
    void noteEndOfTill();

    /// What has ended so; also the service and the proxy.
    const QStringList &crashes() const { return m_crashes; }

    /// The checks that the till has finished.
    QList<QJsonObject> journal() const;

    /// How many there are.
    int sold() const;

    /// The check that a till at rest has left open; null when there is none.
    QSharedPointer<SaleDocument> openCheck() const;

    /// How often a cashier took a card off a check; they are asked after a failure only.
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
    void writeConfiguration(std::chrono::milliseconds timeout) const;
    void startService();
    void startProxy();
    void start(const QString &name, const QString &program, const QStringList &arguments);
    bool isRunning(const QString &name);

    QDir m_folder;
    mutable CheckStore m_checks{path(u"data"), CheckStore::Access::Look};
    quint64 m_seed;
    double m_faultRate;
    QString m_postgres = qEnvironmentVariable("KVO_POSTGRES"); ///< Of the socket's folder; empty: a file is the queue.
    QTcpSocket m_proxyPort; ///< Keeps the port for a process that is killed and started again; likewise:
    QTcpSocket m_servicePort;
    std::map<QString, Part> m_parts;
    QMap<QString, int> m_kills;
    QStringList m_crashes;
    int m_proxies = 0;
    int m_shifts = 0;
};

} // namespace prove
