// Anchors the class in the library.
#include "client.h"

Client::~Client() = default;
