// A stream sends what has changed since it last looked, so that a slow reader gets fewer events instead of a longer
// queue.
#include "eventstream.h"

#include "adminroutes.h"

#include <charconv>
#include <memory>
#include <utility>

namespace sim {

namespace {

/// Also how long it takes to notice that a reader has gone.
constexpr auto heartbeat = std::chrono::seconds(2);

std::string dump(const Json &data)
{
    return data.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string event(const char *name, const std::string &data)
{
    return std::string("event: ") + name + "\ndata: " + data + "\n\n";
}

std::uint64_t numberIn(const std::string &text, std::uint64_t fallback)
{
    std::uint64_t number = fallback;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

} // namespace

/// How far a reader has got.
struct EventStream::Watcher
{
    std::uint64_t touches = 0;
    std::uint64_t requests = 0;
    std::uint64_t last = RequestLog::kept;
    std::int64_t ledger = -1;
    std::string faults;
    bool greeted = false;
};

EventStream::EventStream(Database &database, const RequestLog &log, const Faults &faults, Feed &feed)
    : m_database(database),
      m_log(log),
      m_faults(faults),
      m_feed(feed),
      m_run(std::to_string(std::chrono::system_clock::now().time_since_epoch().count()))
{}

void EventStream::serve(const httplib::Request &request, httplib::Response &response)
{
    if (++m_streams > mostStreams) {
        --m_streams;
        return write(refusal(503, "too many open streams; close a page"), response);
    }
    auto watcher = std::make_shared<Watcher>();
    watcher->last = numberIn(request.get_param_value("last"), RequestLog::kept);
    const std::string seen = request.get_header_value("Last-Event-ID"); // after a break; of this run or another
    if (seen.starts_with(m_run + "-"))
        watcher->requests = numberIn(seen.substr(m_run.size() + 1), 0);
    response.set_chunked_content_provider(
        "text/event-stream",
        [this, watcher](std::size_t, httplib::DataSink &sink) {
            const std::string text = next(*watcher);
            if (m_feed.isClosed()) {
                sink.done();
                return true;
            }
            return sink.write(text.data(), text.size());
        },
        [this](bool) { --m_streams; });
}

std::string EventStream::next(Watcher &watcher)
{
    std::string text;
    if (!std::exchange(watcher.greeted, true))
        text = event("hello", dump({{"run", m_run}}));
    else
        watcher.touches = m_feed.wait(watcher.touches, heartbeat);
    const auto requests = m_log.changes(watcher.requests, watcher.last);
    for (const Json &request : requests)
        text += event("request", dump(request));
    if (!requests.empty())
        text += "id: " + m_run + "-" + std::to_string(watcher.requests) + "\nevent: seen\ndata: {}\n\n";
    const std::string faults = dump(m_faults.toJson());
    if (std::exchange(watcher.faults, faults) != faults)
        text += event("faults", faults);
    const std::int64_t ledger = m_database.changes();
    if (std::exchange(watcher.ledger, ledger) != ledger)
        text += event("ledger", std::to_string(ledger));
    return text.empty() ? ": alive\n\n" : text;
}

} // namespace sim
