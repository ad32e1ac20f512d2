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
    /// Each stream holds a thread of the server as long as it is open.
    static constexpr int mostStreams = 16;

    /// All must outlive the object and every response of serve().
    EventStream(Database &database, const RequestLog &log, const Faults &faults, Feed &feed);

    /// Answers with a stream that ends with Feed::close(), status 503 when there are too many. "last" in the URL
    /// limits the requests of the past.
    void serve(const httplib::Request &request, httplib::Response &response);

private:
    struct Watcher;

    std::string next(Watcher &watcher);

    Database &m_database;
    const RequestLog &m_log;
    const Faults &m_faults;
    Feed &m_feed;
    const std::string m_run; ///< tells this run of the server from others
    std::atomic<int> m_streams = 0;
};

} // namespace sim
