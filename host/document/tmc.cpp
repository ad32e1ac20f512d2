// An article of the catalogue: anchors the class in the library.
#include "tmc.h"

Tmc::~Tmc() = default;
