// The cashier's side of dialogs and code prompts.
#include "scriptedcashier.h"

#include "console.h"
#include "loyalty.h"

#include <core/plaintext.h>

#include <QtCore/QProcess>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr std::chrono::milliseconds longestCommand{10'000};
constexpr qsizetype longestMessage = 1000; // characters of one line
const QString giveUp = u"give-up"_s;

/// Shows the text as the cashier would see it, each of its lines marked.
void printMarked(const QString &text)
{
    for (const QString &line : text.split(u'\n'))
        console::printLine(u"  | "_s + plainText(line, longestMessage));
}

bool askInTerminal(const tr::Tr &first, const tr::Tr &second)
{
    for (;;) {
        const std::optional<QString> line = console::readLine(u"  | 1 - %1, 2 - %2: "_s.arg(first.ru(), second.ru()));
        if (!line) {
            console::printLine({});
            throw console::InputEnded();
        }
        if (line == u"2"_s)
            return false;
        if (line == u"1"_s)
            return true;
    }
}

} // namespace

ScriptedCashier::ScriptedCashier(const QString &codeCommand) : m_codeCommand(codeCommand.trimmed())
{}

void ScriptedCashier::beginCheck(const Answers &answers)
{
    m_answers = answers;
    m_messages.clear();
}

bool ScriptedCashier::ask(const tr::Tr &message, const tr::Tr &first, const tr::Tr &second)
{
    show(message);
    if (const QString reason = m_system ? reasonFor(message, *m_system) : QString(); !reason.isEmpty())
        printMarked(u"Причина: "_s + reason);
    const bool answered = !m_answers.dialogs.isEmpty();
    const bool chosen = answered ? m_answers.dialogs.takeFirst() : askInTerminal(first, second);
    if (answered)
        console::printLine(u"  | > "_s + (chosen ? first : second).ru());
    return chosen;
}

std::optional<QString> ScriptedCashier::enterCode(const tr::Tr &prompt, std::chrono::milliseconds timeLeft, int)
{
    show(prompt);
    if (!m_answers.codes.isEmpty()) {
        const QString code = m_answers.codes.takeFirst();
        if (code == giveUp)
            return std::nullopt;
        console::printLine(u"  | > (код введён)"_s);
        return code;
    }
    if (!m_codeCommand.isEmpty())
        return askCustomer();
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(timeLeft).count();
    const std::optional<QString> line = console::readLine(u"  | Код (пусто - отказ, осталось %1 с): "_s.arg(seconds));
    return line && !line->isEmpty() ? line : std::nullopt;
}

void ScriptedCashier::show(const tr::Tr &message)
{
    m_messages.append(message.ru());
    printMarked(message.ru());
}

std::optional<QString> ScriptedCashier::askCustomer()
{
    QProcess command;
    command.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    command.startCommand(m_codeCommand);
    const bool finished = command.waitForFinished(static_cast<int>(longestCommand.count()));
    const QString code = QString::fromUtf8(command.readAllStandardOutput()).trimmed();
    if (!finished || command.exitStatus() != QProcess::NormalExit || command.exitCode() != 0 || code.isEmpty()) {
        show(tr::Tr(u"Код от клиента не получен: команда \"%1\" не выполнена"_s.arg(m_codeCommand)));
        return std::nullopt;
    }
    console::printLine(u"  | > (код введён)"_s);
    return code;
}

} // namespace till
