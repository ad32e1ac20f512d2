// HTTP/1.1 messages off a connection, framed by Content-Length.
#pragma once

#include "socket.h"

#include <optional>
#include <string>
#include <string_view>

namespace prove {

struct HttpMessage
{
    std::string head; ///< With the empty line at its end.
    std::string body;

    std::string text() const { return head + body; }

    /// A word of the first line, counted from 0; empty when there is none.
    std::string word(int index) const;

    /// The status of an answer.
    int status() const { return std::atoi(word(1).c_str()); }

    /// The last part of a request's path: the method of the service.
    std::string method() const;
};

/// Reads one message after the other. Keeps what has come of the next one.
class HttpReader
{
public:
    /// Nothing when the connection ends before a message is complete. Throws std::runtime_error for a message that is
    /// framed in another way.
    std::optional<HttpMessage> read(const Socket &socket);

private:
    std::string m_buffer;
};

} // namespace prove
