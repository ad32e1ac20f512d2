// The HTTP side of the service's two APIs: authentication, faults and the log of requests.
#pragma once

#include "admin.h"
#include "api.h"
#include "faults.h"
#include "loopbackserver.h"
#include "requestlog.h"

#include <string>

namespace sim {

struct ServerOptions
{
    std::string user; ///< of HTTP Basic authentication, like the password
    std::string password;
    std::string brand;  ///< empty: every brand is served
    bool admin = false; ///< serve the page
};

class HttpServer : public LoopbackServer
{
public:
    /// The database must outlive the server.
    HttpServer(Database &database, const ServerOptions &options);

    void stop() override;

protected:
    bool admit(const httplib::Request &request, httplib::Response &response) override;

private:
    void addApiRoutes();
    void serveMethod(const std::string &method, const httplib::Request &request, httplib::Response &response);
    Outcome serveWithFault(const std::string &method, const Fault *fault, const httplib::Request &request,
                           httplib::Response &response);
    Answer process(const std::string &method, const httplib::Request &request);
    void answerUnrouted(const httplib::Request &request, httplib::Response &response);

    Api m_api;
    std::string m_authorization;
    Feed m_feed;
    Faults m_faults;
    RequestLog m_log{m_feed};
    AdminRoutes m_routes{m_server};
    Admin m_admin;
};

} // namespace sim
