// Which calls this process makes for files below a folder and for the network, by thread.
#pragma once

#include <set>
#include <string>

namespace iowatch {

struct Calls
{
    std::set<std::string> ofMainThread, ofOthers;
};

/// Begins anew, for files below this folder.
void watch(const std::string &folder);

Calls calls();

} // namespace iowatch
