// The till behind the window: host, plugin, check and queue, all on the check thread.
#pragma once

#include "till/catalogue.h"
#include "till/sellingtill.h"
#include "tillview.h"

#include <QtCore/QObject>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace till {

/// Lives on the check thread; the window reaches it only through queued calls. Everything that reads a file or a
/// database, or speaks to the service, happens here. It is the host's CashierUi as well: the check thread asks and
/// waits, the window's thread answers and never waits.
class CheckDesk : public QObject, public CashierUi
{
    Q_OBJECT

public:
    /// A command of the cashier.
    using Work = std::function<void(CheckDesk &)>;

    /// Puts host and plugin in place, and goes on with the check that was open when the till ended. `self` becomes the
    /// host's CashierUi until finish().
    void start(const QString &configFile, const QSharedPointer<CashierUi> &self);

    /// Takes host and plugin away again.
    void finish() { m_till.reset(); }

    /// Carries a command out. One that fails leaves its reason as the view's message.
    void perform(const Work &work, const QString &waitingFor);

    // The commands. They throw BasicException when they are refused.

    /// The commands on the open check that need no more than the session.
    CheckSession &session() { return m_till->session(); }
    /// Puts goods on the check, see Catalogue::find(); lists them when there are several.
    void addGoods(const QString &entry);
    /// `text` is a quantity, or "=" and a price.
    void changeGoods(int line, const QString &text);
    void identify(ECardNumberType type, const QString &number);
    /// Asks first, as does all that cannot be taken back.
    void removeCard();
    void take(const QString &identifier);
    void close() { end(session().close()); }
    void voidCheck();
    /// Puts the open check aside, or lists those that were put aside.
    void parkOrShowParked();

    void showQueue();
    void retryRequest(const QString &number);
    void discardRequest(const QString &number);
    void showJournal();
    void showReceipt(const QString &identifier);
    void saveReceipt(const QString &text);

    // The questions of host and plugin.

    bool ask(const tr::Tr &message, const tr::Tr &first, const tr::Tr &second) override;
    std::optional<QString> enterCode(const tr::Tr &prompt, std::chrono::milliseconds timeLeft,
                                     int attemptsLeft) override;
    void show(const tr::Tr &message) override { warn(message.ru()); }

    /// From any thread, at once. An answer to another question than the current one is ignored.
    void answer(const Answer &answer);

    /// From any thread: nobody answers any more. What asks ends with an exception that passes through the plugin, and
    /// the check stays as it was last saved, as after a kill.
    void abandon();

Q_SIGNALS:
    void changed(const till::TillView &view);

private:
    void resume();
    void end(const CheckResult &result);
    void warn(const QString &text);
    void refresh();
    /// Refreshes what can change while nothing is done, then schedules itself again.
    void poll();
    /// Nothing when `timeLeft` is over before there is an answer.
    std::optional<Answer> waitForAnswer(Question question, std::optional<std::chrono::milliseconds> timeLeft = {});
    bool confirms(const QString &text, const QString &first);

    std::unique_ptr<SellingTill> m_till;
    Catalogue m_catalogue;
    TillView m_view;

    bool m_isSendingAgain = false; ///< The code was given up in order to get a new one.
    std::mutex m_mutex;
    std::condition_variable m_answered;
    quint64 m_question = 0;
    std::optional<Answer> m_answer;
    bool m_isAbandoned = false;
};

} // namespace till
