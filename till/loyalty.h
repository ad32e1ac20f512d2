// The loyalty system that the till sells with.
#pragma once

#include <loyalty/basicloyaltysystem.h>

#include <memory>

namespace till {

class LoyaltyPlugin;

/// Why the loyalty system refused, for the cashier: what it said, and a text of the till's own where that is blank,
/// since a service need not give a reason.
tr::Tr refusalText(const tr::Tr &said);

/// The reason to show below a question of the loyalty system, which gives none itself; empty for the till's own.
QString reasonFor(const tr::Tr &question, const BasicLoyaltySystem &system);

/// The plugin, or, where it cannot be used, a stand-in that accepts no card and says why: checks without a card are
/// sold as ever.
class Loyalty
{
public:
    /// Loads the plugin of the folder; see LoyaltyPlugin.
    explicit Loyalty(const QString &pluginFolder);
    ~Loyalty();
    Q_DISABLE_COPY_MOVE(Loyalty)

    BasicLoyaltySystem &system() const { return *m_system; }

private:
    std::unique_ptr<LoyaltyPlugin> m_plugin;
    std::unique_ptr<BasicLoyaltySystem> m_standIn;
    BasicLoyaltySystem *m_system = nullptr;
};

} // namespace till
