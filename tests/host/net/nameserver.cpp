// The name resolution of the HTTP tests.
#include "nameserver.h"

#include <dlfcn.h>
#include <netdb.h>

#include <QtCore/qcompilerdetection.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string_view>

namespace {

// Never destroyed: a question may still wait on a thread of its own when the program ends.
struct State
{
    std::mutex mutex;
    std::condition_variable condition;
    bool released = false;
    bool answered = false;
};

State &state()
{
    static auto *const instance = new State;
    return *instance;
}

} // namespace

void nameserver::release()
{
    const std::lock_guard lock(state().mutex);
    state().released = true;
    state().condition.notify_all();
}

bool nameserver::hasAnswered()
{
    const std::lock_guard lock(state().mutex);
    return state().answered;
}

extern "C" Q_DECL_EXPORT int getaddrinfo(const char *name, const char *service, const addrinfo *hints,
                                         addrinfo **result)
{
    const std::string_view host = name ? name : "";
    if (host == "slow.test") {
        std::unique_lock lock(state().mutex);
        state().condition.wait_for(lock, std::chrono::seconds(30), [] { return state().released; });
        state().answered = true;
    }
    if (host.ends_with(".test"))
        return EAI_NONAME;
    using Function = int (*)(const char *, const char *, const addrinfo *, addrinfo **);
    static const auto next = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return next(name, service, hints, result);
}
