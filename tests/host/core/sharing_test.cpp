// What is shared by the whole process: single objects, event subscriptions.
#include <core/activitynotifier.h>
#include <core/singleton.h>

#include <gtest/gtest.h>

#include <functional>
#include <latch>
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
    std::latch start(8);
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&start] {
            start.arrive_and_wait();
            Singleton<Asking>::instance();
        });
    }
    threads.clear();
    Singleton<Asking>::replace(nullptr);
    EXPECT_EQ(Counted::made, 1);
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
