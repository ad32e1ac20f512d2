// JSON routes, and the check of a request's origin.
#include "adminroutes.h"

#include "refusal.h"
#include "wire.h"

namespace sim {

namespace {

const Json done{{"success", true}};

Answer guarded(const std::function<Answer()> &step)
try {
    return step();
} catch (const Refusal &reason) {
    return refusal(400, reason.what());
}

Answer changed(const httplib::Request &request, const std::function<Json(const Json &body)> &change)
{
    if (!isJson(request))
        return refusal(415, "expected a body of the type application/json");
    Json answer = done;
    answer.update(change(parseObject(request.body)));
    return {200, answer};
}

} // namespace

void write(const Answer &answer, httplib::Response &response)
{
    response.status = answer.status;
    // Text from a URL may be invalid UTF-8; the answer must not be.
    response.set_content(answer.body.dump(-1, ' ', false, Json::error_handler_t::replace), "application/json");
}

// Also keeps out form bodies, which the library limits to a small size and any web page can send.
bool isJson(const httplib::Request &request)
{
    return request.get_header_value("Content-Type").starts_with("application/json");
}

std::string originFault(const httplib::Request &request)
{
    const std::string host = request.get_header_value("Host");
    const std::string name = host.substr(0, host.find_last_of(':'));
    if (!host.empty() && name != "127.0.0.1" && name != "localhost")
        return "the host " + host + " is not served; use 127.0.0.1 or localhost";
    if (request.has_header("Origin") && request.get_header_value("Origin") != "http://" + host)
        return "requests of other origins are refused";
    return {};
}

void AdminRoutes::addGet(const std::string &path, const httplib::Server::Handler &handler)
{
    m_allowed[path] += m_allowed[path].empty() ? "GET" : ", GET";
    m_server.Get(path, handler);
}

void AdminRoutes::addPost(const std::string &path, const httplib::Server::Handler &handler)
{
    m_allowed[path] += m_allowed[path].empty() ? "POST" : ", POST";
    m_server.Post(path, handler);
}

void AdminRoutes::addView(const std::string &path, const std::function<Json(const httplib::Request &)> &view)
{
    addGet(path, [view](const auto &request, auto &response) {
        write(guarded([&]() -> Answer { return {200, view(request)}; }), response);
    });
}

void AdminRoutes::addChange(const std::string &path, const std::function<Json(const Json &body)> &change)
{
    addPost(path, [change](const auto &request, auto &response) {
        write(guarded([&] { return changed(request, change); }), response);
    });
}

void AdminRoutes::addDelete(const std::string &path, const std::function<Answer(const httplib::Request &)> &handler)
{
    m_allowed[path] += m_allowed[path].empty() ? "DELETE" : ", DELETE";
    m_server.Delete(path, [handler](const auto &request, auto &response) { write(handler(request), response); });
}

void AdminRoutes::addFaults(const std::string &path, Faults &faults)
{
    addView(path, [&faults](const auto &) { return faults.toJson(); });
    addChange(path, [&faults](const Json &body) -> Json { return {{"id", faults.add(body)}}; });
    addDelete(path, [&faults](const auto &) -> Answer {
        faults.clear();
        return {200, done};
    });
    addDelete(path + "/(\\d{1,9})", [&faults](const httplib::Request &request) -> Answer {
        const std::string id = request.matches[1];
        return faults.remove(std::stoi(id)) ? Answer{200, done} : refusal(404, "there is no fault " + id);
    });
}

std::string AdminRoutes::allowed(const std::string &path) const
{
    const auto found = m_allowed.find(path);
    return found == m_allowed.end() ? std::string() : found->second;
}

} // namespace sim
