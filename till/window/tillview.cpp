// Which commands the state of the till allows.
#include "tillview.h"

namespace till {

bool TillView::allows(Command::Kind kind) const
{
    using Kind = Command::Kind;
    if (!isReady || question || !waitingFor.isEmpty())
        return false;
    const bool hasCard = isOpen && !check.card.isEmpty();
    const bool hasLines = isOpen && !check.lines.isEmpty();
    switch (kind) {
    case Kind::Card:
    case Kind::Phone:
        return !hasCard;
    case Kind::Price:
        return hasCard && hasLines;
    case Kind::Spend:
        return hasCard && hasLines && check.spent().isZero() && (check.basket.isEmpty() || !check.offered.isZero());
    case Kind::Change:
    case Kind::Remove:
    case Kind::Close:
        return hasLines;
    case Kind::Restore:
        return isOpen && isRestorable;
    case Kind::Park:
    case Kind::Void:
        return isOpen;
    case Kind::Take:
    case Kind::ShowParked:
        return !isOpen;
    default:
        return true;
    }
}

} // namespace till
