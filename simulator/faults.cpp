// The list of faults and its JSON form.
#include "faults.h"

#include <algorithm>
#include <map>

namespace sim {

namespace {

Fault::Kind readKind(const Fields &fields)
{
    static const std::map<std::string, Fault::Kind> kinds{{"status", Fault::Kind::Status},
                                                          {"close", Fault::Kind::Close},
                                                          {"close-before", Fault::Kind::CloseBefore},
                                                          {"delay", Fault::Kind::Delay},
                                                          {"malformed", Fault::Kind::Malformed}};
    const auto found = kinds.find(fields.text("kind"));
    if (found == kinds.end())
        refuseField("kind", "ожидается status, close, close-before, delay или malformed");
    return found->second;
}

int readNumber(const Fields &fields, const char *name, int fallback, int minimum, int maximum)
{
    const int number = fields.has(name) ? fields.number(name) : fallback;
    if (number < minimum || number > maximum)
        refuseField(name, "ожидается число от " + std::to_string(minimum) + " до " + std::to_string(maximum));
    return number;
}

std::string readAnswer(const Fields &fields)
{
    if (!fields.has("body"))
        return R"({"success":false,"message":"Сервис временно недоступен"})";
    const Json &body = fields.value("body");
    return body.is_string() ? body.get<std::string>() : body.dump();
}

} // namespace

Fault readFault(const Json &body)
{
    const Fields fields(body, "", {"method", "kind", "times", "status", "body", "milliseconds"});
    Fault fault;
    fault.method = fields.filledText("method");
    fault.kind = readKind(fields);
    fault.times = readNumber(fields, "times", 1, 1, 1'000'000);
    fault.status = readNumber(fields, "status", 500, 200, 599);
    fault.body = readAnswer(fields);
    fault.delay = std::chrono::milliseconds(readNumber(fields, "milliseconds", 0, 0, 600'000));
    return fault;
}

void Faults::add(const Fault &fault)
{
    const std::scoped_lock lock(m_mutex);
    m_faults.push_back(fault);
}

void Faults::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_faults.clear();
}

std::optional<Fault> Faults::take(const std::string &method)
{
    const std::scoped_lock lock(m_mutex);
    const auto found = std::find_if(m_faults.begin(), m_faults.end(),
                                    [&](const Fault &fault) { return fault.method == "*" || fault.method == method; });
    if (found == m_faults.end())
        return std::nullopt;
    const Fault fault = *found;
    if (--found->times == 0)
        m_faults.erase(found);
    return fault;
}

void Faults::wait(std::chrono::milliseconds delay)
{
    std::unique_lock lock(m_mutex);
    m_released.wait_for(lock, delay, [this] { return m_stopping; });
}

void Faults::release()
{
    const std::scoped_lock lock(m_mutex);
    m_stopping = true;
    m_released.notify_all();
}

} // namespace sim
