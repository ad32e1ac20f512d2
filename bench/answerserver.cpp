// The library and the settings of loyalty-sim, without its work.
#include "answerserver.h"

#include <limits>
#include <stdexcept>
#include <utility>

namespace bench {

namespace {

constexpr std::size_t connections = 4; // our side's, its peer's, and those of clients that are being replaced

} // namespace

AnswerServer::AnswerServer(Answers answers) : m_answers(std::move(answers))
{
    m_server.new_task_queue = [this] {
        m_started.set_value(); // from now on the server can be stopped
        return new httplib::ThreadPool(connections);
    };
    m_server.set_tcp_nodelay(true);
    m_server.set_keep_alive_max_count(std::numeric_limits<int>::max());
    const auto answering = [this](const auto &request, auto &response) { answer(request, response); };
    m_server.Get(".*", answering);
    m_server.Post(".*", answering);
    m_port = m_server.bind_to_any_port("127.0.0.1");
    if (m_port < 0)
        throw std::runtime_error("the answer server cannot listen on 127.0.0.1");
    m_thread = std::thread([this] { m_server.listen_after_bind(); });
    m_started.get_future().wait();
}

AnswerServer::~AnswerServer()
{
    m_server.stop();
    m_thread.join();
}

void AnswerServer::answer(const httplib::Request &request, httplib::Response &response) const
{
    const auto body = m_answers.find(request.path.substr(request.path.rfind('/') + 1));
    if (body == m_answers.end())
        response.status = 404;
    else
        response.set_content(body->second, "application/json");
}

} // namespace bench
