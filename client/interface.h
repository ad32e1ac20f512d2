// The client of the loyalty service. Immutable after construction: its operations may be called from any thread, each
// blocks its caller for one exchange at most.
#pragma once

#include "client/request.h"
#include "client/response.h"

#include <core/formock.h>
#include <document/abstractdocument.h>
#include <loyalty/ecardnumbertype.h>
#include <net/response.h>

#include <QtCore/QUrl>
#include <QtCore/QUrlQuery>

#include <filesystem>

namespace Log4Qt {
class Logger;
}

namespace kvo {

/// Every operation that reaches the service throws BasicException with the text for the cashier when the exchange fails
/// or the service refuses (see checkForError()), and then changes nothing. All steps are virtual, so that a test double
/// can replace any one of them.
class Interface
{
public:
    /// Reads the settings "Kvo:..." from Singleton<Config>, once. Does not contact the service and validates nothing: a
    /// wrong setting makes the first exchange fail. Logs a warning for plain HTTP to another machine.
    Interface();

    /// For test doubles: sets the logger and reads no settings.
    explicit Interface(utils::ForMock);

    virtual ~Interface();
    Q_DISABLE_COPY_MOVE(Interface)

    /// The customer with this telephone number (type Phone) or card number (any other type): the "data" of GET
    /// searchCustomer, empty when the answer has none.
    virtual QJsonObject searchCustomer(const QString &number, ECardNumberType type) const;

    /// Details of a card, its tiers among them: the "data" of GET cardInfo, empty when the answer has none.
    virtual QJsonObject cardInfo(const QString &cardNumber, const QString &customerAccount) const;

    /// Points that may be spent: "AmountQty" of GET loyaltyBalanceInfo, 0 when the answer has none.
    virtual double loyaltyBonusInfo(const QString &cardNumber, const QString &customerAccount) const;

    /// Prices the check without creating an order (POST calculateOrder). On success the body that was sent becomes the
    /// card's operation info, and the response carries the order's identifier.
    virtual Response calculateOrder(const QSharedPointer<AbstractDocument> &document,
                                    const QSharedPointer<DocumentCardRecord> &card) const;

    /// Creates the order (POST createOrder), otherwise like calculateOrder(). `forbidDiscount`: no line may be paid
    /// with points.
    virtual Response createOrder(const QSharedPointer<AbstractDocument> &document,
                                 const QSharedPointer<DocumentCardRecord> &card, bool forbidDiscount) const;

    /// The requests of an order, built and not sent; for requestOnline() or the host's queue.
    virtual Request createOrderRequest(const QSharedPointer<AbstractDocument> &document,
                                       const QSharedPointer<DocumentCardRecord> &card, bool forbidDiscount) const;
    virtual Request updateOrderRequest(const QSharedPointer<AbstractDocument> &document,
                                       const QSharedPointer<DocumentCardRecord> &card) const;
    /// Posts the order exactly as the service last accepted it: the body is the card's operation info.
    virtual Request postOrderRequest(const QSharedPointer<DocumentCardRecord> &card) const;
    /// Binds the document's identifier to the order.
    virtual Request bindOrderIdRequest(const QSharedPointer<AbstractDocument> &document,
                                       const QSharedPointer<DocumentCardRecord> &card) const;
    virtual Request cancelOrderRequest(const QSharedPointer<AbstractDocument> &document,
                                       const QSharedPointer<DocumentCardRecord> &card) const;

    /// Has the service send `text` by SMS to `phone` (POST send of the message API). Neither is changed.
    virtual void verification(const QString &text, const QString &phone) const;

    /// Sends an event of the host's queue (Request::toQueueEvent()). Logs a refusal with status 200, 400 or 500 as an
    /// error instead of throwing, see checkForError().
    virtual void requestFromQueue(const QJsonObject &event) const;

    /// Sends a request now; the response is made from the "result" of the answer.
    virtual Response requestOnline(const Request &request) const;

    /// A new random UUID: 36 characters, lower case, without braces.
    virtual QString createUuid() const;

    /// The body of an order: the check's lines with their discounts and payments, and the customer. The card's
    /// operation id names the order; a card without one gets a new identifier at every call. `forbidDiscount`: no line
    /// may be paid with points.
    virtual QJsonObject createOrderBody(const QSharedPointer<AbstractDocument> &document,
                                        const QSharedPointer<DocumentCardRecord> &card, bool forbidDiscount) const;

    /// Sends a request through the host's RestClient and returns the answer after checkForError().
    virtual http::Response request(const Request &request, bool logOnly) const;

    /// Returns when the answer is good. Throws BasicException when there was no answer or the service cannot serve now,
    /// and its subclass Refusal when the service has refused this very request. `logOnly`: a refusal by
    /// "success": false with status 200, 400 or 500 is an error line in the log instead.
    virtual void checkForError(const http::Response &response, bool logOnly) const;

    /// The URL of a method of the loyalty API; invalid, with an errorString(), when "Kvo:host" cannot be parsed.
    virtual QUrl getUrl(const QString &method, const QUrlQuery &query) const;
    QUrl getUrl(const QString &method) const { return getUrl(method, QUrlQuery()); }

    /// The URL of a method of the message API; invalid likewise.
    virtual QUrl getVerificationUrl(const QString &method) const;

protected:
    QString host;                           ///< Scheme, host and port. A path in it is replaced.
    std::filesystem::path path;             ///< Prefix of the loyalty API.
    std::filesystem::path verificationPath; ///< Prefix of the message API.
    int timeout = 0;                        ///< Of one exchange, in milliseconds.
    QHash<QString, QString> headers;        ///< Sent with every request.
    QString brand;
    QString verificationBrand; ///< Recognised, but messages go out under `brand`.
    QString onlineStore;
    QString terminal;
    Log4Qt::Logger *logger; ///< "kvo"; belongs to the logging framework.

private:
    QJsonObject query(const QString &method, const QUrlQuery &parameters) const;
    QUrlQuery cardQuery(const QString &cardNumber, const QString &customerAccount) const;
    Request orderRequest(const QString &method, const QJsonObject &body) const;
    QJsonObject orderReference(const DocumentCardRecord &card) const;
    Response requestResult(const Request &order) const;
    Response sendOrder(const Request &order, DocumentCardRecord &card) const;
    QUrl methodUrl(const std::filesystem::path &prefix, const QString &method, const QUrlQuery &query) const;
};

} // namespace kvo
