// Base of every host plugin: features, handlers and triggers are plain tables.
#include "basicplugin.h"

BasicPlugin::BasicPlugin() = default;

BasicPlugin::~BasicPlugin() = default;

bool BasicPlugin::init()
{
    return true;
}

bool BasicPlugin::deinit()
{
    return true;
}

bool BasicPlugin::isFeatureMatched(const QString &feature) const
{
    return m_features.contains(feature);
}

void BasicPlugin::setFeature(const QString &feature, bool enabled)
{
    if (enabled)
        m_features.insert(feature);
    else
        m_features.remove(feature);
}

void BasicPlugin::addHandler(const QString &name, const Handler &handler)
{
    m_handlers.insert(name, handler);
}

QVariant BasicPlugin::callHandler(const QString &name, const QVariant &argument) const
{
    const Handler handler = m_handlers.value(name);
    return handler ? handler(argument) : QVariant();
}

void BasicPlugin::addTrigger(int eventCode, const Trigger &trigger)
{
    m_triggers[eventCode].append(trigger);
}

void BasicPlugin::disableTriggers()
{
    m_triggersEnabled = false;
}

void BasicPlugin::enableTriggers()
{
    m_triggersEnabled = true;
}

void BasicPlugin::runTriggers(const Event &event) const
{
    if (!m_triggersEnabled)
        return;
    // A trigger may add another one: that one waits for the next event.
    const QList<Trigger> triggers = m_triggers.value(event.getCode());
    for (const Trigger &trigger : triggers)
        trigger(event);
}
