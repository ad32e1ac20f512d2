// Anchors the class in the library.
#include "bonusimpact.h"

BonusImpact::~BonusImpact() = default;
