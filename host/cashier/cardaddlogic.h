// Takes a card off a check.
#pragma once

#include <document/abstractdocument.h>
#include <poshost_export.h>

class POSHOST_EXPORT CardAddLogic
{
public:
    virtual ~CardAddLogic();

    /// Removes the card and its impacts. First has the card's loyalty system undo its operations (rollback(), which
    /// cancels an order at the service, then cancel()), then drops its plugin data and saves the check. Does nothing
    /// for a null argument or a card that is not on the check. Throws BasicException when the cancellation cannot be
    /// stored, with the card still on the check, and when the check cannot be saved, with the card gone.
    virtual void removeCard(const QSharedPointer<AbstractDocument> &document,
                            const QSharedPointer<DocumentCardRecord> &card);
};
