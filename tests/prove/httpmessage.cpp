// Framing of HTTP/1.1. Both sides here send their bodies with a length; anything else is an error of the proof itself.
#include "httpmessage.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <stdexcept>

namespace prove {

namespace {

constexpr std::string_view endOfLine = "\r\n";
constexpr std::string_view endOfHead = "\r\n\r\n";

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return result;
}

std::size_t bodyLength(std::string_view head)
{
    const std::string headers = lowered(head);
    if (headers.find("\r\ntransfer-encoding:") != std::string::npos)
        throw std::runtime_error("a message without a length");
    constexpr std::string_view name = "\r\ncontent-length:";
    const std::size_t found = headers.find(name);
    if (found == std::string::npos)
        return 0;
    const std::size_t start = headers.find_first_not_of(' ', found + name.size());
    std::size_t length = 0;
    const auto [end, error] = std::from_chars(headers.data() + start, headers.data() + headers.size(), length);
    if (error != std::errc() || !std::string_view(end, endOfLine.size()).starts_with(endOfLine))
        throw std::runtime_error("a length that is no number");
    return length;
}

} // namespace

std::string HttpMessage::word(int index) const
{
    std::istringstream line(head.substr(0, head.find(endOfLine)));
    std::string found;
    for (int i = 0; i <= index; ++i)
        if (!(line >> found))
            return {};
    return found;
}

std::string HttpMessage::method() const
{
    const std::string target = word(1);
    const std::string path = target.substr(0, target.find('?'));
    return path.substr(path.rfind('/') + 1);
}

std::optional<HttpMessage> HttpReader::read(const Socket &socket)
{
    std::size_t head = 0;
    while ((head = m_buffer.find(endOfHead)) == std::string::npos)
        if (!socket.receive(m_buffer))
            return std::nullopt;
    HttpMessage message{m_buffer.substr(0, head + endOfHead.size()), {}};
    const std::size_t length = bodyLength(message.head);
    while (m_buffer.size() < message.head.size() + length)
        if (!socket.receive(m_buffer))
            return std::nullopt;
    message.body = m_buffer.substr(message.head.size(), length);
    m_buffer.erase(0, message.head.size() + length);
    return message;
}

} // namespace prove
