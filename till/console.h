// The terminal of the till.
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <stdexcept>

namespace till::console {

/// Nobody answers a question, because the input has ended. Not a BasicException: it passes through plugin and session,
/// and the check stays as it was last saved, as after a kill.
struct InputEnded : std::runtime_error
{
    InputEnded() : runtime_error("Ответа нет: ввод закончился") {}
};

/// Opens closed standard streams on /dev/null; otherwise a file opened later, such as the log, could take the place of
/// such a stream and receive what is printed. To be called first.
void openStandardStreams();

/// Writes to the standard output in UTF-8, at once.
void print(const QString &text);
void printLine(const QString &text);

/// A line typed in after `prompt`, without blanks around it; nothing at the end of the input. Where both ends are a
/// terminal the line can be edited, with history and completion.
std::optional<QString> readLine(const QString &prompt);

/// The words that the tab key completes at the beginning of a line.
void offer(const QStringList &words);

/// Adds a line to the history. Codes never get there.
void remember(const QString &line);

/// From now on Ctrl-C prints this, restores the terminal and ends the program with status 130. Only for programs
/// whose every step is on the disk when it is done.
void sayOnInterrupt(const QString &text);

} // namespace till::console
