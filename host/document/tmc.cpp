// Anchors the class in the library.
#include "tmc.h"

Tmc::~Tmc() = default;
