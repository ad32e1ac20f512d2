// Stands before the C library's calls with which Qt, SQLite and libcurl reach files and the network.
#include "iowatch.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <mutex>

namespace iowatch {

namespace {

std::mutex mutex;
std::string watched = "/nowhere";
Calls made;

void note(const char *call, const std::string &path)
{
    const std::scoped_lock lock(mutex);
    if (path.starts_with(watched))
        (::gettid() == ::getpid() ? made.ofMainThread : made.ofOthers).insert(call);
}

/// One of the till's files, or a connection to a service; not the display, fonts, or the queues of threads.
void note(const char *call, int file)
{
    char path[PATH_MAX];
    const ssize_t size = ::readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
    sockaddr address = {};
    socklen_t length = sizeof address;
    const bool isSocket = ::getsockname(file, &address, &length) == 0 && address.sa_family == AF_INET;
    note(call, isSocket ? watched : std::string(path, static_cast<std::size_t>(std::max<ssize_t>(size, 0))));
}

} // namespace

void watch(const std::string &folder)
{
    const std::scoped_lock lock(mutex);
    watched = folder;
    made = {};
}

Calls calls()
{
    const std::scoped_lock lock(mutex);
    return made;
}

} // namespace iowatch

extern "C" {

#define KVO_VISIBLE __attribute__((visibility("default")))

// A call whose first argument is the file, with and without further ones.
#define KVO_WATCH(result, name, parameters, ...)                                                                       \
    KVO_VISIBLE result name parameters                                                                                 \
    {                                                                                                                  \
        iowatch::note(#name, file);                                                                                    \
        return reinterpret_cast<result(*) parameters>(::dlsym(RTLD_NEXT, #name))(__VA_ARGS__);                         \
    }

KVO_WATCH(int, fdatasync, (int file), file)
KVO_WATCH(int, connect, (int file, const sockaddr *address, socklen_t size), file, address, size)
KVO_WATCH(ssize_t, read, (int file, void *data, size_t size), file, data, size)
KVO_WATCH(ssize_t, recv, (int file, void *data, size_t size, int flags), file, data, size, flags)
KVO_WATCH(ssize_t, pread64, (int file, void *data, size_t size, off64_t at), file, data, size, at)
KVO_WATCH(ssize_t, write, (int file, const void *data, size_t size), file, data, size)
KVO_WATCH(ssize_t, send, (int file, const void *data, size_t size, int flags), file, data, size, flags)
KVO_WATCH(ssize_t, pwrite64, (int file, const void *data, size_t size, off64_t at), file, data, size, at)

// The mode of a new file is a variable argument.
KVO_VISIBLE int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    iowatch::note("open64", path);
    return reinterpret_cast<int (*)(const char *, int, ...)>(::dlsym(RTLD_NEXT, "open64"))(path, flags, mode);
}
}
