// Stands before the C library's calls that reach files and the network, and counts them by thread.
#include "iowatch.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace iowatch {

std::atomic<int> onMainThread = 0;
std::atomic<int> onOthers = 0;

} // namespace iowatch

namespace {

void count()
{
    ++(::gettid() == ::getpid() ? iowatch::onMainThread : iowatch::onOthers);
}

template <class Function>
Function next(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

#define KVO_VISIBLE __attribute__((visibility("default")))

// Every file of the till is locked, synced or positioned; fonts and icons of the window's libraries are not.
KVO_VISIBLE int fdatasync(int file)
{
    count();
    return next<int (*)(int)>("fdatasync")(file);
}

KVO_VISIBLE ssize_t pread64(int file, void *data, size_t size, off64_t offset)
{
    count();
    return next<ssize_t (*)(int, void *, size_t, off64_t)>("pread64")(file, data, size, offset);
}

KVO_VISIBLE ssize_t pwrite64(int file, const void *data, size_t size, off64_t offset)
{
    count();
    return next<ssize_t (*)(int, const void *, size_t, off64_t)>("pwrite64")(file, data, size, offset);
}

KVO_VISIBLE int connect(int socket, const sockaddr *address, socklen_t size)
{
    if (address && address->sa_family == AF_INET)
        count();
    return next<int (*)(int, const sockaddr *, socklen_t)>("connect")(socket, address, size);
}
}
