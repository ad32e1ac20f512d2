#include "fields.h"

#include "refusal.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace sim {

void refuseField(const std::string &field, const std::string &forCashier, const std::string &problem)
{
    throw Refusal(Refusal::Kind::BadRequest, "Поле " + field + ": " + forCashier, field + ": " + problem);
}

void refuseField(const std::string &field, const std::string &problem)
{
    refuseField(field, problem, problem);
}

bool RepeatedKeys::operator()(Json::parse_event_t event, const Json &part)
{
    if (event == Json::parse_event_t::object_start)
        m_objects.emplace_back();
    else if (event == Json::parse_event_t::object_end)
        m_objects.pop_back();
    return event != Json::parse_event_t::key || m_objects.back().insert(part.get<std::string>()).second;
}

Fields::Fields(const Json &object, std::string where, std::initializer_list<const char *> names)
    : m_object(object), m_where(std::move(where))
{
    if (!object.is_object())
        refuseField(m_where, "ожидается объект", "expected an object");
    for (const auto &[key, value] : object.items())
        if (std::find(names.begin(), names.end(), key) == names.end())
            refuseField(path(key), "неизвестное поле", "unknown field");
}

std::string Fields::path(const std::string &name) const
{
    return m_where.empty() ? name : m_where + "." + name;
}

const Json &Fields::value(const char *name) const
{
    const auto found = m_object.find(name);
    if (found == m_object.end())
        refuseField(path(name), "отсутствует", "missing");
    return *found;
}

const Json &Fields::array(const char *name) const
{
    const Json &found = value(name);
    if (!found.is_array())
        refuseField(path(name), "ожидается массив", "expected an array");
    return found;
}

std::string Fields::text(const char *name) const
{
    const Json &found = value(name);
    if (!found.is_string())
        refuseField(path(name), "ожидается строка", "expected text");
    return found.get<std::string>();
}

std::string Fields::filledText(const char *name) const
{
    std::string found = text(name);
    if (found.empty())
        refuseField(path(name), "не заполнено", "must not be empty");
    return found;
}

Kopecks Fields::money(const char *name) const
{
    std::string sum = text(name);
    if (sum == "-0.00") // as printf writes a double that is a little below zero
        sum.erase(0, 1);
    const auto amount = parseHundredths(sum);
    if (!amount)
        refuseField(path(name), "ожидается сумма от 0.00 с двумя знаками после точки",
                    "expected a sum from 0.00 to 999999999999.99, with two decimals");
    return *amount;
}

int Fields::positiveNumber(const char *name) const
{
    const std::string digits = text(name);
    const char *const last = digits.data() + digits.size();
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), last, number);
    if (error != std::errc() || end != last || number < 1)
        refuseField(path(name), "ожидается целое число больше нуля", "expected a whole number above 0, as text");
    return number;
}

int Fields::number(const char *name, int lowest, int highest) const
{
    const Json &found = value(name);
    // As a double: numbers from 2^63 on would be read as negative ones.
    const double number = found.is_number_integer() ? found.get<double>() : std::numeric_limits<double>::quiet_NaN();
    if (!(number >= lowest && number <= highest)) {
        const std::string range = std::to_string(lowest) + ".." + std::to_string(highest);
        refuseField(path(name), "ожидается целое число " + range, "expected a whole number in " + range);
    }
    return found.get<int>();
}

bool Fields::flag(const char *name) const
{
    const Json &found = value(name);
    if (!found.is_boolean())
        refuseField(path(name), "ожидается true или false", "expected true or false");
    return found.get<bool>();
}

} // namespace sim
