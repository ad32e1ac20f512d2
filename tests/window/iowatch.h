// How often this process has read, written or synced a database, or connected to a service.
#pragma once

#include <atomic>

namespace iowatch {

extern std::atomic<int> onMainThread;
extern std::atomic<int> onOthers;

} // namespace iowatch
