// Adding and removing cards of a check.
#pragma once

#include <document/abstractdocument.h>
#include <poshost_export.h>

class POSHOST_EXPORT CardAddLogic
{
public:
    virtual ~CardAddLogic();

    /// Takes the card off the check together with its impacts. The loyalty system that answers for the card is asked to
    /// undo its operations first (rollback(), which cancels an order that the service knows, then cancel()). The check
    /// is saved. Throws BasicException when that cancellation cannot be stored; the card then stays on the check.
    virtual void removeCard(const QSharedPointer<AbstractDocument> &document,
                            const QSharedPointer<DocumentCardRecord> &card);
};
