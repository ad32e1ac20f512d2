// The vocabulary of the queue's tests: a queue of its own in a temporary folder, pushed through the real broker and
// drained step by step, under a clock that the test sets, to a receiver that notes what it gets.
#pragma once

#include "tests/support/file.h"
#include "tests/support/sql.h"
#include "tests/support/test.h"

#include <core/config.h>
#include <core/singleton.h>
#include <queue/dbqueuebroker.h>
#include <queue/queuedelivery.h>

#include <algorithm>

using namespace std::chrono_literals;

/// The event "<order><number>", for instance "a1".
inline QJsonObject eventNamed(const QString &name)
{
    return {{u"url"_s, u"http://127.0.0.1/api/"_s + name}, {u"payload"_s, QJsonObject{{u"basket"_s, name.left(1)}}}};
}

struct QueueTest : testing::Test
{
    static QString nameOf(const QJsonObject &event) { return event.value(u"url").toString().section(u'/', -1); }

    /// The socket's folder of scripts/with-postgres; empty: the tests run on SQLite.
    static QString postgresFolder() { return qEnvironmentVariable("KVO_POSTGRES"); }

    void TearDown() override
    {
        if (!expectsDamage && QFile::exists(file) == postgresFolder().isEmpty())
            expectConsistency();
        Singleton<Config>::replace(nullptr);
        if (!postgresFolder().isEmpty())
            runSql(u"postgres"_s, u"DROP DATABASE \"%1\" WITH (FORCE)"_s.arg(database), postgresFolder());
    }

    /// Configures the queue, with further lines.
    QueueSettings configure(const QByteArray &lines)
    {
        QByteArray ini = "[Queue]\ndatabase = " + QFile::encodeName(database) + '\n';
        if (!postgresFolder().isEmpty())
            ini += "driver = QPSQL\nuser = postgres\nhost = " + QFile::encodeName(postgresFolder()) + '\n';
        writeFile(iniFile, ini + lines);
        Singleton<Config>::replace(QSharedPointer<Config>::create(iniFile));
        return QueueSettings::configured();
    }

    QueueSettings makeQueue()
    {
        if (!postgresFolder().isEmpty())
            runSql(u"postgres"_s, u"CREATE DATABASE \"%1\""_s.arg(database), postgresFolder());
        return configure({});
    }

    void push(const QString &names, const QString &owner = u"kvo"_s)
    {
        for (const QString &name : names.split(u' '))
            broker.push(owner, eventNamed(name), {});
    }

    /// Steps until nothing is due; returns what was sent meanwhile, failed attempts included: "a1 b1".
    QString drain()
    {
        sent.clear();
        while (delivery.step())
            ;
        return sent.join(u' ');
    }

    /// One step, during whose exchanges this happens.
    bool stepDuring(const std::function<void()> &action)
    {
        whileSending = action;
        const auto nothingLater = qScopeGuard([this] { whileSending = [] {}; });
        return delivery.step();
    }

    /// What is kept is what could be counted: the summary, and the first event of each order if it waits.
    void expectConsistency()
    {
        EXPECT_EQ(column(u"SELECT id || owner FROM head ORDER BY id"_s),
                  column(u"SELECT id || owner FROM event WHERE state = 'waiting' AND id IN "
                         u"(SELECT MIN(id) FROM event GROUP BY owner, basket) ORDER BY id"_s));
        const QString behind = u"EXISTS (SELECT 1 FROM event p WHERE p.owner = e.owner AND p.basket = e.basket AND "
                               u"p.id <= e.id AND p.state = 'dead')"_s;
        EXPECT_EQ(sql(u"SELECT SUM(blocked) FROM summary"_s).toInt(),
                  sql(u"SELECT COUNT(*) FROM event e WHERE "_s + behind).toInt());
        EXPECT_EQ(sql(u"SELECT SUM(waiting) FROM summary"_s).toInt(),
                  sql(u"SELECT COUNT(*) FROM event e WHERE NOT "_s + behind).toInt());
    }

    /// What somebody with a database tool does.
    QVariantList column(const QString &statement) const { return runSql(database, statement, postgresFolder()); }
    QVariant sql(const QString &statement) const { return column(statement).value(0); }

    /// The same on the newest connection of the queue itself.
    static QVariant sqlInside(const QString &statement)
    {
        const auto number = [](const QString &name) { return name.section(u'.', -1).toInt(); };
        const QStringList names = QSqlDatabase::connectionNames();
        QSqlQuery query(QSqlDatabase::database(*std::ranges::max_element(names, {}, number), false));
        EXPECT_TRUE(query.exec(statement)) << qPrintable(statement);
        return query.next() ? query.value(0) : QVariant();
    }

    /// From now on the newest connection of the queue cannot write.
    static void refuseWrites()
    {
        sqlInside(postgresFolder().isEmpty() ? u"PRAGMA query_only=1"_s : u"SET default_transaction_read_only = on"_s);
    }

    QTemporaryDir folder;
    QString file = folder.filePath(u"data/queue.db"_s);
    QString iniFile = folder.filePath(u"till.ini"_s);
    QString database = postgresFolder().isEmpty() ? file : QFileInfo(folder.path()).fileName();
    const QueueSettings settings = makeQueue();
    DBQueueBroker broker;

    QueueTime now{1'700'000'000'000ms};
    QStringList sent;
    QSet<QString> unreachable; ///< Names of events whose sending fails.
    QSet<QString> refused;     ///< Names of events that are rejected.
    bool serviceDown = false;
    bool stopping = false;
    bool expectsDamage = false; ///< The test damages the database or has changed it by hand.
    std::function<void()> whileSending = [] {};
    QueueDelivery delivery{settings,
                           {{u"kvo"_s, [this](const QJsonObject &event) { receive(event); }}},
                           {[this] { return now; }, [] { return 0.5; }, [this] { return stopping; }}};
    QStringList sentByRival; ///< By a second drain on the same database.
    QueueDelivery rival{settings, {{u"kvo"_s, [this](const auto &event) { sentByRival.append(nameOf(event)); }}}};

    void receive(const QJsonObject &event)
    {
        const QString name = nameOf(event);
        sent.append(name);
        whileSending();
        if (serviceDown || unreachable.contains(name))
            throw std::runtime_error("connection refused");
        if (refused.contains(name))
            throw QueueRefusal(u"заказ не найден"_s);
    }
};
