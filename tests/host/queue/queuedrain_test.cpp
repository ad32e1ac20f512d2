// The drain as a thread, and beside other processes.
#include "queuefixture.h"

#include <queue/queueadmin.h>
#include <queue/queuedrain.h>
#include <queue/queuesignal.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QThread>

#include <latch>
#include <thread>

struct QueueDrainTest : QueueTest
{
    /// A second process on the same queue, see queuechild.cpp: begins to send and never ends. Killed with the object.
    std::unique_ptr<QProcess> startChild()
    {
        auto child = std::make_unique<QProcess>();
        child->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child->start(QStringLiteral(QUEUE_CHILD), {iniFile});
        EXPECT_TRUE(child->waitForReadyRead(30'000)) << "nothing sent";
        return child;
    }

    /// Waits until it holds, but not for ever.
    static bool becomes(const std::function<bool()> &condition)
    {
        for (const QDeadlineTimer deadline(30s); !deadline.hasExpired(); QThread::msleep(1))
            if (condition())
                return true;
        return false;
    }

    int argc = 0;
    QCoreApplication application{argc, nullptr};
};

TEST_F(QueueDrainTest, DeliversOnItsOwnThreadWhatIsPushedAndFindsByItselfWhatAnotherProgramHasPushed)
{
    std::atomic<int> count = 0;
    QueueDrain drain(10ms);
    drain.setHandler(u"kvo"_s, [&count](const QJsonObject &) {
        if (++count == 2)
            throw 1; // not even a std::exception may end the drain
    });
    push(u"a1"_s);
    const QString lease = file + u"-lease"_s; // a folder in its place keeps the drain from its work
    const bool isBarred = postgresFolder().isEmpty() && QDir().mkdir(lease);
    drain.start();
    drain.start(); // is at work already
    EXPECT_TRUE(!isBarred || becomes([&] { return drain.problem().contains(lease); }));
    QDir().rmdir(lease);
    EXPECT_TRUE(drain.waitUntilDrained(30s));
    EXPECT_EQ(drain.problem(), QString());
    push(u"a2"_s);
    EXPECT_TRUE(drain.waitUntilDrained(30s));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(broker.status().waiting, 0);
    sql(u"INSERT INTO event (owner, basket, event, created, state) VALUES ('kvo', 'x', '{}', 1, 'waiting')"_s);
    sql(u"UPDATE summary SET waiting = waiting + 1 WHERE id = 0"_s);
    sql(u"INSERT INTO head SELECT id, owner, 0 FROM event"_s);
    EXPECT_TRUE(becomes([&] { return count == 4; }));
}

TEST_F(QueueDrainTest, WakesForAPushForACallAndForAPerson)
{
    std::atomic<int> count = 0;
    std::atomic<bool> down = true;
    const auto hasSent = [&count](int expected) { return becomes([&] { return count >= expected; }); };
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
    EXPECT_TRUE(becomes([&] { return admin.list().constFirst().attempts == 2; }));
    admin.retry(admin.list().constFirst().id);
    EXPECT_TRUE(hasSent(3));
}

TEST_F(QueueDrainTest, DrainsShareALongQueueAndKeepEachOrder)
{
    std::mutex mutex;
    QMap<QString, QStringList> expected;
    QMap<QString, QStringList> arrived;
    for (int number = 1; number <= 20; ++number)
        for (QChar order = u'a'; order <= u'z'; order = QChar(order.unicode() + 1)) {
            expected[order].append(order + QString::number(number));
            push(expected[order].constLast());
        }
    std::latch bothAreAtWork(2);
    QueueDrain drains[2];
    for (QueueDrain &drain : drains) {
        drain.setHandler(u"kvo"_s, [&, isFirst = true](const QJsonObject &event) mutable {
            if (std::exchange(isFirst, false))
                bothAreAtWork.arrive_and_wait();
            const std::scoped_lock lock(mutex);
            arrived[nameOf(event).left(1)].append(nameOf(event));
            if (nameOf(event).endsWith(u"20"))
                throw QueueRefusal(u"заказ не найден"_s);
        });
        drain.start();
    }
    for (QueueDrain &drain : drains)
        EXPECT_TRUE(drain.waitUntilDrained(60s));
    EXPECT_EQ(arrived, expected);
    EXPECT_EQ(broker.status().blocked, 26);
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
    auto child = startChild();
    EXPECT_EQ(drain(), u"b1"_s);
    EXPECT_TRUE(delivery.hasDeliverable());
    child.reset();
    // A server learns a moment later that a connection has ended.
    EXPECT_TRUE(becomes([this] { return drain() == u"a1 a2"; }));
}

TEST_F(QueueDrainTest, BeingSentWhenTheDrainIsKilledCountsAsAnAttempt)
{
    push(u"a1"_s);
    for (int kills = 1; kills <= 2; ++kills)
        startChild();
    unreachable = {u"a1"_s};
    EXPECT_EQ(drain(), u"a1"_s);
    EXPECT_EQ(sql(u"SELECT attempts FROM event"_s), 3);
}

TEST(QueueSignalTest, WaitsUntilItIsRaisedOrTheTimeIsUp)
{
    QueueSignal signal;
    const auto start = std::chrono::steady_clock::now();
    signal.wait(signal.count(), 20ms);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
    const std::jthread other([&] { signal.raise(); });
    signal.wait(0, 1h);
    EXPECT_EQ(signal.count(), 1);
}
