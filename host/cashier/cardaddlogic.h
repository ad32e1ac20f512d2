// Adding and removing cards of a check.
#pragma once

#include <document/abstractdocument.h>
#include <poshost_export.h>

class POSHOST_EXPORT CardAddLogic
{
public:
    virtual ~CardAddLogic();

    /// Takes the card off the check together with its impacts. The loyalty system that answers for the card is asked to
    /// undo its operations first (rollback(), which cancels an order that the service knows, then cancel()), and what
    /// it has stored with the check is dropped. The check is saved. Nothing is done for a null argument or a card that
    /// is not on the check. Throws BasicException when that cancellation cannot be stored, and the card then stays on
    /// the check; also when the check cannot be saved afterwards, with the card gone.
    virtual void removeCard(const QSharedPointer<AbstractDocument> &document,
                            const QSharedPointer<DocumentCardRecord> &card);
};
