// One check of the till, from its opening to the journal, together with the loyalty system that works on it.
#pragma once

#include "checkresult.h"
#include "tillstate.h"

#include <checks/checkstore.h>
#include <core/eventcode.h>
#include <core/singleton.h>
#include <core/tr.h>
#include <loyalty/ecardnumbertype.h>

#include <functional>
#include <optional>

class BasicLoyaltySystem;

namespace till {

class EndingQueue;

/// Used on the check thread only. Every operation that changes the check returns with the check on the disk, so that a
/// kill at any instant loses at most the operation that was under way.
///
/// How a check ends. The ending is noted on the check before its first step, then:
///
///     noted -> commit() or rollback(), requests held back -> state and requests on the check, in one write
///           -> requests on the queue -> journal entered and check removed, in one write
///
/// A kill in between leaves the check in the store, and resume() goes on from what it says. Because the ending is noted
/// first, nobody changes a check whose order may be posted. Until the state is on the check nothing can have been
/// posted (see EndingQueue), so commit() may run again, and even the card may still be removed. Afterwards only steps
/// follow that are safe to repeat: the service's operations are idempotent by basket. The journal comes after the
/// queue: what is in the books is certain to be sent. Where the queue cannot be used, the check waits in the store with
/// its requests, and the till goes on selling.
///
/// Operations throw BasicException with the text for the cashier when they are refused or cannot be saved; the check
/// then is as it was before. Only an order that the service may have stays noted, and is settled by the next operation.
class CheckSession
{
public:
    /// All of them must live longer than the session; `queue` must be in place as Singleton<DBQueueBroker>.
    CheckSession(BasicLoyaltySystem &system, EndingQueue &queue);
    ~CheckSession();
    Q_DISABLE_COPY_MOVE(CheckSession)

    /// Picks up the check that was open when the till ended. Where the check was being closed or voided, the ending is
    /// completed and its result returned. A check that cannot go on is set aside, and the cashier is told why: it never
    /// keeps the till from selling. To be called once, before anything else.
    std::optional<CheckResult> resume();

    bool isOpen() const { return !m_document.isNull(); }

    /// The check as it stands; isOpen() must hold.
    CheckResult result() const;

    /// Why no card is accepted, as far as is known; empty while cards are.
    QString loyaltyOff() const;

    void open();

    /// Puts the check aside for later.
    void park();

    /// Goes on with a check that was put aside: its identifier, or its number in keptChecks(), counted from 1. Returns
    /// the check where it was only waiting to be ended.
    std::optional<CheckResult> take(const QString &which);

    /// The checks that were put aside, the oldest first.
    QList<CheckStore::KeptCheck> keptChecks() const;

    /// Ends the checks whose requests could not be put on the queue. Does nothing while a check is open. True when some
    /// go on waiting.
    bool endWaiting();

    /// Puts a line on the check and returns its number.
    int addGoods(const QSharedPointer<GoodsItem> &item);
    void changeGoods(int line, std::optional<double> quantity, std::optional<Money> price);
    void removeGoods(int line);

    bool canRestoreGoods() const { return !m_state.undo.isEmpty(); }

    /// Takes the last change of a line back; a removed line gets its number and place again.
    void restoreGoods();

    /// Puts the customer's card on the check, identified by the loyalty system. A phone number is searched for first;
    /// any other text is the card's number. Refused when no customer is found.
    void addCard(ECardNumberType type, const QString &text);

    /// Takes the card and the points off the check.
    void removeCard();

    /// Has the loyalty system price the check.
    void price();

    void subtotal();

    /// Pays with as many points as the loyalty system allows. Returns without points where the cashier chose to remove
    /// the card.
    void spend();

    /// Closes the check. One without lines is voided, and the cashier is told so.
    CheckResult close();
    CheckResult voidCheck();

    /// Tells the cashier what the store has put aside, and saves an open check anew that may have been in it.
    void reportNotices();

private:
    QSharedPointer<DocumentCardRecord> card() const;
    bool isPriced() const;
    bool isPaidWithPoints() const;
    void requireOpen();
    void requireCard();
    bool isEnding(TillState::Ending ending);
    /// If saving fails, reverts the check to its stored state.
    void save();
    /// Whether there were any.
    bool showNotices() const;
    void notify(EventCode code) const;

    /// Continues with a check from the disk.
    void adopt(const QSharedPointer<SaleDocument> &document);

    /// Goes back to the check as it was last saved.
    void reread();
    /// The same for error paths: never throws, so that the original failure is reported.
    void revert();

    /// What every change of a line has in common: `change` is applied between taking off the points that were spent,
    /// which no longer fit, and telling the loyalty system with `code`.
    void changeLines(EventCode code, const std::function<void()> &change);
    void reportRestored();

    QString findCardNumber(ECardNumberType type, const QString &text);
    [[noreturn]] void refuseCard(const tr::Tr &reason);
    /// A kill may have come between the loyalty system's saving of a card and its refusal.
    void dropUnidentifiedCard();
    void takeCardOff();

    /// The line with this number; throws BasicException when there is none.
    QSharedPointer<GoodsItem> requireLine(int line);

    /// Raises an event upon which the loyalty system may create an order. While it does, the order counts as uncertain;
    /// the caller decides what it is afterwards, and saves.
    void notifyCreating(EventCode code);

    /// Drops an uncertain order.
    void settleOrder();

    /// Tells the cashier that points have come off that the customer had confirmed.
    void reportPointsReturned() const;

    /// Takes the points off the check, cancels the order and prices the check anew.
    void dropLoyaltyResult();

    /// Calls `attempt` until the check is priced. Where it fails the cashier may retry, or remove the card.
    void priceOrRemoveCard(const std::function<void()> &attempt);
    void spendOffered();

    /// Continues with a check of the store as far as that is possible.
    std::optional<CheckResult> resumeDocument(const QSharedPointer<SaleDocument> &document);
    void setAside(const QString &reason);
    /// Parks the open check, even where the file that had it is gone.
    void putAway(const QString &reason, CheckStore::Standing standing);
    /// The check is no longer this session's.
    void releaseDocument();
    /// What the queue hands over goes onto the check at once: when the card is removed on the way, the loyalty system
    /// saves the check, and the cancellation must be in that write.
    void takeRequests();

    void beginEnding(TillState::Ending ending);
    CheckResult completeEnding();
    /// Leaves the check with its final state and the requests on the disk.
    void endWithLoyaltySystem();

    BasicLoyaltySystem &m_system;
    EndingQueue &m_queue;
    QSharedPointer<CheckStore> m_store = Singleton<CheckStore>::instance();
    QSharedPointer<SaleDocument> m_document;
    TillState m_state;
    bool m_isStale = false; ///< The check could not be read again after a failed save.
    /// The check whose requests went onto the queue last: where the journal fails after that, they stay there once.
    QString m_queued;
};

} // namespace till
