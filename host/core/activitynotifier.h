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
    ActivityNotifier();
    virtual ~ActivityNotifier();

    /// From now on `listener` receives the events with these codes; replaces an earlier subscription of the same
    /// listener. The listener is not owned; a destroyed one is forgotten.
    virtual void subscribe(BaseActivityListener *listener, const QSet<int> &codes);

    /// `listener` receives nothing any more. Unknown listeners are ignored.
    virtual void unsubscribe(BaseActivityListener *listener);

    /// Calls handleEvent() of every subscriber of the event's code, in order of subscription, before it returns. A
    /// listener may subscribe or unsubscribe while it is called. Exceptions of a listener pass to the caller.
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
