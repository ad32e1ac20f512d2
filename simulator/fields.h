// Reads a JSON object from outside field by field; refusals name the field.
#pragma once

#include "money.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

namespace sim {

using Json = nlohmann::json;

/// Throws Refusal (BadRequest) with "Поле <field>: <forCashier>" and "<field>: <problem>".
[[noreturn]] void refuseField(const std::string &field, const std::string &forCashier, const std::string &problem);

/// The same for a problem that no cashier sees.
[[noreturn]] void refuseField(const std::string &field, const std::string &problem);

/// Sees the parts of a document as Json::parse() reads them. The library would silently take the last of repeated keys.
class RepeatedKeys
{
public:
    /// False for a key that its object has already.
    bool operator()(Json::parse_event_t event, const Json &part);

private:
    std::vector<std::set<std::string>> m_objects;
};

/// Refers to the object, which must outlive it. All reading operations refuse missing and wrongly typed fields.
class Fields
{
public:
    /// Refuses values other than objects, and objects with fields not in `names`. `where` is the object's path in the
    /// document, empty for the document itself.
    Fields(const Json &object, std::string where, std::initializer_list<const char *> names);

    /// The field's path in the document, e.g. orderLines[2].lineAmount.
    std::string path(const std::string &name) const;

    bool has(const char *name) const { return m_object.contains(name); }
    const Json &value(const char *name) const;
    const Json &array(const char *name) const;
    std::string text(const char *name) const;
    /// As text(); refuses an empty one.
    std::string filledText(const char *name) const;
    /// A text of two decimals, e.g. "91.00"; not negative.
    Kopecks money(const char *name) const;
    /// A text that is a whole number above 0, e.g. "3".
    int positiveNumber(const char *name) const;
    /// A JSON number without a fraction, in this range.
    int number(const char *name, int lowest, int highest) const;
    bool flag(const char *name) const;

private:
    const Json &m_object;
    std::string m_where;
};

/// Reads the lines of the array called `name` one by one; refuses two lines with the same lineId.
template <typename Line>
std::vector<Line> readLines(const Json &array, const std::string &name,
                            Line (*readLine)(const Json &object, const std::string &where))
{
    std::vector<Line> lines;
    for (const Json &object : array) {
        const std::string where = name + "[" + std::to_string(lines.size()) + "]";
        const Line line = readLine(object, where);
        if (std::any_of(lines.begin(), lines.end(), [&](const Line &other) { return other.lineId == line.lineId; }))
            refuseField(where, "номер строки повторяется", "this line number occurs twice");
        lines.push_back(line);
    }
    return lines;
}

} // namespace sim
