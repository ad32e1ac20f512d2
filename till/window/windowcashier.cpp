// Hands questions to the window and waits for what the cashier answers.
#include "windowcashier.h"

#include <cashier/verificationlogic.h>
#include <loyalty/basicloyaltysystem.h>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

QString maskedPhone(const BasicLoyaltySystem &system)
{
    const auto card = system.getCard();
    const auto client = card ? card->getCard()->getClient() : nullptr;
    const QString phone = client ? client->getPhoneNumber() : QString();
    constexpr qsizetype shown = 4;
    return phone.isEmpty() ? phone : u"••• •• "_s + phone.right(shown);
}

} // namespace

WindowCashier::WindowCashier(Ask ask, Tell tell) : m_show(std::move(ask)), m_tell(std::move(tell))
{}

bool WindowCashier::ask(const tr::Tr &message, const tr::Tr &first, const tr::Tr &second)
{
    if (std::exchange(m_isSendingAgain, false))
        return true; // The loyalty system sends a new code when it tries once more.
    Question question;
    question.text = message.ru();
    question.first = first.ru();
    question.second = second.ru();
    const QString reason = m_system ? m_system->getLastErrorString().ru() : QString();
    if (!question.text.contains(reason))
        question.reason = reason;
    return waitForAnswer(question, std::nullopt)->kind == Answer::Kind::First;
}

std::optional<QString> WindowCashier::enterCode(const tr::Tr &prompt, std::chrono::milliseconds timeLeft,
                                                int attemptsLeft)
{
    Question question;
    question.isCode = true;
    question.text = prompt.ru();
    question.attemptsLeft = attemptsLeft;
    question.isCodeRefused = attemptsLeft < VerificationLogic::maxAttempts;
    question.deadline = QDateTime::currentDateTime().addMSecs(timeLeft.count());
    if (m_system)
        question.phone = maskedPhone(*m_system);
    const std::optional<Answer> answer = waitForAnswer(question, timeLeft);
    m_isSendingAgain = answer && answer->kind == Answer::Kind::SendAgain;
    return answer && answer->kind == Answer::Kind::Code ? std::optional(answer->code) : std::nullopt;
}

void WindowCashier::answer(const Answer &answer)
{
    const std::scoped_lock lock(m_mutex);
    if (answer.question != m_question || m_answer)
        return;
    m_answer = answer;
    m_answered.notify_one();
}

void WindowCashier::abandon()
{
    const std::scoped_lock lock(m_mutex);
    m_isAbandoned = true;
    m_answered.notify_one();
}

std::optional<Answer> WindowCashier::waitForAnswer(Question question, std::optional<std::chrono::milliseconds> timeLeft)
{
    std::unique_lock lock(m_mutex);
    question.number = ++m_question;
    m_answer.reset();
    m_show(question);
    const auto isAnswered = [this] { return m_isAbandoned || m_answer; };
    if (timeLeft)
        m_answered.wait_for(lock, *timeLeft, isAnswered);
    else
        m_answered.wait(lock, isAnswered);
    if (m_isAbandoned)
        throw std::runtime_error("the window is closed");
    ++m_question; // From here on an answer comes too late.
    const std::optional<Answer> answer = std::exchange(m_answer, std::nullopt);
    lock.unlock();
    m_show(std::nullopt);
    return answer;
}

} // namespace till
