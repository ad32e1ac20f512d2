// Stands before the C library's calls that reach files and the network.
#include "iowatch.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <climits>
#include <cstdarg>

namespace iowatch {

Counts onMainThread;
Counts onOthers;

namespace {

std::string watched = "/nowhere"; // set before there are other threads

void count(Call call)
{
    ++(::gettid() == ::getpid() ? onMainThread : onOthers).at(call);
}

/// Of the till's files, or a connection to a service; not the display, fonts, or the queues of threads.
void count(Call call, int file)
{
    char path[PATH_MAX];
    const ssize_t size = ::readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
    sockaddr address = {};
    socklen_t length = sizeof address;
    const bool isSocket = ::getsockname(file, &address, &length) == 0 && address.sa_family == AF_INET;
    if (isSocket || std::string(path, size > 0 ? static_cast<std::size_t>(size) : 0).starts_with(watched))
        count(call);
}

template <class Function>
Function next(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

void watch(const std::string &folder)
{
    watched = folder;
    for (Counts *counts : {&onMainThread, &onOthers}) {
        for (std::atomic<int> &one : *counts)
            one = 0;
    }
}

} // namespace iowatch

using namespace iowatch;

extern "C" {

#define KVO_VISIBLE __attribute__((visibility("default")))

// A call whose first argument is the file, with and without further ones.
#define KVO_WATCH(call, result, name, parameters, ...)                                                                 \
    KVO_VISIBLE result name parameters                                                                                 \
    {                                                                                                                  \
        count(call, file);                                                                                             \
        return next<result(*) parameters>(#name)(__VA_ARGS__);                                                         \
    }

KVO_WATCH(Sync, int, fdatasync, (int file), file)
KVO_WATCH(Connect, int, connect, (int file, const sockaddr *address, socklen_t size), file, address, size)
KVO_WATCH(Read, ssize_t, read, (int file, void *data, size_t size), file, data, size)
KVO_WATCH(Read, ssize_t, recv, (int file, void *data, size_t size, int flags), file, data, size, flags)
KVO_WATCH(Read, ssize_t, pread64, (int file, void *data, size_t size, off64_t at), file, data, size, at)
KVO_WATCH(Write, ssize_t, write, (int file, const void *data, size_t size), file, data, size)
KVO_WATCH(Write, ssize_t, send, (int file, const void *data, size_t size, int flags), file, data, size, flags)
KVO_WATCH(Write, ssize_t, pwrite64, (int file, const void *data, size_t size, off64_t at), file, data, size, at)

// open() and its relatives take the mode of a new file as a variable argument.
#define KVO_WATCH_OPEN(name, parameters, ...)                                                                          \
    KVO_VISIBLE int name parameters                                                                                    \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(arguments, mode_t) : 0;                           \
        va_end(arguments);                                                                                             \
        if (std::string(path).starts_with(watched))                                                                    \
            count(Open);                                                                                               \
        return next<int(*) parameters>(#name)(__VA_ARGS__, flags, mode);                                               \
    }

KVO_WATCH_OPEN(open, (const char *path, int flags, ...), path)
KVO_WATCH_OPEN(open64, (const char *path, int flags, ...), path)
KVO_WATCH_OPEN(openat, (int folder, const char *path, int flags, ...), folder, path)
KVO_WATCH_OPEN(openat64, (int folder, const char *path, int flags, ...), folder, path)
}
