// What only a server can do to the queue. Run by scripts/with-postgres.
#include "queuefixture.h"
#include "tests/support/refusal.h"

#include <database/databaseerror.h>
#include <queue/queueadmin.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QScopeGuard>

#include <csignal>
#include <future>

struct PostgresQueueTest : QueueTest
{
    /// To all of the server's processes that serve this database.
    void signalServer(int signal) const
    {
        for (const QVariant &process : column(u"SELECT pid FROM pg_stat_activity WHERE datname = current_database() "
                                              u"AND pid <> pg_backend_pid()"_s))
            ::kill(process.toInt(), signal);
    }

    /// As when the server is restarted.
    void closeAllConnections() const { signalServer(SIGTERM); }
};

TEST_F(PostgresQueueTest, ConnectionThatTheServerHasClosedFailsNoPushAndNoStep)
{
    push(u"a1 b1"_s);
    EXPECT_TRUE(delivery.step());
    closeAllConnections();
    push(u"b2"_s);
    closeAllConnections();
    EXPECT_EQ(drain(), u"b1 b2"_s);
    EXPECT_EQ(broker.status().waiting, 0);
}

TEST_F(PostgresQueueTest, WhatADrainWithoutConnectionHasSentIsRecordedLaterUnlessAnotherHasTakenItOver)
{
    push(u"a1"_s);
    EXPECT_THROW(stepDuring([this] { closeAllConnections(); }), BasicException);
    EXPECT_EQ(drain(), u""_s);
    EXPECT_EQ(broker.status().waiting, 0);

    push(u"a2 a3"_s);
    const auto takeOver = [this] {
        EXPECT_FALSE(rival.step()) << "it is being sent";
        closeAllConnections();
        EXPECT_TRUE(rival.step());
    };
    EXPECT_THROW(stepDuring(takeOver), BasicException);
    EXPECT_EQ(sentByRival, QStringList{u"a2"_s});
    EXPECT_EQ(drain(), u"a3"_s);
    EXPECT_EQ(broker.status().waiting, 0);
}

TEST_F(PostgresQueueTest, NobodyTakesOverWhatIsBeingRecordedOnANewConnection)
{
    push(u"a1 a2"_s);
    EXPECT_THROW(stepDuring([this] { closeAllConnections(); }), BasicException);
    sql(u"CREATE FUNCTION pause() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN PERFORM pg_sleep(0.5); RETURN OLD; END'; "
        u"CREATE TRIGGER pause BEFORE DELETE ON head FOR EACH ROW EXECUTE FUNCTION pause()"_s);
    auto lookOfOther = std::async(std::launch::async, [this] {
        const QDeadlineTimer deadline(5s);
        while (!deadline.hasExpired() && sql(u"SELECT 1 FROM pg_stat_activity WHERE wait_event = 'PgSleep'"_s).isNull())
            ;
        QueueDelivery(settings, {{u"kvo"_s, [this](const auto &event) { sentByRival.append(nameOf(event)); }}}).step();
    });
    const QString sentHere = drain();
    lookOfOther.get();
    EXPECT_EQ((sentByRival + QStringList{sentHere}).join(u""_s), u"a2"_s);
    EXPECT_EQ(broker.status().waiting, 0);
}

TEST_F(PostgresQueueTest, ServerProcessesThatHangHoldNobodyUpForLong)
{
    push(u"a1"_s);
    EXPECT_EQ(drain(), u"a1"_s);
    sql(u"CREATE FUNCTION hang() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN COPY (SELECT 1) TO PROGRAM "
        u"'kill -STOP $PPID'; RETURN NEW; END $$; CREATE TRIGGER hang BEFORE INSERT ON event FOR EACH ROW "
        u"WHEN (NEW.basket = 'b') EXECUTE FUNCTION hang()"_s);
    auto pushed = std::async(std::launch::async,
                             [] { return refusalOf([] { DBQueueBroker().push(u"kvo"_s, eventNamed(u"b1"_s), {}); }); });
    const auto goOn = qScopeGuard([this] { signalServer(SIGCONT); });
    ASSERT_EQ(pushed.wait_for(20s), std::future_status::ready);
    EXPECT_TRUE(pushed.get().contains(u"не ответил вовремя"_s));
    push(u"a2"_s);
    signalServer(SIGSTOP);
    EXPECT_THROW(delivery.step(), BasicException) << "the lock of its lease has not been released";
    EXPECT_EQ(drain(), u"a2"_s);
    EXPECT_EQ(broker.status().waiting, 0);
}

TEST_F(PostgresQueueTest, TillWhoseClockWasAheadHidesNoLaterDeliveryAndNoLaterError)
{
    push(u"a1 b1"_s);
    refused = {u"a1"_s};
    drain();
    sql(u"UPDATE summary SET last_success = 9999999999999, last_error = 'x', last_error_time = 9999999999999 "
        u"WHERE id = (SELECT MIN(id) FROM summary WHERE last_success IS NULL)"_s);
    EXPECT_EQ(broker.status().lastSuccess.toMSecsSinceEpoch(), now.time_since_epoch().count());
    EXPECT_EQ(broker.status().lastErrorTime, broker.status().lastSuccess);
}

TEST_F(PostgresQueueTest, ProblemsAreToldByTheirCause)
{
    EXPECT_THROW(QueueAdmin(), MissingDatabase);
    sql(u"CREATE ROLE guest LOGIN PASSWORD 'secret'"_s);
    configure("user = guest\npassword = secret\n");
    EXPECT_TRUE(refusalOf([] { QueueAdmin(); }).contains(u"недостаточно прав"_s));
    configure({});
    push(u"a1"_s);
    const std::tuple<QByteArray, QString, QString> cases[] = {
        {"database = nowhere\n", {}, u"нет такой базы данных"_s},
        {"host = " + QFile::encodeName(folder.path()) + "\n", {}, u"недоступен"_s},
        {"options = sslmode=nonsense\n", {}, u"проверьте sslmode"_s},
        {"options = sslmod=require\n", {}, u"параметры подключения"_s},
        {"user = stranger\n", {}, u"имя или пароль"_s},
        {"user = guest\npassword = wrong\n", {}, u"имя или пароль"_s},
        {"user = guest\npassword = secret\n", {}, u"недостаточно прав"_s},
        {"user = guest\npassword = secret\n", u"REVOKE CONNECT ON DATABASE \"%1\" FROM PUBLIC"_s.arg(database),
         u"недостаточно прав"_s},
        {"user = guest\npassword = secret\n", u"ALTER ROLE guest CONNECTION LIMIT 0"_s, u"слишком много"_s},
        {{},
         u"CREATE FUNCTION wait() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN PERFORM pg_sleep(60); END'; "
         u"CREATE TRIGGER wait BEFORE INSERT ON event EXECUTE FUNCTION wait()"_s,
         u"не ответил вовремя"_s},
        {{}, u"UPDATE version SET version = 99"_s, u"более новой версией"_s},
    };
    for (const auto &[lines, statement, text] : cases) {
        SCOPED_TRACE(qPrintable(text));
        if (!statement.isEmpty())
            sql(statement);
        configure(lines);
        const QString said = refusalOf([] { DBQueueBroker().push(u"kvo"_s, eventNamed(u"a2"_s), {}); });
        EXPECT_TRUE(said.contains(text)) << said.toStdString();
    }
    EXPECT_EQ(sql(u"SELECT COUNT(*) FROM event"_s), 1);
    sql(u"DROP ROLE guest"_s);
}
