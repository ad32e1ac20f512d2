// The terminal of the till, with libedit as the line editor.
#include "console.h"

#include <editline/readline.h>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>

namespace till::console {

namespace {

constexpr int interruptedStatus = 130;

QStringList offeredWords;

/// For the line editor: one word that begins with `beginning` for each call, from the first with `state` 0.
char *nextWord(const char *beginning, int state)
{
    static qsizetype next = 0;
    if (state == 0)
        next = 0;
    while (next < offeredWords.size()) {
        const QByteArray word = offeredWords.at(next++).toUtf8();
        if (word.startsWith(beginning))
            return ::strdup(word.constData());
    }
    return nullptr;
}

char **completions(const char *word, int start, int /*end*/)
{
    rl_attempted_completion_over = 1; // no file names
    return start == 0 ? rl_completion_matches(word, nextWord) : nullptr;
}

bool isTerminal()
{
    return ::isatty(STDIN_FILENO) != 0 && ::isatty(STDOUT_FILENO) != 0;
}

void prepareEditor()
{
    static const bool prepared = [] {
        // Cyrillic must be edited by characters also where the system's locale is "C".
        if (MB_CUR_MAX == 1)
            std::setlocale(LC_CTYPE, "C.UTF-8");
        rl_readline_name = "kvo-till";
        rl_attempted_completion_function = completions;
        using_history();
        return true;
    }();
    std::ignore = prepared;
}

std::optional<QString> edit(const QString &prompt)
{
    prepareEditor();
    const std::unique_ptr<char, decltype(&std::free)> line(::readline(prompt.toUtf8().constData()), &std::free);
    return line ? std::optional(QString::fromUtf8(line.get()).trimmed()) : std::nullopt;
}

// For the signal handler, which must be async-signal-safe.
std::string interruptText;
termios interruptTerminal;
bool interruptHasTerminal = false;

void onInterrupt(int)
{
    if (interruptHasTerminal)
        ::tcsetattr(STDIN_FILENO, TCSANOW, &interruptTerminal);
    std::ignore = ::write(STDOUT_FILENO, interruptText.data(), interruptText.size());
    ::_exit(interruptedStatus);
}

} // namespace

void openStandardStreams()
{
    int descriptor = ::open("/dev/null", O_RDONLY);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDONLY);
    ::close(descriptor);
}

void print(const QString &text)
{
    std::cout << text.toStdString() << std::flush;
}

void printLine(const QString &text)
{
    print(text + QLatin1Char('\n'));
}

std::optional<QString> readLine(const QString &prompt)
{
    if (isTerminal())
        return edit(prompt);
    print(prompt);
    std::string line;
    if (!std::getline(std::cin, line))
        return std::nullopt;
    return QString::fromStdString(line).trimmed();
}

void offer(const QStringList &words)
{
    offeredWords = words;
}

void remember(const QString &line)
{
    if (isTerminal())
        ::add_history(line.toUtf8().constData());
}

void sayOnInterrupt(const QString &text)
{
    interruptText = text.toStdString();
    interruptHasTerminal = ::tcgetattr(STDIN_FILENO, &interruptTerminal) == 0;
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    ::sigaction(SIGINT, &action, nullptr);
}

} // namespace till::console
