// The faults, carried out.
#include "proxyconnection.h"

#include <thread>
#include <utility>

namespace prove {

namespace {

using namespace std::chrono_literals;

constexpr auto longestSilence = 20s; // longer than any till here waits

HttpMessage makeAnswer(int status, const std::string &type, const std::string &body)
{
    return {"HTTP/1.1 " + std::to_string(status) + " Fault\r\nContent-Type: " + type +
                "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n",
            body};
}

HttpMessage halved(const HttpMessage &good)
{
    return makeAnswer(good.status(), "application/json", good.body.substr(0, good.body.size() / 2));
}

} // namespace

ProxyConnection::ProxyConnection(Socket till, int servicePort, FaultSource &faults, Listener &listener,
                                 const Record &record)
    : m_till(std::move(till)), m_servicePort(servicePort), m_faults(faults), m_listener(listener), m_record(record)
{}

void ProxyConnection::run()
{
    while (const auto request = m_fromTill.read(m_till))
        if (!exchange(*request))
            return;
}

bool ProxyConnection::exchange(const HttpMessage &request)
{
    const Fault *fault = m_faults.draw(std::exchange(m_kept, true));
    if (fault && fault->answer == Fault::Answer::Late)
        std::this_thread::sleep_for(m_faults.time(10ms, 150ms));
    HttpMessage good;
    if (!fault || fault->processed) {
        const auto answered = ask(request);
        if (!answered)
            return false; // The service is gone, and the till sees it.
        good = *answered;
        m_record.served(request, good);
    }
    if (!fault)
        return m_till.send(good.text());
    m_record.fault(fault->name);
    return answer(*fault, good);
}

/// The service's answer. Nothing when it is gone: perhaps with the request processed, perhaps not.
std::optional<HttpMessage> ProxyConnection::ask(const HttpMessage &request)
{
    // A service that was restarted has closed the connection. To find that out by sending would need a second sending.
    if (m_service.isOpen() && m_service.waitForHangUp(0ms))
        m_service.close();
    if (!m_service.isOpen()) {
        m_service = Socket::connectTo(m_servicePort);
        m_fromService = {};
    }
    if (!m_service.isOpen() || !m_service.send(request.text()))
        return std::nullopt;
    return m_fromService.read(m_service);
}

/// False when the connection has ended.
bool ProxyConnection::answer(const Fault &fault, const HttpMessage &good)
{
    using Answer = Fault::Answer;
    switch (fault.answer) {
    case Answer::Late:
        return m_till.send(good.text());
    case Answer::Slow:
        return sendSlowly(good, 32, 5ms);
    case Answer::Dripping:
        return sendSlowly(good, 1, 25ms);
    case Answer::Nothing:
        m_till.waitForHangUp(longestSilence);
        return false;
    case Answer::Cut:
        return m_till.send(good.text().substr(0, good.text().size() - good.body.size() / 2 - 1)) && false;
    case Answer::Halved:
        return m_till.send(halved(good).text());
    case Answer::Refused:
        m_listener.closeFor(m_faults.time(5ms, 100ms));
        [[fallthrough]];
    case Answer::Reset:
        m_till.reset();
        return false;
    case Answer::Closed:
        return false;
    case Answer::GatewayPage:
        return m_till.send(makeAnswer(fault.status, "text/html", "<html>Internal Server Error</html>").text());
    case Answer::Empty:
        return m_till.send(makeAnswer(fault.status, "text/plain", "").text());
    case Answer::Refusal:
        return m_till.send(
            makeAnswer(fault.status, "application/json", R"({"success": false, "message": "Forged refusal"})").text());
    }
    return false;
}

bool ProxyConnection::sendSlowly(const HttpMessage &good, std::size_t bytes, std::chrono::milliseconds pause) const
{
    const std::string text = good.text();
    for (std::size_t sent = 0; sent < text.size(); sent += bytes) {
        if (!m_till.send(std::string_view(text).substr(sent, bytes)) || m_till.waitForHangUp(pause))
            return false;
    }
    return true;
}

} // namespace prove
