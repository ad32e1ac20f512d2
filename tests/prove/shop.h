// The shop: the service's stand-in, the fault proxy before it, and the till, each a process that may be killed.
#pragma once

#include "child.h"
#include "socket.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtCore/QMap>

#include <vector>

namespace prove {

/// Its operations throw std::runtime_error for what the proof itself cannot do.
class Shop
{
public:
    /// What can be killed. The drain lives in the till as well; Drain is the command that only drains.
    enum class Part { Till, Drain, Proxy, Service };

    /// Works in `folder`. `faultRate` is the part of the exchanges that meet with a fault. `postgres` is the folder of
    /// the server's socket that keeps the till's queue; empty: a file does.
    Shop(const QString &folder, quint64 seed, double faultRate, const QString &postgres);

    /// Starts the service and the proxy.
    void open();

    /// Has the till work through a scenario. No till may be at work.
    void sell(const QJsonObject &scenario);

    /// Starts the command that delivers what is queued, for at most `time`. No till may be at work.
    void drain(std::chrono::seconds time);

    /// Whether the till, or the command, is at work.
    bool isTillAtWork() { return m_till.isRunning(); }

    /// What can be killed now: the till or the drain, where one is at work, comes last.
    QList<Part> running();

    /// Kills it. The service and the proxy come back after `downTime`, see tend().
    void kill(Part part, std::chrono::milliseconds downTime);

    /// Starts again what was killed and is due.
    void tend();

    /// From here the exchanges are as good as the machine's own, nobody is killed, and the till is patient. Returns
    /// when the service can be reached.
    void endFaults();

    /// How the till has ended, where that was neither by a kill nor in order; empty otherwise.
    QString tillFault() const;

    /// By what was killed.
    const QMap<QString, int> &kills() const { return m_kills; }

    /// Ends of the service and the proxy that nobody had killed.
    const QStringList &crashes() const { return m_crashes; }

    /// The checks that the till has finished.
    QList<QJsonObject> journal() const;

    /// How many there are; cheap.
    int sold();

    /// The check that a till at rest has left open; empty when there is none.
    QJsonObject openCheck() const;

    /// How often a cashier took a card off a check; they are asked after a failure only.
    qsizetype cardsRemoved() const;

    /// What the proxies have done and seen.
    QList<QJsonObject> record() const;

    /// Runs an inspecting command of the service's stand-in; returns what it printed, and its exit status.
    std::pair<QByteArray, int> inspect(const QStringList &arguments) const;

    /// Runs `kvo-till queue` and returns its answer.
    QJsonObject askQueue(const QStringList &arguments) const;

    QString journalFile() const { return path(u"data/journal.jsonl"); }

private:
    QString path(QStringView name) const { return m_folder.filePath(name.toString()); }
    void makeDatabase() const;
    void writeConfiguration(std::chrono::milliseconds timeout) const;
    void startService();
    void startProxy();
    void startTill(const QString &command, const QStringList &arguments);
    void restart(Part part, Child &child);
    Child &childOf(Part part);

    QDir m_folder;
    quint64 m_seed;
    double m_faultRate;
    QString m_postgres;
    Socket m_proxyPort;
    Socket m_servicePort;
    Child m_service;
    Child m_proxy;
    Child m_till;
    Part m_atWork = Part::Till;
    QMap<Part, QDeadlineTimer> m_due;
    QMap<QString, int> m_kills;
    QStringList m_crashes;
    int m_sold = 0;
    qint64 m_soldSize = 0; ///< Of the journal, when m_sold was counted.
    int m_proxies = 0;
    int m_shifts = 0;
};

} // namespace prove
