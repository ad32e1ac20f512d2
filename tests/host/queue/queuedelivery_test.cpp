// What is sent when: order within an order, independence of orders, failures, refusals, probes.
#include "queuefixture.h"

TEST_F(QueueTest, EventsLeaveInOrderOfPushAndAreGoneAfterwards)
{
    pushAll(u"a1 b1 a2 c1 b2 a3"_s);
    EXPECT_EQ(drain(), u"a1 b1 a2 c1 b2 a3"_s);
    EXPECT_EQ(sql(u"SELECT COUNT(*) FROM event"_s), 0);
}

TEST_F(QueueTest, FailureHoldsBackItsOwnOrderOnly)
{
    pushAll(u"a1 a2 b1 c1 a3"_s);
    unreachable = {u"a1"_s};
    EXPECT_EQ(drain(), u"a1 b1 c1"_s);
    unreachable.clear();
    EXPECT_EQ(drain(), u""_s);
    now += BackOff::base;
    EXPECT_EQ(drain(), u"a1 a2 a3"_s);
}

TEST_F(QueueTest, ServiceThatIsDownGetsOneProbeAndNotTheWholeQueue)
{
    pushAll(u"a1 b1 c1 d1 e1"_s);
    serviceDown = true;
    EXPECT_EQ(drain(), u"a1 b1"_s);
    now += BackOff::base;
    EXPECT_EQ(drain(), u"c1"_s);
    push(u"f1"_s);
    EXPECT_EQ(drain(), u"f1"_s) << "a new event is a probe of its own";
    serviceDown = false;
    now += BackOff::longest;
    EXPECT_EQ(drain(), u"d1 e1 a1 b1 c1 f1"_s);
}

TEST_F(QueueTest, RefusedEventStopsItsOrderOnly)
{
    pushAll(u"a1 a2 b1 a3"_s);
    refused = {u"a2"_s};
    EXPECT_EQ(drain(), u"a1 a2 b1"_s);
    EXPECT_EQ(broker.status().setAside, 2);
    EXPECT_EQ(broker.status().waiting, 0);
}
