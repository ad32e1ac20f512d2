// The till's own state of an open check, apart from goods and card: how far the exchange with the loyalty
// system has got. It is saved with the check, in one write, so that after a kill the till knows what to repeat.
#pragma once

#include <QtCore/QVariant>

class AbstractDocument;

namespace till {

struct TillState
{
    enum class Ending : int { None = 0, Closing = 1, Voiding = 2 };

    /// The check is being closed or voided. From here there is no way back: it is not changed any more, and after a
    /// kill the ending is carried to its end.
    Ending ending = Ending::None;

    /// How the service's order relates to the check.
    enum class Order : int {
        InStep = 0,  ///< The prices are those of the check as it is, or it was never priced.
        Changed = 1, ///< A line has changed; the loyalty system knows and updates the order at the subtotal.
        Behind = 2,  ///< The order follows the check, but the points offered are those of an earlier state.
        /// An order may exist that does not fit the check: points were being spent, an order was being created, or the
        /// check has changed since. To be cancelled, and the check priced anew, before anything else.
        Uncertain = 3
    };
    Order order = Order::InStep;

    /// What undoes the last change of a line: "line" is its number, "item" the line as it was before
    /// (missing when the change added the line). Empty when there is nothing to take back.
    QVariantMap undo;

    /// The order of a check that is being voided.
    QString basket;

    /// What the ending puts on the queue, see EndingQueue.
    QVariantList requests;

    /// Throws BasicException when what is stored cannot have been written by the till.
    static TillState readFrom(const AbstractDocument &document);
    void writeTo(AbstractDocument &document) const;
};

} // namespace till
