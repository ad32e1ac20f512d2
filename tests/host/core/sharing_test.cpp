// What is shared by the whole process: single objects, event subscriptions.
#include "tests/support/test.h"

#include <core/activitynotifier.h>
#include <core/mockfactory.h>
#include <core/singleton.h>
#include <core/tr.h>

#include <functional>
#include <thread>

struct Counted
{
    static inline std::atomic<int> made = 0;
    Counted()
    {
        ++made;
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // so that the others come while it is being made
    }
};

TEST(Registry, ManyThreadsGetOneObject)
{
    std::vector<std::jthread> threads(8);
    for (std::jthread &thread : threads)
        thread = std::jthread([] { Singleton<Counted>::instance(); });
    threads.clear();
    EXPECT_EQ(Counted::made, 1);
}

struct Listener : BaseActivityListener
{
    void handleEvent(const Event &event) override
    {
        received.append(event.getCode());
        if (const auto reaction = std::exchange(react, nullptr))
            reaction();
    }
    QList<int> received;
    std::function<void()> react;
};

TEST(MockFactory, HandsOutTheInstalledObjectUntilItIsCleared)
{
    const auto installed = QSharedPointer<tr::Tr>::create(QStringLiteral("text"));
    MockFactory<tr::Tr>::install(installed);
    EXPECT_EQ(MockFactory<tr::Tr>::create(), installed);
    MockFactory<tr::Tr>::clear();
    EXPECT_TRUE(MockFactory<tr::Tr>::create()->isEmpty() && !installed->isEmpty());
}

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
    EXPECT_TRUE(leaves.received.isEmpty() && joins.received.isEmpty());

    notifier.subscribe(&first, {2});
    notifier.notify(Event(1));
    EXPECT_EQ(first.received, (QList<int>{1, 2})) << "a new subscription replaces the old one";
    EXPECT_EQ(joins.received, QList<int>{1});
}
