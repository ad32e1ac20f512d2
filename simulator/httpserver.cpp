// Routes the two APIs.
#include "httpserver.h"

#include <iostream>

namespace sim {

namespace {

std::vector<FaultKind> faultKinds()
{
    return {{"status", "answered with this status, not processed"},
            {"close", "processed, then the connection was closed without an answer"},
            {"close-before", "the connection was closed, not processed"},
            {"delay", "processed and answered late"},
            {"malformed", "processed, then answered with half of the JSON"}};
}

/// Why the till did not get the real answer.
std::string reasonFor(const Fault &fault)
{
    for (const FaultKind &kind : faultKinds())
        if (kind.name == fault.kind)
            return "fault " + std::to_string(fault.id) + ", " + kind.name + ": " + kind.does;
    return {};
}

} // namespace

HttpServer::HttpServer(Database &database, const ServerOptions &options)
    : m_api(database, options.brand),
      m_authorization(httplib::make_basic_authentication_header(options.user, options.password).second),
      m_faults(Api::methods(), faultKinds(), m_feed),
      m_admin(database, m_log, m_faults, m_feed)
{
    m_server.set_error_handler([this](const auto &request, auto &response) { answerUnrouted(request, response); });
    m_server.set_exception_handler([](const auto &, auto &response, const std::exception_ptr &thrown) {
        try {
            std::rethrow_exception(thrown);
        } catch (const std::exception &error) {
            std::cerr << "loyalty-sim: a request failed unexpectedly: " << error.what() << std::endl;
        }
        write(refusal(500, "Внутренняя ошибка сервиса"), response);
    });
    addApiRoutes();
    m_admin.addRoutes(m_routes);
    if (options.admin)
        addPage(m_server);
}

void HttpServer::addApiRoutes()
{
    const auto route = [this](const std::string &method) {
        return [this, method](const auto &request, auto &response) { serveMethod(method, request, response); };
    };
    for (const char *method : Api::queries)
        m_routes.addGet(std::string(Api::loyaltyPath) + method, route(method));
    for (const char *method : Api::orderMethods)
        m_routes.addPost(std::string(Api::loyaltyPath) + method, route(method));
    m_routes.addPost(std::string(Api::messagePath) + Api::messageMethod, route(Api::messageMethod));
}

void HttpServer::stop()
{
    m_faults.release();
    m_feed.close();
    LoopbackServer::stop();
}

bool HttpServer::admit(const httplib::Request &request, httplib::Response &response)
{
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Cache-Control", "no-store");
    const std::string reason = originFault(request);
    if (!reason.empty())
        write(refusal(403, reason), response);
    return reason.empty();
}

void HttpServer::serveMethod(const std::string &method, const httplib::Request &request, httplib::Response &response)
{
    const auto number = m_log.received(method, request.target, request.body);
    const auto fault = m_faults.take(method);
    m_log.answered(number, serveWithFault(method, fault ? &*fault : nullptr, request, response));
}

Outcome HttpServer::serveWithFault(const std::string &method, const Fault *fault, const httplib::Request &request,
                                   httplib::Response &response)
{
    const std::string kind = fault ? fault->kind : std::string();
    std::string reason = fault ? reasonFor(*fault) : std::string();
    if (kind == "status") {
        response.status = fault->status;
        response.set_content(fault->body, "application/json");
        return {response.status, response.body, reason, kind};
    }
    if (kind == "delay")
        m_faults.wait(fault->delay);
    if (kind != "close-before") {
        const Answer answer = process(method, request);
        write(answer, response);
        if (!answer.reason.empty())
            reason += (fault ? "; " : "") + answer.reason;
    }
    if (kind == "malformed")
        response.body.resize(response.body.size() / 2);
    if (kind.starts_with("close")) {
        m_connections.cut(request.remote_port);
        return {0, {}, reason, kind};
    }
    return {response.status, response.body, reason, kind};
}

Answer HttpServer::process(const std::string &method, const httplib::Request &request)
{
    if (request.get_header_value("Authorization") != m_authorization)
        return refusal(401, "Неверное имя пользователя или пароль", "wrong user name or password");
    if (request.method != "POST")
        return m_api.query(method, request.params);
    if (!isJson(request))
        return refusal(415, "Ожидается тело с типом application/json", "the body is not application/json");
    return m_api.post(method, request.body);
}

void HttpServer::answerUnrouted(const httplib::Request &request, httplib::Response &response)
{
    if (!response.body.empty() || response.has_header("Content-Type")) // answered, perhaps with an empty body
        return;
    const std::string allowed = m_routes.allowed(request.path);
    if (!allowed.empty() && allowed.find(request.method) == std::string::npos) {
        response.set_header("Allow", allowed);
        write(refusal(405, "Метод " + request.method + " здесь не поддерживается"), response);
    } else if (response.status == 404) {
        write(refusal(404, "Неизвестный адрес " + request.path), response);
    } else {
        write(refusal(response.status, "Запрос не может быть прочитан"), response);
    }
    if (request.has_header("Authorization")) { // a till's; the page's own are nobody's business
        const auto number = m_log.received("unrouted", request.target, request.body);
        m_log.answered(number,
                       {response.status, response.body, request.method + ": no such address, or not in this form", {}});
    }
}

} // namespace sim
