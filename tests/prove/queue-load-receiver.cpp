// Answers as the service does, in as little time as possible.
#include "queue-load-receiver.h"

#include <nlohmann/json.hpp>

#include <limits>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::size_t connections = 4;

} // namespace

QueueLoadReceiver::QueueLoadReceiver(std::set<std::string> rejected, int last)
    : m_rejected(std::move(rejected)), m_last(last)
{
    m_server.new_task_queue = [this] {
        m_started.set_value(); // from now on the server can be stopped
        return new httplib::ThreadPool(connections);
    };
    m_server.set_tcp_nodelay(true);
    m_server.set_keep_alive_max_count(std::numeric_limits<int>::max());
    m_server.Post(".*", [this](const auto &request, auto &response) { receive(request, response); });
    m_port = m_server.bind_to_any_port("127.0.0.1");
    if (m_port < 0)
        throw std::runtime_error("no port on 127.0.0.1");
    m_thread = std::thread([this] { m_server.listen_after_bind(); });
    m_started.get_future().wait();
}

QueueLoadReceiver::~QueueLoadReceiver()
{
    m_server.stop();
    m_thread.join();
}

void QueueLoadReceiver::receive(const httplib::Request &request, httplib::Response &response)
{
    const auto event = nlohmann::json::parse(request.body);
    const std::string basket = event.at("basket");
    const int number = event.at("number");
    const bool refused = number == m_last && m_rejected.contains(basket);
    response.status = refused ? 404 : 200;
    response.set_content(refused ? R"({"success":false,"message":"order not found"})" : R"({"success":true})",
                         "application/json");
    if (request.path != "/queue")
        return;
    const std::scoped_lock lock(m_mutex);
    if (refused)
        ++m_refusals;
    else
        m_accepted[basket].push_back(number);
}
