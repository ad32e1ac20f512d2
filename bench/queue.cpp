// The persistent queue, filled beside SQLite's own interface and drained beside bare libcurl.
#include "barecurl.h"
#include "comparisons.h"
#include "samples.h"
#include "sqlitewriter.h"
#include "tests/support/fakeconfig.h"

#include <queue/dbqueuebroker.h>
#include <queue/queuedelivery.h>
#include <queue/queuedrain.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

using namespace Qt::Literals::StringLiterals;

namespace bench {

namespace {

constexpr int linesOfOrder = 20;

QVariantHash withQueue(QVariantHash values, const QString &file)
{
    values.insert(u"Queue:database"_s, file);
    return values;
}

/// The requests that a sale leaves on the queue: posting and binding.
QList<QJsonObject> makeEvents(const kvo::Interface &client)
{
    const auto card = makeCard();
    const auto check = makeCheck(linesOfOrder);
    card->setOperationId(client.createUuid());
    card->setOperationInfo(client.createOrderBody(check, card, false));
    return {client.postOrderRequest(card).toQueueEvent(), client.bindOrderIdRequest(check, card).toQueueEvent()};
}

constexpr auto insertEvent =
    "INSERT INTO event (owner, basket, event, created, state) VALUES ('kvo', ?, ?, ?, 'waiting')";

QByteArray basketOf(const QJsonObject &event)
{
    return event.value("payload"_L1).toObject().value("basket"_L1).toString().toUtf8();
}

QByteArray textOf(const QJsonObject &event)
{
    return QJsonDocument(event).toJson(QJsonDocument::Compact);
}

/// Makes an empty queue, by one event that is taken out again, and returns its name.
QString makeQueue(const QString &file)
{
    const FakeConfig config(withQueue({}, file));
    DBQueueBroker().push(u"kvo"_s, {}, {});
    SqliteWriter(file).run("DELETE FROM event; DELETE FROM head; UPDATE summary SET waiting = 0");
    return file;
}

/// 2,000 events of 1,000 sales in a queue's file that can be drained again and again.
struct FullQueue
{
    FullQueue()
    {
        SqliteWriter writer(full);
        writer.prepare(insertEvent);
        writer.run("BEGIN");
        for (int sale = 0; sale < 1000; ++sale)
            events += makeEvents(client);
        for (const QJsonObject &event : std::as_const(events))
            writer.write(basketOf(event), textOf(event), QDateTime::currentMSecsSinceEpoch());
        writer.run("INSERT INTO head SELECT MIN(id), owner, 0 FROM event GROUP BY owner, basket; "
                   "UPDATE summary SET waiting = (SELECT COUNT(*) FROM event)");
        writer.run("COMMIT");
    }

    void replay() const
    {
        for (const QJsonObject &event : events)
            client.requestFromQueue(event);
    }

    /// The same bytes sent by bare libcurl.
    Side bareCurl() const
    {
        return bench::bareCurl(record([this] { replay(); }));
    }

    /// The seconds from the start of a drain until nothing is left.
    double drain() const
    {
        QFile::remove(work);
        require(QFile::copy(full, work), "the queue's file was not copied");
        QueueDrain drain;
        int delivered = 0;
        drain.setHandler(u"kvo"_s, [&](const QJsonObject &event) {
            client.requestFromQueue(event);
            ++delivered;
        });
        const double seconds = secondsOf([&] {
            drain.start();
            require(drain.waitUntilDrained(std::chrono::minutes(1)), "the queue was not drained");
        });
        require(delivered == events.size(), "not all events were delivered");
        return seconds;
    }

    QTemporaryDir folder{diskFolder()};
    QString full = makeQueue(folder.filePath(u"full.db"_s));
    QString work = folder.filePath(u"work.db"_s);
    AnswerServer server{answers(0)};
    FakeConfig config{withQueue(settings(server), work)};
    kvo::Interface client;
    QList<QJsonObject> events;
};

/// A queue with so many events, two in each order, in a file or, below scripts/with-postgres, on that server.
class Backlog
{
public:
    explicit Backlog(int events, qint64 nextAttempt = 0)
    {
        const QString server = qEnvironmentVariable("KVO_POSTGRES");
        QVariantHash values = settings(u"http://127.0.0.1"_s);
        if (server.isEmpty()) {
            queue.database = folder.filePath(u"queue.db"_s);
            values.insert(u"Queue:database"_s, queue.database);
        } else {
            queue = {QueueSettings::Driver::PostgreSql, u"bench%1"_s.arg(events), server, -1, u"postgres"_s, {}, {}};
            run(u"postgres"_s,
                {u"DROP DATABASE IF EXISTS %1"_s.arg(queue.database), u"CREATE DATABASE %1"_s.arg(queue.database)});
            values.insert({{u"Queue:driver"_s, u"QPSQL"_s},
                           {u"Queue:database"_s, queue.database},
                           {u"Queue:host"_s, server},
                           {u"Queue:user"_s, queue.user}});
        }
        const FakeConfig config(values);
        require(broker.status().waiting == 0, "the queue is not empty");
        const QString rows = u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                             u"INSERT INTO event (owner, basket, state, created, event) SELECT 'kvo', 'basket-' || "
                             u"(i / 2), 'waiting', i, '{\"x\":\"%2\"}' FROM n"_s;
        const QString heads = u"INSERT INTO head SELECT MIN(id), owner, %1 FROM event GROUP BY owner, basket"_s;
        run(queue.database, {rows.arg(QString::number(events), QString(1000, u'x')), heads.arg(nextAttempt),
                             u"UPDATE summary SET waiting = %1 WHERE id = 0"_s.arg(events), u"ANALYZE"_s});
        require(broker.status().waiting == events, "the queue was not filled");
    }
    ~Backlog()
    {
        if (queue.driver == QueueSettings::Driver::PostgreSql)
            run(u"postgres"_s, {u"DROP DATABASE %1 WITH (FORCE)"_s.arg(queue.database)});
    }
    Q_DISABLE_COPY_MOVE(Backlog)

