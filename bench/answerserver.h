// A loopback HTTP server with fixed answers: the same for both sides of every comparison.
#pragma once

#include <httplib.h>

#include <QtCore/QtGlobal>

#include <future>
#include <map>
#include <string>
#include <thread>

namespace bench {

/// Listens on a free port of 127.0.0.1 while the object lives.
class AnswerServer
{
public:
    /// Body by method, that is, the last part of the path.
    using Answers = std::map<std::string, std::string>;

    explicit AnswerServer(Answers answers);
    ~AnswerServer();
    Q_DISABLE_COPY_MOVE(AnswerServer)

    int port() const { return m_port; }

private:
    void answer(const httplib::Request &request, httplib::Response &response) const;

    Answers m_answers;
    httplib::Server m_server;
    std::promise<void> m_started;
    int m_port = -1;
    std::thread m_thread;
};

} // namespace bench
