// Thrown when the service refuses a request for good.
#pragma once

#include <core/basicexception.h>

namespace kvo {

/// The service has processed this very request and refused it: sending it again will not help.
class Refusal : public BasicException
{
public:
    using BasicException::BasicException;
};

} // namespace kvo
