// What the till itself keeps with an open check, beside the goods and the card: how far its dealings with the loyalty
// system have come. It is saved with the check, in one write, so that after a kill the till knows what to repeat.
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

    /// An order may exist at the service that does not fit the check: points were being spent, an order was being
    /// created, or the check has changed since. It is to be cancelled and the check priced anew before anything else.
    bool orderUncertain = false;

    /// A line has changed and the subtotal has not been entered since.
    bool changeReported = false;

    /// The prices of the loyalty system are those of an earlier state of the check.
    bool pricesStale = false;

    /// What the last change of a line takes to be taken back: "line" is its number, "item" the line as it was before
    /// (missing when the change added the line). Empty when there is nothing to take back.
    QVariantMap undo;

    /// What the ending puts on the queue, see EndingQueue.
    QVariantList requests;

    static TillState readFrom(const AbstractDocument &document);
    void writeTo(AbstractDocument &document) const;
};

} // namespace till
