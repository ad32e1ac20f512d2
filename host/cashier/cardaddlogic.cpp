// Removes a card from a check. The cancellation of the service's order must be stored before anything else changes:
// once the card is gone, nobody knows the order's name.
#include "cardaddlogic.h"

#include <cashier/savetofilelogic.h>
#include <core/mockfactory.h>
#include <core/singleton.h>
#include <loyalty/loyaltysystems.h>

CardAddLogic::~CardAddLogic() = default;

void CardAddLogic::removeCard(const QSharedPointer<AbstractDocument> &document,
                              const QSharedPointer<DocumentCardRecord> &card)
{
    if (!document || !card || !document->getCardRecords().contains(card))
        return;
    // A system has the order of one card, its own; another one of its kind has nothing to be cancelled.
    if (const auto system = Singleton<LoyaltySystems>::instance()->findByCard(*card);
        system && system->getCard() == card) {
        system->rollback(document);
        system->cancel();
        // Points stored with the check must not come back with it after a restart.
        document->setPluginData(system->getStoreDataKey(), {});
    }
    document->removeCard(card);
    MockFactory<SaveToFileLogic>::create()->save(document, {}, 0.0);
}