    QTemporaryDir folder{diskFolder()};
    QueueSettings queue;
    DBQueueBroker broker;

private:
    void run(const QString &database, const QStringList &statements) const
    {
        const QString name = u"bench"_s;
        {
            const bool isFile = queue.driver == QueueSettings::Driver::Sqlite;
            QSqlDatabase connection = QSqlDatabase::addDatabase(isFile ? u"QSQLITE"_s : u"QPSQL"_s, name);
            connection.setDatabaseName(database);
            connection.setHostName(queue.host);
            connection.setUserName(queue.user);
            if (!isFile)
                connection.setConnectOptions(u"options='-c search_path=poshost_queue'"_s);
            require(connection.open(), "the queue's database cannot be opened");
            for (const QString &statement : statements)
                require(QSqlQuery(connection).exec(statement), qUtf8Printable(statement.left(100)));
        }
        QSqlDatabase::removeDatabase(name);
    }
};

constexpr int shortBacklog = 1000;
constexpr int longBacklog = 100'000;
constexpr qint64 benchTime = 1'700'000'000'000;

/// A drain under a clock that stands still, to a service that is down.
std::unique_ptr<QueueDelivery> makeDelivery(const Backlog &backlog)
{
    return std::make_unique<QueueDelivery>(
        backlog.queue,
        QHash<QString, QueueHandler>{{u"kvo"_s, [](const QJsonObject &) { throw std::runtime_error("down"); }}},
        QueueDelivery::Environment{
            [] { return QueueTime(std::chrono::milliseconds(benchTime)); }, [] { return 0.5; }, {}});
}

Side looks(QueueDelivery &delivery)
{
    return calls(10, [&delivery] { require(!delivery.step(), "something was sent"); });
}

} // namespace

void queueStatusGrowth(Pairs &pairs)
{
    Backlog grown(longBacklog);
    Backlog small(shortBacklog);
    pairs.run(calls(10, [&] { grown.broker.status(); }), calls(10, [&] { small.broker.status(); }));
}

void queuePushGrowth(Pairs &pairs)
{
    Backlog grown(longBacklog);
    Backlog small(shortBacklog);
    const QJsonObject event = makeEvents(kvo::Interface()).first();
    pairs.run(calls(1, [&] { grown.broker.push(u"kvo"_s, event, {}); }),
              calls(1, [&] { small.broker.push(u"kvo"_s, event, {}); }));
}

void queueDueGrowth(Pairs &pairs)
{
    constexpr qint64 later = benchTime + 30'000;
    const Backlog grown(longBacklog, later);
    const Backlog small(shortBacklog, later);
    const auto ours = makeDelivery(grown);
    const auto beside = makeDelivery(small);
    pairs.run(looks(*ours), looks(*beside));
}

void queueProbeGrowth(Pairs &pairs)
{
    const Backlog grown(longBacklog);
    const Backlog small(shortBacklog);
    const auto ours = makeDelivery(grown);
    const auto beside = makeDelivery(small);
    for (QueueDelivery *delivery : {ours.get(), beside.get()})
        while (delivery->step()) // the first failure and the probe
            ;
    pairs.run(looks(*ours), looks(*beside));
}

void pushVsSqlite(Pairs &pairs)
{
    const QTemporaryDir folder(diskFolder());
    SqliteWriter writer(makeQueue(folder.filePath(u"peer.db"_s)));
    writer.run("PRAGMA wal_autocheckpoint = 16384");
    writer.prepare(insertEvent);
    const FakeConfig config(withQueue(settings(u"http://127.0.0.1"_s), folder.filePath(u"ours.db"_s)));
    const QJsonObject event = makeEvents(kvo::Interface()).first();
    const QByteArray basket = basketOf(event);
    const QByteArray text = textOf(event);
    DBQueueBroker broker;
    pairs.run(calls(1, [&] { broker.push(u"kvo"_s, event, {}); }),
              calls(1, [&] { writer.write(basket, text, QDateTime::currentMSecsSinceEpoch()); }));
}

void drainVsCurl(Pairs &pairs)
{
    const FullQueue queue;
    pairs.run([&] { return queue.drain(); }, queue.bareCurl());
}

void replayVsCurl(Pairs &pairs)
{
    const FullQueue queue;
    pairs.run(calls(1, [&] { queue.replay(); }), queue.bareCurl());
}

} // namespace bench
