// kvo-till: the reference till's command line.
#include "commands.h"
#include "configuration.h"
#include "console.h"
#include "doctorhost.h"
#include "doctorservice.h"
#include "doctorstore.h"
#include "replay.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <log4qt/logmanager.h>
#include <unistd.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace {

/// Texts of the command line, converted for Qt once it is parsed.
struct Arguments
{
    std::string configFile = "kvo-till.ini";
    std::vector<std::string> scenarioFiles;
    std::string codeCommand;
    int drainSeconds = 5;
    qint64 queueId = 0;
    bool retryAll = false;
    std::string discardReason;
    std::string queueState;
    std::string queueOrder;
    std::string queueCheck;
    qint64 queueLimit = 0;
    qint64 maxWaiting = -1;
    qint64 maxAgeMinutes = -1;
    bool json = false;
    std::string phone;
    std::string since;
    std::string csvFile;
    std::vector<std::string> columns;
    std::string customersFile;
    std::string ledger;
    int tills = 1;
    bool isWorker = false;
};

till::Options toOptions(const Arguments &arguments)
{
    till::Options options;
    options.configFile = QString::fromStdString(arguments.configFile);
    for (const std::string &file : arguments.scenarioFiles)
        options.scenarioFiles.append(QString::fromStdString(file));
    options.codeCommand = QString::fromStdString(arguments.codeCommand).trimmed();
    options.drainTime = std::chrono::seconds(arguments.drainSeconds);
    options.queueRequest.id = arguments.queueId;
    options.queueRequest.reason = QString::fromStdString(arguments.discardReason);
    options.queueRequest.state = QString::fromStdString(arguments.queueState);
    options.queueRequest.filter.order = QString::fromStdString(arguments.queueOrder);
    options.queueRequest.filter.check = QString::fromStdString(arguments.queueCheck);
    if (arguments.queueLimit > 0)
        options.queueRequest.filter.limit = arguments.queueLimit;
    options.queueRequest.maxWaiting = arguments.maxWaiting;
    options.queueRequest.maxAgeMinutes = arguments.maxAgeMinutes;
    options.queueRequest.json = arguments.json;
    options.json = arguments.json;
    options.journalSince = QString::fromStdString(arguments.since);
    return options;
}

CLI::App *addCommand(CLI::App &program, const std::string &name, const std::string &description, Arguments &arguments)
{
    CLI::App *command = program.add_subcommand(name, description);
    command->add_option("--config", arguments.configFile, "INI file with the configuration")->capture_default_str();
    return command;
}

void addDrainTime(CLI::App *command, const std::string &name, const std::string &description, Arguments &arguments)
{
    command->add_option(name, arguments.drainSeconds, description)->check(CLI::Range(0, 3600))->capture_default_str();
}

/// `kvo-till queue` and what may follow it.
struct QueueCommands
{
    QueueCommands(CLI::App &program, Arguments &arguments)
        : queue(addCommand(program, "queue", "Look after the queued requests; lists them by default", arguments))
    {
        queue->require_subcommand(0, 1);
        queue->add_flag("--json", arguments.json, "Answer in JSON");
        addList(arguments);
        addStatus(arguments);
        show = queue->add_subcommand("show", "Show one request, with secrets hidden");
        retry = queue->add_subcommand("retry", "Send a refused request again, or a waiting one now");
        discard = queue->add_subcommand("discard", "Give a request up; it is kept together with the reason");
        restore = queue->add_subcommand("restore", "Take a discard back");
        drain = queue->add_subcommand("drain", "Deliver queued requests now; status 1 when some are left");
        for (CLI::App *command : queue->get_subcommands({}))
            command->fallthrough(); // --config and --json may follow the action as well
        for (CLI::App *command : {show, discard, restore})
            command->add_option("ID", arguments.queueId, "Number of the request")->required();
        CLI::App *which = retry->add_option_group("which")->require_option(1);
        which->add_option("ID", arguments.queueId, "Number of the request");
        which->add_flag("--all", arguments.retryAll, "All that were refused");
        discard->add_option("--reason", arguments.discardReason, "Why")->required();
        addDrainTime(drain, "--seconds", "How long to try", arguments);
    }

