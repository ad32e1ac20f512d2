// Reports what happens in the service as server-sent events; README.md describes them.
#pragma once

#include "database.h"
#include "faults.h"
#include "requestlog.h"

#include <httplib.h>

#include <atomic>

namespace sim {

class EventStream
{
public:
    /// An open stream occupies a thread of the server.
    static constexpr int mostStreams = 16;

    /// All must outlive the object and every response of serve().
    EventStream(Database &database, const RequestLog &log, const Faults &faults, Feed &feed);

    /// Answers with a stream that ends with Feed::close(), or with status 503 if too many are open. "last" in the URL
    /// limits the past requests.
    void serve(const httplib::Request &request, httplib::Response &response);

private:
    struct Watcher;

    std::string next(Watcher &watcher);

    Database &m_database;
    const RequestLog &m_log;
    const Faults &m_faults;
    Feed &m_feed;
    const std::string m_run; ///< identifies this run of the server
    std::atomic<int> m_streams = 0;
};

} // namespace sim
