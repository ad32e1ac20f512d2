// Confirmation of the customer by a code.
#pragma once

#include <core/tr.h>
#include <poshost_export.h>

#include <chrono>

class POSHOST_EXPORT VerificationLogic
{
public:
    static constexpr int maxAttempts = 3;
    static constexpr std::chrono::minutes timeLimit{5};

    virtual ~VerificationLogic();

    /// Has the cashier enter the code that the customer has received and compares it with `code`, in constant time;
    /// ignores blanks around it. After a wrong code the prompt says how many attempts are left. `prompt` replaces the
    /// standard prompt when it is not empty; `flags` is reserved and 0. Returns when the code was right; throws
    /// BasicException when the cashier gave up, after maxAttempts wrong codes, and after timeLimit, also when the right
    /// code comes too late. An empty `code` is never right.
    virtual void verify(const QString &code, const tr::Tr &prompt, int flags);
};
