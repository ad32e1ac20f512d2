// The drain as a thread, and against other processes: killed at any moment, nothing is lost and nothing overtakes.
#include "queuefixture.h"

#include <queue/queueadmin.h>
#include <queue/queuedrain.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QMap>
#include <QtCore/QProcess>
#include <QtCore/QThread>

#include <random>

class QueueDrainTest : public QueueTest
{
protected:
    /// A second process on the same queue, see queuechild.cpp.
    class Child
    {
    public:
        Child(const QString &mode, const QString &ini, int firstNumber = 0)
        {
            process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
            process.start(QStringLiteral(QUEUE_CHILD), {mode, ini, QString::number(firstNumber)});
        }
        ~Child() { kill(); }

        /// The next thing the child has done; empty when it does nothing for long.
        QString nextLine()
        {
            while (!process.canReadLine() && process.waitForReadyRead(30'000))
                ;
            return QString::fromUtf8(process.readLine()).trimmed();
        }

        /// All that it has done until it was killed.
        QStringList kill()
        {
            process.kill();
            process.waitForFinished();
            return QString::fromUtf8(process.readAll()).split(u'\n', Qt::SkipEmptyParts);
        }

    private:
        QProcess process;
    };

    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

TEST_F(QueueDrainTest, DeliversOnItsOwnThreadWhatIsPushedBeforeAndAfterItsStart)
{
    std::atomic<int> count = 0;
    QueueDrain drain;
    drain.setHandler(u"kvo"_s, [&count](const QJsonObject &event) {
        if (++count == 2)
            throw 1; // not even a std::exception may end the drain
        EXPECT_FALSE(event.isEmpty());
    });
    push(u"a1"_s);
    drain.start();
    drain.start(); // is at work already
    EXPECT_TRUE(drain.waitUntilDrained(30s));
    push(u"a2"_s);
    EXPECT_TRUE(drain.waitUntilDrained(30s));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(broker.status().waiting, 0);
}

TEST_F(QueueDrainTest, WakesForAPushForACallAndForAPerson)
{
    std::atomic<int> count = 0;
    std::atomic<bool> down = true;
    const auto hasSent = [&count](int expected) {
        for (const QDeadlineTimer deadline(20s); count < expected && !deadline.hasExpired();)
            QThread::msleep(1);
        return count >= expected;
    };
    QueueDrain drain(1h);
    drain.setHandler(u"kvo"_s, [&](const QJsonObject &) {
        ++count;
        if (down)
            throw std::runtime_error("connection refused");
    });
    drain.start();
    EXPECT_TRUE(drain.waitUntilDrained(30s));
    push(u"a1"_s);
    EXPECT_TRUE(hasSent(1));
    drain.wakeUp();
    EXPECT_TRUE(hasSent(2)) << "without waiting for the end of the back-off";
    down = false;
    QueueAdmin admin;
    for (const QDeadlineTimer deadline(20s); admin.list().constFirst().attempts < 2 && !deadline.hasExpired();)
        QThread::msleep(1);
    admin.retry(admin.list().constFirst().id);
    EXPECT_TRUE(hasSent(3));
}

TEST_F(QueueDrainTest, FindsByItselfWhatAnotherProgramHasPushed)
{
    QueueDrain drain(10ms);
    std::atomic<bool> arrived = false;
    drain.setHandler(u"kvo"_s, [&arrived](const QJsonObject &) { arrived = true; });
    drain.start();
    EXPECT_TRUE(drain.waitUntilDrained(30s));
    sql(u"INSERT INTO event (owner, basket, event, created, state) VALUES ('kvo', 'x', '{}', 1, 'waiting')"_s);
    sql(u"UPDATE summary SET waiting = waiting + 1 WHERE id = 0"_s);
    sql(u"INSERT INTO head SELECT id, owner, 0 FROM event"_s);
    for (const QDeadlineTimer deadline(20s); !arrived && !deadline.hasExpired();)
        QThread::msleep(1);
    EXPECT_TRUE(arrived);
}

TEST_F(QueueDrainTest, StopsAfterTheExchangeInHandAndGoesOnAtTheNextStart)
{
    QueueDrain drain;
    std::atomic<bool> endless = true;
    drain.setHandler(u"kvo"_s, [&endless](const QJsonObject &event) {
        if (endless)
            DBQueueBroker().push(u"kvo"_s, event, {});
    });
    push(u"a1"_s);
    drain.start();
    EXPECT_FALSE(drain.waitUntilDrained(0ms));
    drain.stop();
    EXPECT_GT(broker.status().waiting, 0);
    endless = false;
    drain.start();
    EXPECT_TRUE(drain.waitUntilDrained(30s));
}

TEST_F(QueueDrainTest, WhatAnotherProcessIsSendingIsLeftToItUntilItDies)
{
    push(u"a1 a2 b1"_s);
    Child child(u"hang"_s, iniFile);
    ASSERT_EQ(child.nextLine(), u"sent a1"_s);
    EXPECT_EQ(drain(), u"b1"_s);
    EXPECT_TRUE(delivery.hasDeliverable());
    child.kill();
    // A server learns a moment later that a connection has ended.
    QString delivered;
    for (const QDeadlineTimer deadline(30s); delivered.isEmpty() && !deadline.hasExpired(); QThread::msleep(5))
        delivered = drain();
    EXPECT_EQ(delivered, u"a1 a2"_s);
}

TEST_F(QueueDrainTest, BeingSentWhenTheDrainIsKilledCountsAsAnAttempt)
{
    push(u"a1"_s);
    for (int kills = 1; kills <= 2; ++kills) {
        Child child(u"hang"_s, iniFile);
        ASSERT_EQ(child.nextLine(), u"sent a1"_s);
        child.kill();
    }
    unreachable = {u"a1"_s};
    EXPECT_EQ(drain(), u"a1"_s);
    EXPECT_EQ(sql(u"SELECT attempts FROM event"_s), 3);
}

TEST_F(QueueDrainTest, KilledAtAnyMomentNothingIsLostAndNothingOvertakes)
{
    const unsigned seed = std::random_device()();
    RecordProperty("seed", std::to_string(seed));
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    constexpr int kills = 8;
    constexpr int orders = 5; // of the child
    QStringList ledger;
    for (int kill = 0; kill < kills; ++kill) {
        Child child(u"work"_s, iniFile, 1'000'000 * (kill + 1));
        for (int lines = std::uniform_int_distribution(1, 40)(random); lines > 0; --lines)
            ledger.append(child.nextLine());
        ledger += child.kill();
        ledger.append(u"killed"_s);
    }
    drain();
    for (const QString &event : std::as_const(sent))
        ledger.append(u"sent "_s + event);

    QSet<QString> lost;
    QMap<QString, int> lastOfOrder;
    int repeated = 0;
    for (const QString &line : std::as_const(ledger))
        if (line.startsWith(u"pushed "))
            lost.insert(line.section(u' ', 1));
    EXPECT_GE(lost.size(), kills / 2);
    for (const QString &line : std::as_const(ledger)) {
        if (!line.startsWith(u"sent "))
            continue;
        const QString event = line.section(u' ', 1);
        lost.remove(event);
        int &last = lastOfOrder[event.left(1)];
        EXPECT_GE(event.mid(1).toInt(), last) << qPrintable(event);
        repeated += event.mid(1).toInt() == last ? 1 : 0;
        last = event.mid(1).toInt();
    }
    EXPECT_TRUE(lost.isEmpty()) << qPrintable(QStringList(lost.values()).join(u' '));
    EXPECT_LE(repeated, kills * orders) << "a kill repeats at most the run in hand, one event of each order";
}
