// One connection of a till through the fault proxy.
#pragma once

#include "fault.h"
#include "listener.h"
#include "record.h"

namespace prove {

/// Carries exchanges to the service and back until a fault, or one of the two sides, ends it. It never repeats a
/// request: what the service gets twice, the till has sent twice.
class ProxyConnection
{
public:
    /// All of them must live longer than the connection.
    ProxyConnection(Socket till, int servicePort, FaultSource &faults, Listener &listener, const Record &record);

    void run();

private:
    bool exchange(const HttpMessage &request);
    std::optional<HttpMessage> ask(const HttpMessage &request);
    bool answer(const Fault &fault, const HttpMessage &good);
    bool sendSlowly(const HttpMessage &good, std::size_t bytes, std::chrono::milliseconds pause) const;

    Socket m_till;
    Socket m_service;
    HttpReader m_fromTill;
    HttpReader m_fromService;
    int m_servicePort;
    FaultSource &m_faults;
    Listener &m_listener;
    const Record &m_record;
    bool m_kept = false;
};

} // namespace prove
