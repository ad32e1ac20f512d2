// The cashier behind the window: questions of the host and the plugin, answered across threads.
#pragma once

#include "tillview.h"

#include <cashier/cashierui.h>

#include <condition_variable>
#include <functional>
#include <mutex>

class BasicLoyaltySystem;

namespace till {

/// Put in place as Singleton<CashierUi>. The check thread asks and waits; the window's thread answers and never waits.
class WindowCashier : public CashierUi
{
public:
    /// Shows a question, or with nothing that it is answered. Called on the check thread.
    using Ask = std::function<void(const std::optional<Question> &question)>;
    /// Shows a text that needs no answer. Called on the check thread.
    using Tell = std::function<void(const QString &text)>;

    WindowCashier(Ask ask, Tell tell);

    /// Whose last error is the reason for a question, and whose card is to be confirmed. Null: nobody's.
    void setLoyaltySystem(const BasicLoyaltySystem *system) { m_system = system; }

    bool ask(const tr::Tr &message, const tr::Tr &first, const tr::Tr &second) override;
    std::optional<QString> enterCode(const tr::Tr &prompt, std::chrono::milliseconds timeLeft,
                                     int attemptsLeft) override;

    void show(const tr::Tr &message) override { m_tell(message.ru()); }

    /// From any thread, at once. An answer to another question than the current one is ignored.
    void answer(const Answer &answer);

    /// From any thread: nobody answers any more. What asks ends with an exception that passes through the plugin, and
    /// the check stays as it was last saved, as after a kill.
    void abandon();

private:
    /// Nothing when `timeLeft` is over before there is an answer.
    std::optional<Answer> waitForAnswer(Question question, std::optional<std::chrono::milliseconds> timeLeft);

    Ask m_show;
    Tell m_tell;
    const BasicLoyaltySystem *m_system = nullptr;
    bool m_isSendingAgain = false; ///< The code was given up in order to get a new one.

    std::mutex m_mutex;
    std::condition_variable m_answered;
    quint64 m_question = 0;
    std::optional<Answer> m_answer;
    bool m_isAbandoned = false;
};

} // namespace till
