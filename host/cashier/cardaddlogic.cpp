// Taking a card off a check. The order matters: the cancellation of the service's order is stored before anything else
// changes, because nobody would ask for it again once the card is gone.
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
    if (const auto system = Singleton<LoyaltySystems>::instance()->findByCard(*card)) {
        system->rollback(document);
        system->cancel();
        // Points stored with the check must not come back with it after a restart.
        document->setPluginData(system->getStoreDataKey(), {});
    }
    document->removeCard(card);
    MockFactory<SaveToFileLogic>::create()->save(document, {}, 0.0);
}
