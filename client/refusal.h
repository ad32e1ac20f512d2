// The service's word that it will not have a request.
#pragma once

#include <core/basicexception.h>

namespace kvo {

/// The service has judged this very request and refused it: sending it again will not help.
class Refusal : public BasicException
{
public:
    using BasicException::BasicException;
};

} // namespace kvo
