// The defaults of a host plugin.
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
