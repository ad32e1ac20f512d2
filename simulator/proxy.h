// The fault proxy: does what networks and gateways do to the exchanges between a till and its service.
#pragma once

#include "adminroutes.h"
#include "loopbackserver.h"
#include "proxyfault.h"
#include "proxyrecord.h"

namespace sim {

/// Carries each request to the service at most once: what the service gets twice, the till has sent twice. It stops by
/// itself to have connections refused.
class Proxy : public LoopbackServer
{
public:
    /// Both must outlive the proxy.
    Proxy(int servicePort, ProxyFaults &faults, ProxyRecord &record);

protected:
    bool admit(const httplib::Request &request, httplib::Response &response) override;

private:
    void carry(const httplib::Request &request, httplib::Response &response);
    bool ask(const httplib::Request &request, httplib::Response &response);
    void spoil(const ProxyFault &fault, int tillsPort, httplib::Response &response);
    bool isKept(int tillsPort);

    int m_servicePort;
    ProxyFaults &m_faults;
    ProxyRecord &m_record;
    std::mutex m_mutex;
    AdminRoutes m_routes{m_server};
    std::set<int> m_tillsPorts; ///< Of connections that have carried requests.
};

} // namespace sim
