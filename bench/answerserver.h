// A loopback HTTP server with fixed answers, as fast as one can be: the same for both sides of every comparison.
#pragma once

#include <QtCore/QtGlobal>

#include <map>
#include <string>
#include <thread>
#include <vector>

namespace bench {

/// Listens on a free port of 127.0.0.1 while the object lives. Connections are kept alive, each has its own thread.
class AnswerServer
{
public:
    /// Body by method, that is, the last part of the path.
    using Answers = std::map<std::string, std::string>;

    explicit AnswerServer(const Answers &answers);
    ~AnswerServer();
    Q_DISABLE_COPY_MOVE(AnswerServer)

    int port() const { return m_port; }

private:
    void accept();
    void serve(int connection) const;

    std::map<std::string, std::string, std::less<>> m_answers; // with status line and headers
    int m_listener = -1;
    int m_port = 0;
    std::vector<int> m_connections;
    std::vector<std::thread> m_threads; // the first one accepts
};

} // namespace bench
