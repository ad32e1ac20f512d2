// The HTTP side: routes, authentication, faults and the requests kept for tests.
#pragma once

#include "api.h"
#include "connections.h"
#include "faults.h"
#include "request_log.h"

#include <httplib.h>

#include <future>
#include <map>
#include <string>

namespace sim {

struct ServerOptions
{
    std::string user; ///< of HTTP Basic authentication, like the password
    std::string password;
    std::string brand; ///< empty: every brand is served
};

/// Listens on 127.0.0.1 only. run() serves on threads of its own; stop() may come from any thread.
class HttpServer
{
public:
    /// The database must outlive the server.
    HttpServer(Database &database, const ServerOptions &options);

    /// Binds the port (0: a free one) and returns it; connections wait from here on.
    /// Throws std::runtime_error naming the port when it is taken.
    int bind(int port);

    /// Serves until stop(); running requests are finished before it returns. False when accepting failed.
    bool run();
    /// Once, from another thread than run(); waits until run() has begun.
    void stop();

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
    Connections m_connections;
    std::map<std::string, std::string> m_allowed; ///< the HTTP methods of each path
    std::promise<void> m_started;
    httplib::Server m_server;
};

} // namespace sim
