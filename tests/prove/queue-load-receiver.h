// The receiving end of the queue's load: a small HTTP server on the loopback that notes what it accepts, in order.
#pragma once

#include <httplib.h>

#include <future>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

/// Expects POST /queue with {"basket": ..., "number": ...}; what comes to any other path is answered and not noted.
class QueueLoadReceiver
{
public:
    using Numbers = std::map<std::string, std::vector<int>>;

    /// `rejected`: the baskets of which the event with the number `last` is refused for good.
    QueueLoadReceiver(std::set<std::string> rejected, int last);
    ~QueueLoadReceiver();
    QueueLoadReceiver(const QueueLoadReceiver &) = delete;
    QueueLoadReceiver &operator=(const QueueLoadReceiver &) = delete;

    int port() const { return m_port; }

    /// The numbers of the accepted events of each basket, as they came. To be called when nothing is sent any more.
    const Numbers &accepted() const { return m_accepted; }
    int refusals() const { return m_refusals; }

private:
    void receive(const httplib::Request &request, httplib::Response &response);

    std::set<std::string> m_rejected;
    int m_last;
    Numbers m_accepted;
    int m_refusals = 0;
    std::mutex m_mutex;
    std::promise<void> m_started;
    httplib::Server m_server;
    int m_port;
    std::thread m_thread;
};
