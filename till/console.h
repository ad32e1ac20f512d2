// The terminal of the till.
#pragma once

#include <QtCore/QString>

#include <optional>

namespace till::console {

/// Writes to the standard output in UTF-8, at once.
void print(const QString &text);
void printLine(const QString &text);

/// A line typed in, without blanks around it; nothing at the end of the input.
std::optional<QString> readLine();

} // namespace till::console
