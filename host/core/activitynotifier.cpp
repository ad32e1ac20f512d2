// Delivers host events. Listeners may come, go and be destroyed while an event is being delivered.
#include <core/activitynotifier.h>

#include <algorithm>

void ActivityNotifier::subscribe(BaseActivityListener *listener, const QSet<int> &codes)
{
    unsubscribe(listener);
    m_subscriptions.append({listener, codes});
}

void ActivityNotifier::unsubscribe(BaseActivityListener *listener)
{
    m_subscriptions.removeIf([&](const Subscription &known) { return !known.listener || known.listener == listener; });
}

bool ActivityNotifier::isSubscribed(const BaseActivityListener *listener, int code) const
{
    return std::any_of(m_subscriptions.cbegin(), m_subscriptions.cend(), [&](const Subscription &known) {
        return known.listener == listener && known.codes.contains(code);
    });
}

void ActivityNotifier::notify(const Event &event)
{
    // Iterates over a copy, because a listener may change the list; one that has unsubscribed since is not called.
    const QList<Subscription> subscriptions = m_subscriptions;
    for (const Subscription &subscription : subscriptions) {
        BaseActivityListener *listener = subscription.listener;
        if (listener && subscription.codes.contains(event.getCode()) && isSubscribed(listener, event.getCode()))
            listener->handleEvent(event);
    }
}