    till::QueueRequest::Action action(const Arguments &arguments) const
    {
        using Action = till::QueueRequest::Action;
        if (*retry)
            return arguments.retryAll ? Action::RetryAll : Action::Retry;
        if (*show)
            return Action::Show;
        if (*status)
            return Action::Status;
        if (*restore)
            return Action::Restore;
        return *discard ? Action::Discard : Action::List;
    }

    void addList(Arguments &arguments)
    {
        std::vector<std::string> states;
        for (const QString &code : till::stateCodes())
            states.push_back(code.toStdString());
        CLI::App *list =
            queue->add_subcommand("list", "List requests: age, order, check, card, operation, state, reason");
        list->add_option("--state", arguments.queueState, "Only those in this state")->check(CLI::IsMember(states));
        list->add_option("--order", arguments.queueOrder, "Only those of this order");
        list->add_option("--check", arguments.queueCheck, "Only those of this check");
        list->add_option("--limit", arguments.queueLimit, "At most so many, the oldest")
            ->check(CLI::Range(1, 1'000'000));
    }

    void addStatus(Arguments &arguments)
    {
        status = queue->add_subcommand("status", "Counts, oldest age, last success and error; for a monitoring system: "
                                                 "status 1 when requests were refused or a threshold is exceeded");
        status->add_option("--max-age", arguments.maxAgeMinutes, "Oldest request, in minutes")
            ->check(CLI::Range(0, 1'000'000));
        status->add_option("--max-waiting", arguments.maxWaiting, "Waiting requests")->check(CLI::Range(0, 1'000'000));
    }

    CLI::App *queue;
    CLI::App *status = nullptr;
    CLI::App *restore = nullptr;
    CLI::App *show = nullptr;
    CLI::App *retry = nullptr;
    CLI::App *discard = nullptr;
    CLI::App *drain = nullptr;
};

CLI::App *addReplay(CLI::App &program, Arguments &arguments)
{
    CLI::App *command = addCommand(program, "replay", "Sell a day of receipts from a CSV file", arguments);
    command->add_option("FILE", arguments.csvFile, "Columns are found by the first line; see README.md")->required();
    command->add_option("--map", arguments.columns, "Names of columns: invoice=Bill,price=Net")->delimiter(',');
    command->add_option("--tills", arguments.tills, "Processes that sell at once")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
    command->add_option("--ledger", arguments.ledger, "Database of loyalty-sim to compare the journals with");
    command->add_option("--make-customers", arguments.customersFile,
                        "Only write the file's customers, for loyalty-sim serve --customers");
    addDrainTime(command, "--drain-seconds", "How long to deliver queued requests at the end", arguments);
    command->add_flag("--worker", arguments.isWorker)->group(""); // how the tills are started
    return command;
}

int runReplay(const Arguments &arguments)
{
    till::ReplayOptions options{.configFile = QString::fromStdString(arguments.configFile),
                                .csvFile = QString::fromStdString(arguments.csvFile),
                                .columns = {},
                                .customersFile = QString::fromStdString(arguments.customersFile),
                                .ledger = QString::fromStdString(arguments.ledger),
                                .tills = arguments.tills,
                                .drainTime = std::chrono::seconds(arguments.drainSeconds),
                                .isWorker = arguments.isWorker};
    for (const std::string &column : arguments.columns)
        options.columns.append(QString::fromStdString(column));
    return till::replay(options);
}

int runDoctor(const Arguments &arguments)
{
    using namespace till::doctor;
    Log4Qt::LogManager::rootLogger()->setLevel(Log4Qt::Level::OFF_INT); // the report says it all
    const auto findings = examine(hostChecks(QString::fromStdString(arguments.configFile)) + storeChecks() +
                                  serviceChecks(QString::fromStdString(arguments.phone)));
    till::console::print(arguments.json ? reportJson(findings) : reportText(findings));
    return exitStatus(findings);
}

