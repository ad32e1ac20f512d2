// The terminal of the till.
#include "console.h"

#include <iostream>
#include <string>

namespace till::console {

void print(const QString &text)
{
    std::cout << text.toStdString() << std::flush;
}

void printLine(const QString &text)
{
    print(text + u'\n');
}

std::optional<QString> readLine()
{
    std::string line;
    if (!std::getline(std::cin, line))
        return std::nullopt;
    return QString::fromStdString(line).trimmed();
}

} // namespace till::console
