// The loyalty plugin: found, checked, loaded and started by its host, and stopped and unloaded again.
#pragma once

#include <loyalty/basicloyaltysystem.h>

#include <QtCore/QPluginLoader>

namespace till {

/// The plugin is at work while the object lives. Everything that the plugin has made, such as impacts on a check, must
/// be gone before the object goes.
class LoyaltyPlugin
{
public:
    /// Loads and starts `libKvo.so` of the folder. Throws BasicException that names the file and what is wrong: no
    /// folder, no file, not a plugin, a plugin for something else, cannot be loaded, no loyalty system, not started.
    explicit LoyaltyPlugin(const QString &folder);
    ~LoyaltyPlugin();

    /// Returns the name of the plugin's file. Throws BasicException like the constructor for what can be told without
    /// running the plugin's code.
    static QString inspect(const QString &folder);
    Q_DISABLE_COPY_MOVE(LoyaltyPlugin)

    BasicLoyaltySystem &system() const { return *m_system; }

private:
    QPluginLoader m_loader;
    BasicLoyaltySystem *m_system = nullptr;
};

} // namespace till
