// Text messages that the service was asked to send. They are kept to be read; none leaves the machine.
#pragma once

#include "wire.h"

#include <SQLiteCpp/Database.h>

#include <limits>
#include <string>
#include <vector>

namespace sim {

struct SentMessage
{
    std::int64_t id{};
    std::string at; ///< UTC
    std::string phone;
    std::string text;
};

/// Keeps the message and returns its number.
std::int64_t keepMessage(const SQLite::Database &database, const MessageRequest &message);

/// The `last` newest messages to a number, or to all with an empty one; oldest first.
std::vector<SentMessage> messages(const SQLite::Database &database, const std::string &phone,
                                  int last = std::numeric_limits<int>::max());

/// The confirmation code in a text: its longest number; empty if it has none.
std::string codeIn(const std::string &text);

} // namespace sim
