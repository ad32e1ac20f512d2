// Routes of the two APIs and of /sim/, on the packaged HTTP library.
#include "http_server.h"

#include "outbox.h"
#include "refusal.h"
#include "report.h"
#include "wire.h"

#include <iostream>

namespace sim {

namespace {

constexpr std::size_t largestBody = 1 << 20;

void write(const Answer &answer, httplib::Response &response)
{
    response.status = answer.status;
    // A text from a URL may be no UTF-8; the answer must be.
    response.set_content(answer.body.dump(-1, ' ', false, Json::error_handler_t::replace), "application/json");
}

} // namespace

HttpServer::HttpServer(Database &database, const ServerOptions &options)
    : m_database(database),
      m_api(database, options.brand),
      m_authorization(httplib::make_basic_authentication_header(options.user, options.password).second)
{
    m_server.set_payload_max_length(largestBody);
    m_server.set_error_handler([this](const auto &request, auto &response) { answerUnrouted(request, response); });
    m_server.set_exception_handler([](const auto &, auto &response, const std::exception_ptr &) {
        std::cerr << "loyalty-sim: a request failed unexpectedly" << std::endl;
        write(refusal(500, "Внутренняя ошибка сервиса"), response);
    });
    addRoutes();
}

void HttpServer::addRoutes()
{
    const auto route = [this](const std::string &method, Call call) {
        return [this, method, call](const httplib::Request &request, httplib::Response &response) {
            serveMethod(method, call, request, response);
        };
    };
    for (const char *method : Api::queries)
        addGet(std::string(Api::loyaltyPath) + method, route(method, &HttpServer::query));
    for (const char *method : Api::orderMethods)
        addPost(std::string(Api::loyaltyPath) + method, route(method, &HttpServer::post));
    addPost(std::string(Api::messagePath) + Api::messageMethod, route(Api::messageMethod, &HttpServer::post));

    const auto admin = [this](Answer (HttpServer::*call)(const httplib::Request &)) {
        return [this, call](const httplib::Request &request, httplib::Response &response) {
            write((this->*call)(request), response);
        };
    };
    addGet("/sim/outbox", admin(&HttpServer::outbox));
    addGet("/sim/ledger", admin(&HttpServer::ledger));
    addGet("/sim/requests", admin(&HttpServer::requests));
    addPost("/sim/faults", admin(&HttpServer::addFault));
    m_server.Delete("/sim/faults", admin(&HttpServer::clearFaults));
    m_allowed["/sim/faults"] = "POST, DELETE";
}

void HttpServer::addGet(const std::string &path, const httplib::Server::Handler &handler)
{
    m_server.Get(path, handler);
    m_allowed[path] = "GET";
}

void HttpServer::addPost(const std::string &path, const httplib::Server::Handler &handler)
{
    m_server.Post(path, handler);
    m_allowed[path] = "POST";
}

void HttpServer::stop()
{
    m_faults.release();
    LoopbackServer::stop();
}

void HttpServer::serveMethod(const std::string &method, Call call, const httplib::Request &request,
                             httplib::Response &response)
{
    const auto number = m_log.received(method, request.target, request.body);
    const auto fault = m_faults.take(method);
    serveWithFault(method, call, fault ? &*fault : nullptr, request, response);
    m_log.answered(number, response.status);
}

void HttpServer::serveWithFault(const std::string &method, Call call, const Fault *fault,
                                const httplib::Request &request, httplib::Response &response)
{
    using Kind = Fault::Kind;
    if (fault && fault->kind == Kind::Status) {
        response.status = fault->status;
        response.set_content(fault->body, "application/json");
        return;
    }
    if (fault && fault->kind == Kind::Delay)
        m_faults.wait(fault->delay);
    if (!fault || fault->kind != Kind::CloseBefore)
        write(process(method, call, request), response);
    if (fault && fault->kind == Kind::Malformed)
        response.body.resize(response.body.size() / 2);
    if (fault && (fault->kind == Kind::Close || fault->kind == Kind::CloseBefore)) {
        response.status = 0;
        m_connections.cut(request.remote_port);
    }
}

Answer HttpServer::process(const std::string &method, Call call, const httplib::Request &request)
{
    if (request.get_header_value("Authorization") != m_authorization)
        return refusal(401, "Неверное имя пользователя или пароль");
    return (this->*call)(method, request);
}

Answer HttpServer::query(const std::string &method, const httplib::Request &request)
{
    return m_api.query(method, request.params);
}

Answer HttpServer::post(const std::string &method, const httplib::Request &request)
{
    // Also guards against the library's small limit for form bodies, the type that HTTP clients send by default.
    if (!request.get_header_value("Content-Type").starts_with("application/json"))
        return refusal(415, "Ожидается тело с типом application/json");
    return m_api.post(method, request.body);
}

Answer HttpServer::addFault(const httplib::Request &request)
try {
    m_faults.add(readFault(parseObject(request.body)));
    return {200, {{"success", true}}};
} catch (const Refusal &reason) {
    return refusal(400, reason.what());
}

Answer HttpServer::clearFaults(const httplib::Request &)
{
    m_faults.clear();
    return {200, {{"success", true}}};
}

Answer HttpServer::outbox(const httplib::Request &request)
{
    const std::string asked = request.get_param_value("phone");
    const std::string phone = phoneKey(asked);
    if (phone.empty() && !asked.empty())
        return refusal(400, "Параметр phone: ожидается номер вида +79001234567 (плюс в адресе пишется %2B)");
    return {200, m_database.read([&](const SQLite::Database &database) { return outboxJson(database, phone); })};
}

Answer HttpServer::ledger(const httplib::Request &)
{
    return {200, m_database.read(ledgerJson)};
}

Answer HttpServer::requests(const httplib::Request &)
{
    return {200, m_log.toJson()};
}

void HttpServer::answerUnrouted(const httplib::Request &request, httplib::Response &response) const
{
    if (!response.body.empty())
        return;
    const auto allowed = m_allowed.find(request.path);
    if (allowed != m_allowed.end() && allowed->second.find(request.method) == std::string::npos) {
        response.set_header("Allow", allowed->second);
        write(refusal(405, "Метод " + request.method + " здесь не поддерживается"), response);
    } else if (response.status == 404) {
        write(refusal(404, "Неизвестный адрес " + request.path), response);
    } else {
        write(refusal(response.status, "Запрос не может быть прочитан"), response);
    }
}

} // namespace sim
