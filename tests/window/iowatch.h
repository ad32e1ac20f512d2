// What this process asks of files below a folder and of the network, counted by thread.
#pragma once

#include <array>
#include <atomic>
#include <string>

namespace iowatch {

enum Call { Open, Read, Write, Sync, Connect };
using Counts = std::array<std::atomic<int>, 5>;

extern Counts onMainThread;
extern Counts onOthers;

/// Counts from zero, for files below this folder.
void watch(const std::string &folder);

} // namespace iowatch
