// Tag of the constructors that build an object without its collaborators, for test doubles to derive from.
#pragma once

namespace utils {
struct ForMock
{
};
} // namespace utils
