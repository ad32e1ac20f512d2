// The cashier: answers from the scenario, and from the terminal where the scenario has none.
#pragma once

#include "scenario.h"

#include <cashier/cashierui.h>

class BasicLoyaltySystem;

namespace till {

/// Put in place as Singleton<CashierUi>. Every text that it shows is also remembered.
class ScriptedCashier : public CashierUi
{
public:
    /// `codeCommand` is a command line whose output is the code that the customer has received; empty: there is none.
    explicit ScriptedCashier(const QString &codeCommand);

    /// Whose last error is shown with a question that does not give it itself.
    void setLoyaltySystem(const BasicLoyaltySystem &system) { m_system = &system; }

    /// The answers for the next check; forgets what was shown.
    void beginCheck(const Answers &answers);

    /// What was shown since then.
    const QStringList &messages() const { return m_messages; }

    bool ask(const tr::Tr &message, const tr::Tr &first, const tr::Tr &second) override;

    /// From the scenario, else from the command, else from the terminal. Codes are never written anywhere.
    std::optional<QString> enterCode(const tr::Tr &prompt, std::chrono::milliseconds timeLeft,
                                     int attemptsLeft) override;

    void show(const tr::Tr &message) override;

private:
    std::optional<QString> askCustomer();

    QString m_codeCommand;
    const BasicLoyaltySystem *m_system = nullptr;
    Answers m_answers;
    QStringList m_messages;
};

} // namespace till
