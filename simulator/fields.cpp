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
    const auto amount = parseHundredths(text(name));
    if (!amount)
        refuseField(path(name), "ожидается сумма с двумя знаками после точки",
                    "expected a sum with two decimals, like 91.00");
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

int Fields::number(const char *name) const
{
    const Json &found = value(name);
    constexpr int limit = std::numeric_limits<int>::max();
    // Numbers from 2^63 on would be read as negative ones.
    const bool tooLarge = found.is_number_unsigned() && found.get<std::uint64_t>() > limit;
    if (!found.is_number_integer() || tooLarge || found.get<std::int64_t>() < -limit)
        refuseField(path(name), "ожидается целое число", "expected a whole number");
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
