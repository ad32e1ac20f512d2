#include "proxy.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace sim {

namespace {

using namespace std::chrono_literals;

constexpr auto latency = 100ms;
constexpr auto longestSilence = 60s; // longer than a till waits

/// Sends the first `size` bytes of the body in parts; if that is not all of it, ends the connection.
void trickle(httplib::Response &response, std::size_t size, std::size_t part, std::chrono::milliseconds pause)
{
    if (response.body.empty())
        return;
    const std::string type = response.get_header_value("Content-Type");
    response.headers.clear();
    const std::size_t whole = response.body.size();
    response.set_content_provider(
        whole, type, [=, body = std::exchange(response.body, {})](auto offset, auto, auto &sink) {
            std::this_thread::sleep_for(pause);
            return offset < size && sink.write(body.data() + offset, std::min(part, size - offset));
        });
}

} // namespace

Proxy::Proxy(int servicePort, ProxyFaults &faults, ProxyRecord &record)
    : m_servicePort(servicePort), m_faults(faults), m_record(record)
{
    const auto handler = [this](const auto &request, auto &response) { carry(request, response); };
    m_routes.addFaults("/proxy/faults", faults.list()); // before the handler of everything
    m_server.Get(".*", handler);
    m_server.Post(".*", handler);
}

bool Proxy::admit(const httplib::Request &request, httplib::Response &response)
{
    const std::string reason = request.path.starts_with("/proxy/") ? originFault(request) : std::string();
    if (!reason.empty())
        write(refusal(403, reason), response);
    return reason.empty();
}

void Proxy::carry(const httplib::Request &request, httplib::Response &response)
{
    const ProxyFault *fault =
        m_faults.draw(request.path.substr(request.path.rfind('/') + 1), isKept(request.remote_port));
    if (fault && fault->answer == ProxyFault::Answer::Late)
        std::this_thread::sleep_for(latency);
    if ((!fault || fault->processed) && !ask(request, response))
        return m_connections.cut(request.remote_port); // The service is gone, and the till sees it.
    if (!fault)
        return;
    m_record.fault(fault->name);
    spoil(*fault, request.remote_port, response);
}

/// False when the service is gone: perhaps with the request processed, perhaps not.
bool Proxy::ask(const httplib::Request &request, httplib::Response &response)
{
    httplib::Request forwarded;
    forwarded.method = request.method;
    forwarded.path = request.target;
    forwarded.headers = request.headers;
    forwarded.body = request.body;
    for (const char *added : {"REMOTE_ADDR", "REMOTE_PORT", "LOCAL_ADDR", "LOCAL_PORT"}) // by the library
        forwarded.headers.erase(added);
    httplib::Client service("127.0.0.1", m_servicePort);
    service.set_url_encode(false);
    service.set_tcp_nodelay(true);
    service.set_read_timeout(longestSilence);
    const httplib::Result answer = service.send(forwarded);
    if (!answer)
        return false;
    m_record.served(request, *answer);
    response.status = answer->status;
    response.set_content(answer->body, answer->get_header_value("Content-Type"));
    return true;
}

void Proxy::spoil(const ProxyFault &fault, int tillsPort, httplib::Response &response)
{
    using enum ProxyFault::Answer;
    const std::size_t size = response.body.size();
    switch (fault.answer) {
    case Late:
        return;
    case Slow:
        return trickle(response, size, 32, 5ms);
    case Dripping:
        return trickle(response, size, 1, 100ms);
    case Cut:
        return trickle(response, size / 2, size / 2, 0ms);
    case Bare:
        response.body.clear();
        response.headers.clear();
        return response.set_content_provider("application/json",
                                             [](std::size_t, httplib::DataSink &) { return false; });
    case Halved:
        return response.body.resize(size / 2);
    case Nothing:
        m_connections.waitForHangUp(tillsPort, longestSilence);
        return m_connections.cut(tillsPort);
    case Reset:
        return m_connections.reset(tillsPort);
    case Closed:
        return m_connections.cut(tillsPort);
    case Refused:
        stop();                        // first: when the till sees the end of its connection, it finds nobody any more
        return m_connections.cutAll(); // a kept one would hold up the end of the outage
    case Replaced:
        response.status = fault.status;
        return response.set_content(fault.body, fault.type);
    }
}

bool Proxy::isKept(int tillsPort)
{
    const std::scoped_lock lock(m_mutex);
    return !m_tillsPorts.insert(tillsPort).second;
}

} // namespace sim