/// Opens closed standard streams on /dev/null; otherwise a file opened later, such as the log, could take the place of
/// such a stream and receive what is printed.
void openStandardStreams()
{
    int descriptor = ::open("/dev/null", O_RDONLY);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDONLY);
    ::close(descriptor);
}

/// Does what the command line says, with a statement per option. NOLINTNEXTLINE(readability-function-size)
int perform(int argc, char *argv[])
{
    Arguments arguments;
    CLI::App program("Reference till: sells with the loyalty plugin, looks after its queue, and says what is wrong.\n"
                     "Exit status: 0 all as expected, 1 something differed or failed, 2 not usable, nothing was sold.",
                     "kvo-till");
    program.require_subcommand(1);
    program.set_version_flag("--version", "kvo-till " KVO_VERSION);
    program.set_help_all_flag("--help-all", "Print help for all commands and exit");

    CLI::App *run =
        addCommand(program, "run", "Play scenario files; without one, finish what an earlier run left", arguments);
    run->add_option("FILE", arguments.scenarioFiles, "Scenario files, see scenario.schema.json");
    run->add_option("--code-command", arguments.codeCommand,
                    "Command line that prints the code which the customer has received");
    addDrainTime(run, "--drain-seconds", "How long to deliver queued requests at the end", arguments);
    CLI::App *sell = addCommand(program, "sell", "Sell by hand: each line typed is a step", arguments);
    CLI::App *voidCommand = addCommand(program, "void", "Void the check that was left open", arguments);
    CLI::App *status = addCommand(program, "status", "Print the open check, kept checks, loyalty and queue", arguments);
    for (CLI::App *command : {sell, voidCommand})
        addDrainTime(command, "--drain-seconds", "How long to deliver queued requests at the end", arguments);
    CLI::App *drain = addCommand(program, "drain", "The same as queue drain", arguments);
    addDrainTime(drain, "--seconds", "How long to try", arguments);
    CLI::App *journal = addCommand(program, "journal", "Print the journal of finished checks", arguments);
    journal->add_flag("--json", arguments.json, "One JSON object in a line for each check");
    journal->add_option("--since", arguments.since, "Only checks finished since then: 2026-03-31 or 2026-03-31T18:00");
    const QueueCommands queue(program, arguments);
    CLI::App *doctor = addCommand(
        program, "doctor", "Find out why the till does not sell; status 1 with warnings, 2 with failures", arguments);
    doctor->add_flag("--json", arguments.json, "Answer in JSON");
    doctor->add_option("--sms", arguments.phone, "Have the service send a text message to this number");
    const CLI::App *replay = addReplay(program, arguments);
    const CLI::App *settings = program.add_subcommand("settings", "Print the reference of all settings");

    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return program.exit(error) == 0 ? till::Succeeded : till::Unusable;
    }
    if (*settings) {
        till::console::print(till::settingsReference());
        return till::Succeeded;
    }
    if (*doctor)
        return runDoctor(arguments);
    if (*replay)
        return runReplay(arguments);
    till::Options options = toOptions(arguments);
    if (*run)
        return till::runScenarios(options);
    if (*sell)
        return till::sellByHand(options);
    if (*voidCommand)
        return till::voidOpenCheck(options);
    if (*status)
        return till::showStatus(options);
    if (*journal)
        return till::printJournal(options);
    if (*drain || *queue.drain)
        return till::drainQueue(options);
    options.queueRequest.action = queue.action(arguments);
    return till::manageQueue(options);
}

} // namespace

int main(int argc, char *argv[])
{
    openStandardStreams();
    const QCoreApplication application(argc, argv);
    const int status = perform(argc, argv);
    if (std::cout.flush())
        return status;
    std::fputs("kvo-till: the output could not be written\n", stderr);
    return std::max<int>(status, till::Differed);
}
