// The program's user interface as the host's dialogs need it.
#pragma once

#include <core/tr.h>
#include <poshost_export.h>

#include <chrono>
#include <optional>

/// One per process through Singleton<CashierUi>; the program puts its own in place with
/// Singleton<CashierUi>::replace(). Called on the check thread, which waits for the answer. The default chooses the
/// second button and abandons every code prompt.
class POSHOST_EXPORT CashierUi
{
public:
    virtual ~CashierUi();

    /// Asks a question with two buttons; true for the first.
    virtual bool ask(const tr::Tr &message, const tr::Tr &first, const tr::Tr &second);

    /// Asks for the code that the customer has received; empty when the cashier gives up or time runs out.
    /// `attemptsLeft` counts this one; below VerificationLogic::maxAttempts a wrong code was entered before.
    virtual std::optional<QString> enterCode(const tr::Tr &prompt, std::chrono::milliseconds timeLeft,
                                             int attemptsLeft);

    /// Shows a text that needs no answer.
    virtual void show(const tr::Tr &message);
};
