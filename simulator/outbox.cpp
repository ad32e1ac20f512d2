#include "outbox.h"

#include "database.h"

#include <algorithm>

namespace sim {

std::int64_t keepMessage(const SQLite::Database &database, const MessageRequest &message)
{
    execute(database,
            "INSERT INTO messages (at, brand, phone, text) VALUES (strftime('%Y-%m-%d %H:%M:%f', 'now'), ?, ?, ?)",
            message.brand, message.phone, message.text);
    return database.getLastInsertRowid();
}

std::vector<SentMessage> messages(const SQLite::Database &database, const std::string &phone, int last)
{
    std::vector<SentMessage> found;
    auto row = prepare(database,
                       "SELECT id, at, phone, text FROM messages WHERE ?1 = '' OR phone = ?1 ORDER BY id DESC LIMIT ?2",
                       phone, last);
    while (row.executeStep())
        found.push_back({row.getColumn(0).getInt64(), row.getColumn(1).getString(), row.getColumn(2).getString(),
                         row.getColumn(3).getString()});
    std::ranges::reverse(found);
    return found;
}

std::string codeIn(const std::string &text)
{
    constexpr const char *digits = "0123456789";
    std::string longest;
    for (std::size_t first = text.find_first_of(digits); first != std::string::npos;) {
        const std::size_t end = std::min(text.find_first_not_of(digits, first), text.size());
        if (end - first > longest.size())
            longest = text.substr(first, end - first);
        first = text.find_first_of(digits, end);
    }
    return longest;
}

} // namespace sim
