// Events are stored under the right order, by any number of programs at once.
#include "queuefixture.h"

#include <queue/queueadmin.h>

#include <thread>

using DBQueueBrokerTest = QueueTest;

TEST_F(DBQueueBrokerTest, OrderIsTheBasketOrElseTheKeyOrElseNone)
{
    const QJsonObject without{{u"payload"_s, QJsonObject{{u"basket"_s, 7}}}};
    broker.push(u"kvo"_s, eventNamed(u"b1"_s), u"key"_s);
    broker.push(u"kvo"_s, without, u"key"_s);
    broker.push(u"kvo"_s, without, {});
    QStringList orders;
    for (const QueueAdmin::Entry &entry : QueueAdmin().list())
        orders.append(entry.order);
    EXPECT_EQ(orders, (QStringList{u"b"_s, u"key"_s, u""_s}));
}

TEST_F(DBQueueBrokerTest, StatusIsEmptyAtFirstAndThenKnowsTheEventThatWasStoredFirstWhateverTheClockSaid)
{
    const QueueStatus empty = broker.status();
    EXPECT_EQ(empty.waiting + empty.blocked, 0);
    EXPECT_FALSE(empty.oldest.isValid() || empty.lastSuccess.isValid() || empty.lastErrorTime.isValid());
    const QDateTime before = QDateTime::currentDateTime();
    push(u"a1 b1"_s);
    EXPECT_GE(broker.status().oldest, before);
    EXPECT_LE(broker.status().oldest, QDateTime::currentDateTime());
    sql(u"UPDATE event SET created = created + 86400000 WHERE basket = 'a'"_s);
    EXPECT_GE(broker.status().oldest, before.addMSecs(86400000));
}

TEST_F(DBQueueBrokerTest, StoresNothingThatItCannotCount)
{
    push(u"a1"_s);
    sql(u"UPDATE summary SET id = id + 64"_s);
    EXPECT_THROW(push(u"a2"_s), BasicException);
    EXPECT_EQ(broker.status().waiting, 1);
}

TEST_F(DBQueueBrokerTest, ProgramsThatStartTogetherMakeOneQueue)
{
    std::vector<std::jthread> tills;
    for (int till = 0; till < 6; ++till)
        tills.emplace_back([] { EXPECT_NO_THROW(DBQueueBroker().push(u"kvo"_s, eventNamed(u"a1"_s), {})); });
    tills.clear(); // waits for them
    EXPECT_EQ(broker.status().waiting, 6);
}
