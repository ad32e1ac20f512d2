// Base of every host plugin: start, stop, and the hooks by which plugins extend the host.
#pragma once

#include <core/event.h>
#include <poshost_export.h>

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QtPlugin>

#include <functional>

/// Used on the check thread only.
class POSHOST_EXPORT BasicPlugin
{
public:
    using Handler = std::function<QVariant(const QVariant &argument)>;
    using Trigger = std::function<void(const Event &event)>;

    BasicPlugin();
    virtual ~BasicPlugin();
    Q_DISABLE_COPY_MOVE(BasicPlugin)

    /// Called once after loading. False means that the plugin cannot work and is not used.
    virtual bool init();

    /// Called once before unloading.
    virtual bool deinit();

    /// Whether the plugin offers the feature of this name.
    virtual bool isFeatureMatched(const QString &feature) const;
    virtual void setFeature(const QString &feature, bool enabled = true);

    /// Registers a handler for the host's call `name`, in place of an earlier one.
    virtual void addHandler(const QString &name, const Handler &handler);

    /// Calls a handler. An invalid variant when there is none.
    QVariant callHandler(const QString &name, const QVariant &argument) const;

    /// Runs `trigger` after each event with this code, while triggers are enabled.
    virtual void addTrigger(int eventCode, const Trigger &trigger);
    virtual void disableTriggers();
    virtual void enableTriggers();

    /// Runs the triggers of the event's code, in the order in which they were added; nothing while they are disabled.
    void runTriggers(const Event &event) const;

private:
    QSet<QString> m_features;
    QHash<QString, Handler> m_handlers;
    QHash<int, QList<Trigger>> m_triggers;
    bool m_triggersEnabled = true;
};

Q_DECLARE_INTERFACE(BasicPlugin, "org.poshost.AbstractPlugin")
