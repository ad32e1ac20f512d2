// The loyalty system that the host loads from libKvo.so. All of it runs on the host's check thread.
#pragma once

#include "client/interface.h"

#include <core/baseactivitylistener.h>
#include <loyalty/basicloyaltysystem.h>

#include <functional>
#include <optional>

namespace kvo {

/// Connects the host's check with the loyalty service: identifies the customer, has the service price the check, pays
/// with points, and keeps an order on the service in step with the check. Texts for the cashier and the log are
/// Russian.
///
/// Without a card on the check the operations have nothing to do and return true. A card without a check is logged as
/// an error and nothing is sent; only cancelling an order needs no check.
class Plugin : public BaseActivityListener, public BasicLoyaltySystem
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "Kvo" FILE "kvo.json")
    Q_INTERFACES(BasicLoyaltySystem BasicPlugin)

public Q_SLOTS:
    /// PositionChanged notes that the order may have to be updated; SubtotalEntered then updates it, PaymentStarted
    /// always does. After an error the cashier retries or removes the card; throws BasicException when the removal
    /// cannot be stored. LoyaltyResultDropped, and PositionRestored when no update is pending, cancel the order and
    /// price the check again. These two throw BasicException when the order cannot be cancelled, or like request();
    /// where that would return false, the card has no operation id and getLastErrorString() says why. Other events are
    /// ignored. The check is the event's value "document".
    void handleEvent(const Event &event) override;

public:
    Plugin();

    /// Without a client, for test doubles.
    explicit Plugin(utils::ForMock);

    ~Plugin() override;

    /// Subscribes to the host's events. False, with nothing subscribed, when the base class fails to initialise.
    bool init() override;
    bool deinit() override;

    /// Finds the card of the customer with this telephone number (searchCustomer) and keeps the customer for
    /// identifyByCard(). Leaves other kinds of input to the host. The result reports failures.
    loyalty::CardNumberResult getCardNumber(const loyalty::CardNumberInputData &data) override;

    /// Fills the record, its card and a new client from searchCustomer, cardInfo and loyaltyBalanceInfo. False without
    /// a record, after an error of the service, when its balance makes no sense, and when the check cannot be saved,
    /// see getLastErrorString(); what was filled by then stays.
    bool identifyByCard(QSharedPointer<DocumentCardRecord> &card, ECardNumberType type) override;

    /// Prices the check (calculateOrder): points that may be spent and that will be earned, and the order's identifier.
    /// False after an error of the service, see getLastErrorString(); the points then stay as they were. Throws
    /// BasicException when the answer's sums make no sense or the check cannot be saved; the card then has its earlier
    /// operation id and info again.
    bool request(const QSharedPointer<AbstractDocument> &document) override;

    /// Pays with the points for spending: confirms with the customer if configured, creates the order (createOrder) and
    /// turns the points it redeems into bonus impacts. After an error the cashier retries or removes the card. Always
    /// true; throws BasicException when the answer's sums make no sense or the check cannot be saved (the order then
    /// counts as not created, and there are no impacts), and when a card's removal cannot be stored.
    bool spendPoints() override;

    /// Makes sure that the order exists (createOrder without spending points), then queues postOrder and bindOrderId.
    /// After an error the cashier retries or removes the card. Always true; throws BasicException when the check cannot
    /// be saved or the queue cannot store. May be repeated, also after it threw.
    bool commit(const QSharedPointer<AbstractDocument> &document) override;

    /// Forgets points, impacts, records and the customer. Does not contact the service.
    bool cancel() override;

    /// Queues cancelOrder for the order of the check, for which the check itself is not needed. Throws BasicException
    /// when the queue cannot store.
    bool rollback(const QSharedPointer<AbstractDocument> &document) override;

    /// Reads back what updatePluginData() wrote; skips what cannot be read and logs a warning.
    bool restoreLoyaltySystem() override;

    /// Writes points, records, impacts and the order's state into the check's plugin data and has the host save the
    /// check. Throws BasicException when it cannot be saved.
    virtual void updatePluginData() const;

    /// The points that the service redeems, as one discount per line.
    virtual BonusImpactPtrList createBonusImpacts(const QSharedPointer<DocumentCardRecord> &card,
                                                  const Response &response) const;

    /// From the configured amount up, sends the customer a code and asks the cashier to enter it. Throws BasicException
    /// when the code cannot be sent or is not confirmed. `amount`: points.
    virtual void verification(double amount) const;

    /// A random code of `length` decimal digits; empty for a length below 1.
    virtual QString getCode(int length) const;

    /// The points that the order earns, spread over the lines as the system's bonus records.
    virtual void createBonusRecords(const QSharedPointer<DocumentCardRecord> &card, const Response &response);

protected:
    QSharedPointer<Interface> interface;
    QJsonObject customer;       ///< Found by telephone number; empty when the card itself was entered.
    bool orderCreated = false;  ///< The order of the current check exists on the service.
    bool pendingUpdate = false; ///< A line of the check has changed since the order was last updated.
    Log4Qt::Logger *logger;

private:
    void setUp();

    void updateOrder(const Event &event);
    void sendUpdate(const Request &update, const QSharedPointer<AbstractDocument> &document,
                    const QSharedPointer<DocumentCardRecord> &card);
    bool cancelOrder(const QSharedPointer<AbstractDocument> &document, bool queued);
    void cancelAndReprice(const Event &event);
    void assignOperationId(DocumentCardRecord &card);
    void storePluginData() const;
    static QSharedPointer<AbstractDocument> documentOf(const Event &event);

    bool hasCheckAndCard(const QSharedPointer<AbstractDocument> &document,
                         const QSharedPointer<DocumentCardRecord> &card) const;
    std::optional<Response> createOrder(
        const QSharedPointer<AbstractDocument> &document, const QSharedPointer<DocumentCardRecord> &card,
        bool forbidDiscount, const std::function<void()> &confirm = [] {});
    void retryOrRemoveCard(const tr::Tr &question, const QSharedPointer<AbstractDocument> &document,
                           const QSharedPointer<DocumentCardRecord> &card, const std::function<void()> &attempt);
    void reportError(const tr::Tr &text);
};

} // namespace kvo
