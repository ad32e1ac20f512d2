// What is shared by the whole process: single objects, doubles of collaborators, event subscriptions.
#include "tests/support/installed.h"

#include <core/activitynotifier.h>
#include <core/currenttime.h>
#include <core/session.h>
#include <core/singleton.h>

#include <gtest/gtest.h>

#include <functional>
#include <thread>

struct Counted
{
    static inline std::atomic<int> made = 0;
    Counted()
    {
        ++made;
        for (int i = 0; i < 1000; ++i)
            std::this_thread::yield(); // So that the others come while it is being made.
    }
};

/// Asks for another object while it is made, and while it dies.
struct Asking
{
    ~Asking() { Singleton<Counted>::instance(); }
    QSharedPointer<Counted> counted = Singleton<Counted>::instance();
};

TEST(Registry, ManyThreadsGetOneObject)
{
    std::vector<std::jthread> threads(8);
    for (std::jthread &thread : threads)
        thread = std::jthread([] { Singleton<Asking>::instance(); });
    threads.clear();
    Singleton<Asking>::replace(nullptr);
    EXPECT_EQ(Counted::made, 1);
}

TEST(MockFactory, HandsOutTheDoubleWhileThereIsOne)
{
    {
        const Installed<CurrentTime, CurrentTime> one;
        EXPECT_EQ(MockFactory<CurrentTime>::create(), one.object);
    }
    EXPECT_NE(MockFactory<CurrentTime>::create(), MockFactory<CurrentTime>::create());
}

TEST(Session, AlwaysHasAUser)
{
    Session session;
    session.setUser(QSharedPointer<User>::create(17, QStringLiteral("Анна")));
    EXPECT_EQ(session.getUser()->getCode(), 17);
    EXPECT_EQ(session.getUser()->getName(), QStringLiteral("Анна"));
    session.setUser(nullptr);
    EXPECT_TRUE(session.getUser()->getCode().isNull());
}

class Listener : public BaseActivityListener
{
public:
    void handleEvent(const Event &event) override
    {
        received.append(event.getCode());
        if (const auto reaction = std::exchange(react, nullptr))
            reaction();
    }
    QList<int> received;
    std::function<void()> react;
};

TEST(ActivityNotifier, DeliversInOrderToWhoeverIsStillSubscribed)
{
    ActivityNotifier notifier;
    Listener first, leaves, joins;
    auto destroyed = std::make_unique<Listener>();
    notifier.subscribe(&first, {1, 2});
    notifier.subscribe(destroyed.get(), {1});
    notifier.subscribe(&leaves, {1});
    first.react = [&] {
        notifier.unsubscribe(&leaves);
        notifier.subscribe(&joins, {1});
        destroyed.reset();
        notifier.notify(Event(2));
    };

    notifier.notify(Event(1));
    EXPECT_EQ(first.received, (QList<int>{1, 2}));
    EXPECT_TRUE(leaves.received.isEmpty());
    EXPECT_TRUE(joins.received.isEmpty());

    notifier.subscribe(&first, {2});
    notifier.notify(Event(1));
    EXPECT_EQ(first.received, (QList<int>{1, 2})) << "a new subscription replaces the old one";
    EXPECT_EQ(joins.received, QList<int>{1});
}

TEST(Event, HasTheHostsNumbers)
{
    using enum EventCode;
    QList<int> numbers;
    for (const EventCode code :
         {SubtotalEntered, PositionChanged, PositionRestored, PaymentStarted, LoyaltyResultDropped})
        numbers.append(Event(code).getCode());
    EXPECT_EQ(numbers, (QList<int>{24, 57, 237, 238, 239}));
}
