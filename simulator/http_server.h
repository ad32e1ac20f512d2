// The HTTP side: routes, authentication, faults and the requests kept for tests.
#pragma once

#include "api.h"
#include "faults.h"
#include "loopback_server.h"
#include "request_log.h"

#include <map>
#include <string>

namespace sim {

struct ServerOptions
{
    std::string user; ///< of HTTP Basic authentication, like the password
    std::string password;
    std::string brand; ///< empty: every brand is served
};

class HttpServer : public LoopbackServer
{
public:
    /// The database must outlive the server.
    HttpServer(Database &database, const ServerOptions &options);

    void stop() override;

private:
    using Call = Answer (HttpServer::*)(const std::string &method, const httplib::Request &request);

    void addRoutes();
    void addGet(const std::string &path, const httplib::Server::Handler &handler);
    void addPost(const std::string &path, const httplib::Server::Handler &handler);
    void serveMethod(const std::string &method, Call call, const httplib::Request &request,
                     httplib::Response &response);
    void serveWithFault(const std::string &method, Call call, const Fault *fault, const httplib::Request &request,
                        httplib::Response &response);
    Answer process(const std::string &method, Call call, const httplib::Request &request);
    Answer query(const std::string &method, const httplib::Request &request);
    Answer post(const std::string &method, const httplib::Request &request);
    Answer addFault(const httplib::Request &request);
    Answer clearFaults(const httplib::Request &request);
    Answer outbox(const httplib::Request &request);
    Answer ledger(const httplib::Request &request);
    Answer requests(const httplib::Request &request);
    void answerUnrouted(const httplib::Request &request, httplib::Response &response) const;

    Database &m_database;
    Api m_api;
    std::string m_authorization;
    Faults m_faults;
    RequestLog m_log;
    std::map<std::string, std::string> m_allowed; ///< the HTTP methods of each path
};

} // namespace sim
