// Examines UTF-8 byte by byte, since harmful characters have few forms.
#include "plaintext.h"

#include <array>
#include <string_view>

namespace sim {

namespace {

/// The length of a harmful character at the start of the text; 0 if it is harmless.
std::size_t harmful(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x20 || first == 0x7F)
        return 1;
    const auto second = text.size() > 1 ? static_cast<unsigned char>(text[1]) : 0;
    if (first == 0xC2 && second >= 0x80 && second < 0xA0) // C1 controls, NEL among them
        return 2;
    // Marks of direction, line and paragraph ends, overrides, isolates.
    static constexpr std::array<std::string_view, 14> harm{"\u200E", "\u200F", "\u2028", "\u2029", "\u202A",
                                                           "\u202B", "\u202C", "\u202D", "\u202E", "\u2066",
                                                           "\u2067", "\u2068", "\u2069", "\uFEFF"};
    for (const std::string_view each : harm)
        if (text.starts_with(each))
            return each.size();
    return 0;
}

} // namespace

std::string plainText(const std::string &text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = harmful(std::string_view(text).substr(at));
        plain += length > 0 ? ' ' : text[at];
        at += length > 0 ? length : 1;
    }
    return plain;
}

std::string joined(const std::vector<std::string> &parts, const char *separator)
{
    std::string text;
    for (const std::string &part : parts)
        text += (text.empty() ? "" : separator) + part;
    return text;
}

} // namespace sim
