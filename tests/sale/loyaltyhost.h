// A host of another make, in this process: the loaded plugin, the real disk, queue and exchanges. It does what
// docs/integration.md asks of a host and nothing that the reference till does beyond that.
#pragma once

#include "till/checkresult.h"
#include "till/loyaltyplugin.h"

#include <cashier/cardaddlogic.h>
#include <cashier/dialog.h>
#include <cashier/savetofilelogic.h>
#include <cashier/verificationlogic.h>
#include <core/basicexception.h>
#include <core/eventcode.h>
#include <core/mockfactory.h>
#include <document/saledocument.h>
#include <net/restclient.h>
#include <queue/dbqueuebroker.h>

#include <functional>
#include <memory>
#include <stdexcept>

namespace sale {

/// What a SIGKILL is to the host's own code: nothing on the way catches it.
struct Killed
{
};

/// What goes wrong around the plugin. A method's name is the last part of its address.
struct Trouble
{
    QString killBefore;  ///< The method that is never sent.
    QString killAfter;   ///< The method whose answer is never seen, or that is stored and nothing after it.
    int failingPush = 0; ///< Counts the pushes down to the one that cannot be stored; 0: none.
    int failingSave = 0; ///< The same for saves of the check.
    std::function<void()> kill = [] { throw Killed(); };
    /// The cashier's answer to a question. By default none is expected.
    std::function<bool()> answer = []() -> bool { throw std::logic_error("a question to the cashier"); };
    std::function<void()> atCodePrompt = [] {}; ///< What the host does while the prompt is open.
};

class LoyaltyHost
{
public:
    /// Works with the settings of the file, which name its data folder.
    LoyaltyHost(const QString &configFile, const QString &pluginFolder);
    ~LoyaltyHost();
    Q_DISABLE_COPY_MOVE(LoyaltyHost)

    /// Opens a check of 227.50, of which points may pay 113.75.
    void open();

    /// Makes calls one after the other, such as "price change:3 spend commit"; see the source for their names. Throws
    /// Killed and BasicException as they come.
    void play(const QString &calls);

    void restart();
    void save() const { MockFactory<SaveToFileLogic>::create()->save(check, {}, 0); }

    /// Delivers what is queued. False when something is left.
    [[nodiscard]] bool deliver(std::chrono::milliseconds time = std::chrono::seconds(25));

    /// Ends the check and returns what it came to.
    till::CheckResult end(SaleDocument::State state);

    BasicLoyaltySystem &system() const { return m_plugin->system(); }

    QSharedPointer<SaleDocument> check;
    Trouble trouble;

private:
    std::function<void()> callOf(const QString &name, const QString &argument);
    void addCard(const QString &number, ECardNumberType type);
    void addCardOfPhone(const QString &phone);
    void price();
    void spend();
    void change(double quantity);
    void takePointsOff() { check->removeImpactsOf(system().getCard()); }
    void removeCard() { MockFactory<CardAddLogic>::create()->removeCard(check, system().getCard()); }
    void notify(EventCode code, bool withDocument);

    QString m_pluginFolder;
    std::unique_ptr<till::LoyaltyPlugin> m_plugin;
};

} // namespace sale
