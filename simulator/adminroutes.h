// Routes for watching and controlling a server, and the check of who may use them.
#pragma once

#include "api.h"
#include "faults.h"

#include <httplib.h>

#include <functional>
#include <map>
#include <string>

namespace sim {

/// Writes the answer's status and body.
void write(const Answer &answer, httplib::Response &response);

bool isJson(const httplib::Request &request);

/// Why a request is rejected; empty when it is not. Accepts programs on this machine and pages that this server has
/// served. Rejects pages of other origins, and pages that reach 127.0.0.1 through a host name of their own.
std::string originFault(const httplib::Request &request);

/// Registers handlers and remembers the HTTP methods of each path.
class AdminRoutes
{
public:
    /// The server must outlive the object.
    explicit AdminRoutes(httplib::Server &server) : m_server(server) {}

    void addGet(const std::string &path, const httplib::Server::Handler &handler);
    void addPost(const std::string &path, const httplib::Server::Handler &handler);
    /// For a GET. A Refusal becomes status 400.
    void addView(const std::string &path, const std::function<Json(const httplib::Request &)> &view);
    /// For a POST with a JSON object; everything else is refused. A Refusal becomes status 400.
    void addChange(const std::string &path, const std::function<Json(const Json &body)> &change);
    void addDelete(const std::string &path, const std::function<Answer(const httplib::Request &)> &handler);

    /// GET, POST and DELETE of `path`, DELETE of `path`/id.
    void addFaults(const std::string &path, Faults &faults);

    /// The HTTP methods of the path, for the header "Allow"; empty for an unknown path.
    std::string allowed(const std::string &path) const;

private:
    httplib::Server &m_server;
    std::map<std::string, std::string> m_allowed;
};

} // namespace sim
