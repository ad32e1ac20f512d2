// The record as JSON lines.
#include "proxyrecord.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <stdexcept>

namespace sim {

namespace {

using Json = nlohmann::json;

Json parse(const std::string &text)
{
    return Json::parse(text, nullptr, false);
}

bool isAccepted(const httplib::Response &answer)
{
    const Json json = parse(answer.body);
    return answer.status == 200 && json.is_object() && json.value("success", Json()) == true && !json.contains("error");
}

std::string basketOf(const httplib::Request &request)
{
    const Json json = parse(request.body);
    const Json basket = json.is_object() ? json.value("basket", Json()) : Json();
    return basket.is_string() ? basket.get<std::string>() : "";
}

} // namespace

ProxyRecord::ProxyRecord(const std::filesystem::path &file)
{
    if (!file.empty())
        m_file.open(file, std::ios::app);
    if (!m_file)
        throw std::runtime_error(file.string() + ": cannot be opened for writing");
}

void ProxyRecord::fault(const std::string &name)
{
    write(Json{{"fault", name}}.dump());
}

void ProxyRecord::served(const httplib::Request &request, const httplib::Response &answer)
{
    write(Json{{"method", request.path.substr(request.path.rfind('/') + 1)},
               {"basket", basketOf(request)},
               {"body", std::to_string(std::hash<std::string>()(request.body))},
               {"accepted", isAccepted(answer)}}
              .dump(-1, ' ', false, Json::error_handler_t::replace));
}

void ProxyRecord::write(const std::string &line)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_file.is_open())
        return;
    m_file << line + '\n' << std::flush;
    if (!m_file)
        std::cerr << "fault-proxy: the record cannot be written" << std::endl;
}

} // namespace sim
