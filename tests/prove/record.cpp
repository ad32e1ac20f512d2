// The record as JSON lines.
#include "record.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <functional>
#include <iostream>
#include <stdexcept>

namespace prove {

namespace {

using Json = nlohmann::json;

Json parse(const std::string &text)
{
    return Json::parse(text, nullptr, false);
}

bool isAccepted(const HttpMessage &answer)
{
    const Json json = parse(answer.body);
    return answer.status() == 200 && json.is_object() && json.value("success", false) && !json.contains("error");
}

std::string basketOf(const HttpMessage &request)
{
    const Json json = parse(request.body);
    return json.is_object() ? json.value("basket", "") : "";
}

} // namespace

Record::Record(const std::filesystem::path &file)
    : m_descriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600))
{
    if (m_descriptor < 0)
        throw std::runtime_error(file.string() + ": cannot be opened for writing");
}

Record::~Record()
{
    ::close(m_descriptor);
}

void Record::fault(const std::string &name) const
{
    write(Json{{"fault", name}}.dump());
}

void Record::served(const HttpMessage &request, const HttpMessage &answer) const
{
    write(Json{{"method", request.method()},
               {"basket", basketOf(request)},
               {"body", std::to_string(std::hash<std::string>()(request.body))},
               {"accepted", isAccepted(answer)}}
              .dump());
}

void Record::write(std::string line) const
{
    line += '\n';
    if (::write(m_descriptor, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        std::cerr << "fault-proxy: the record cannot be written" << std::endl;
}

} // namespace prove
