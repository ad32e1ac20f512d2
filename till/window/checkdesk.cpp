// Starts and ends the till behind the window, shows what came of each command, and waits for the cashier's answers.
#include "checkdesk.h"

#include "listings.h"
#include "till/checkview.h"
#include "till/endingqueue.h"

#include <cashier/verificationlogic.h>
#include <core/basicexception.h>
#include <loyalty/basicloyaltysystem.h>

#include <QtCore/QTimer>

#include <stdexcept>
#include <tuple>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace till {

void CheckDesk::start(const QString &configFile, const QSharedPointer<CashierUi> &self)
{
    try {
        m_till = std::make_unique<SellingTill>(configFile, self);
    } catch (const BasicException &error) {
        m_view.fault = error.text().ru();
        Q_EMIT changed(m_view);
        return;
    }
    const QString theme = Singleton<Config>::instance()->getString(u"Till:theme"_s, {});
    m_view.isDark = theme.compare("dark"_L1, Qt::CaseInsensitive) == 0;
    perform(&CheckDesk::resume, tr("Проверяем, не остался ли открытый чек"));
    poll();
}

void CheckDesk::resume()
{
    QString problem;
    std::tie(m_catalogue, problem) = openCatalogue(m_till->host().goodsFile());
    if (!problem.isEmpty())
        warn(problem);
    m_till->host().queue().findProblem();
    if (const std::optional<CheckResult> ended = session().resume()) {
        end(*ended);
        warn(tr("Касса была прервана. Чек, который закрывался, завершён."));
    } else if (session().isOpen()) {
        warn(tr("Касса была прервана. Чек восстановлен, можно продолжать."));
    }
    if (const QString reason = session().loyaltyOff(); !reason.isEmpty())
        warn(tr("Бонусы не работают: %1").arg(reason));
}

void CheckDesk::perform(const Work &work, const QString &waitingFor)
{
    m_view.message.clear();
    m_view.isWarning = false;
    m_view.page.reset();
    m_view.waitingFor = waitingFor.isEmpty() ? tr("Выполняем") : waitingFor;
    m_view.waitingSince = QDateTime::currentDateTime();
    Q_EMIT changed(m_view);
    try {
        work(*this);
        session().reportNotices();
    } catch (const BasicException &error) {
        warn(error.text().ru());
    } catch (const std::exception &error) {
        warn(tr("Не выполнено: %1").arg(QString::fromUtf8(error.what())));
    }
    m_view.waitingFor.clear();
    ++m_view.commandsDone;
    refresh();
}

void CheckDesk::warn(const QString &text)
{
    m_view.message += m_view.message.isEmpty() ? text : u'\n' + text;
    m_view.isWarning = true;
}

void CheckDesk::refresh()
{
    m_view.isOpen = session().isOpen();
    m_view.isRestorable = session().canRestoreGoods();
    m_view.check = m_view.isOpen ? session().result() : CheckResult();
    m_view.link = Singleton<LinkState>::instance()->state();
    Q_EMIT changed(m_view);
}

void CheckDesk::poll()
{
    if (!m_till)
        return; // finished
    m_view.queue = queueStatus();
    const bool isBroken = !m_view.queue || session().endWaiting();
    refresh();
    // A queue on a server that does not answer holds up the sale for seconds at each poll.
    QTimer::singleShot(isBroken ? 30s : 1s, this, &CheckDesk::poll);
}

bool CheckDesk::ask(const tr::Tr &message, const tr::Tr &first, const tr::Tr &second)
{
    if (std::exchange(m_isSendingAgain, false))
        return true; // The loyalty system sends a new code when it tries once more.
    Question question{.text = message.ru(), .first = first.ru(), .second = second.ru()};
    if (const QString reason = reasonFor(message, m_till->system()); !reason.isEmpty())
        question.reason = tr("Причина: %1").arg(reason);
    return waitForAnswer(question)->kind == Answer::Kind::First;
}

std::optional<QString> CheckDesk::enterCode(const tr::Tr & /*prompt*/, std::chrono::milliseconds timeLeft,
                                            int attemptsLeft)
{
    const auto card = m_till->system().getCard();
    const auto client = card ? card->getCard()->getClient() : nullptr;
    Question question{.first = tr("Проверить код"), .second = tr("Не списывать"), .entry = Question::Entry::Code};
    question.text = tr("Код отправлен на номер %1").arg(client ? maskedCard(client->getPhoneNumber()) : QString());
    question.reason =
        attemptsLeft < VerificationLogic::maxAttempts
            ? tr("Код неверный. Спросите у покупателя код ещё раз.")
            : tr("Спросите у покупателя код и введите его. К списанию: %1").arg(moneyText(session().result().offered));
    question.attemptsLeft = attemptsLeft;
    question.deadline = QDeadlineTimer(timeLeft);
    const std::optional<Answer> answer = waitForAnswer(question, timeLeft);
    m_isSendingAgain = answer && answer->kind == Answer::Kind::SendAgain;
    return answer && answer->kind == Answer::Kind::First ? std::optional(answer->text) : std::nullopt;
}

void CheckDesk::answer(const Answer &answer)
{
    const std::scoped_lock lock(m_mutex);
    if (answer.question != m_question || m_answer)
        return;
    m_answer = answer;
    m_answered.notify_one();
}

void CheckDesk::abandon()
{
    const std::scoped_lock lock(m_mutex);
    m_isAbandoned = true;
    m_answered.notify_one();
}

std::optional<Answer> CheckDesk::waitForAnswer(Question question, std::optional<std::chrono::milliseconds> timeLeft)
{
    {
        const std::scoped_lock lock(m_mutex);
        question.number = ++m_question;
        m_answer.reset();
    }
    m_view.question = question;
    refresh();
    std::optional<Answer> answer;
    {
        std::unique_lock lock(m_mutex);
        const auto isAnswered = [this] { return m_isAbandoned || m_answer; };
        if (timeLeft)
            m_answered.wait_for(lock, *timeLeft, isAnswered);
        else
            m_answered.wait(lock, isAnswered);
        if (m_isAbandoned)
            throw std::runtime_error("the window is closed");
        ++m_question; // From here on an answer comes too late.
        answer = m_answer;
    }
    m_view.question.reset();
    m_view.waitingSince = QDateTime::currentDateTime();
    Q_EMIT changed(m_view);
    return answer;
}

bool CheckDesk::confirms(const QString &text, const QString &first)
{
    const Question question{.text = text, .first = first, .second = tr("Нет"), .isRisky = true};
    return waitForAnswer(question)->kind == Answer::Kind::First;
}

} // namespace till
