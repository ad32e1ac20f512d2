// Delivers host events to their subscribers. Used on the check thread only.
#pragma once

#include <core/baseactivitylistener.h>
#include <poshost_export.h>

#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtCore/QSet>

class POSHOST_EXPORT ActivityNotifier
{
public:
    virtual ~ActivityNotifier() = default;

    /// Delivers events with these codes to `listener`, in place of an earlier subscription of the same listener. Does
    /// not own the listener, and forgets one that is destroyed.
    virtual void subscribe(BaseActivityListener *listener, const QSet<int> &codes);

    /// Delivers nothing more to `listener`. Ignores unknown listeners.
    virtual void unsubscribe(BaseActivityListener *listener);

    /// Calls handleEvent() of all subscribers of the event's code, in order of subscription. Listeners may subscribe
    /// and unsubscribe during the call. A listener's exceptions reach the caller.
    virtual void notify(const Event &event);

private:
    struct Subscription
    {
        QPointer<BaseActivityListener> listener;
        QSet<int> codes;
    };
    bool isSubscribed(const BaseActivityListener *listener, int code) const;

    QList<Subscription> m_subscriptions;
};
