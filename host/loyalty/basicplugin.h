// Base of every host plugin: start, stop, and the hooks by which plugins extend the host.
#pragma once

#include <core/event.h>
#include <poshost_export.h>

#include <QtCore/QSet>
#include <QtCore/QVariant>
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

    /// For hosts that call handlers by name, and triggers after events with a code. This one does neither, so these do
    /// nothing.
    virtual void addHandler(const QString &, const Handler &) {}
    virtual void addTrigger(int, const Trigger &) {}
    virtual void disableTriggers() {}
    virtual void enableTriggers() {}

private:
    QSet<QString> m_features;
};

Q_DECLARE_INTERFACE(BasicPlugin, "org.poshost.AbstractPlugin")
