// kvo-till: the reference till's command line.
#include "commands.h"
#include "configuration.h"
#include "console.h"
#include "doctorhost.h"
#include "doctorservice.h"
#include "doctorstore.h"

#include <CLI/CLI.hpp>
#include <log4qt/logmanager.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iostream>

namespace {

// CLI11 takes a QString for a wrapper of one character, so it cannot store a text by itself.
CLI::Option *addText(CLI::App *command, const std::string &name, QString &text, const std::string &description)
{
    const auto store = [&text](const std::string &value) { text = QString::fromStdString(value); };
    return command->add_option_function<std::string>(name, store, description)
        ->default_str(text.toStdString())
        ->check([](const std::string &value) { return value.empty() ? "an empty text makes no sense here" : ""; });
}

CLI::Option *addTexts(CLI::App *command, const std::string &name, QStringList &texts, const std::string &description)
{
    const auto store = [&texts](const std::vector<std::string> &values) {
        for (const std::string &value : values)
            texts.append(QString::fromStdString(value));
    };
    return command->add_option_function<std::vector<std::string>>(name, store, description);
}

void addTime(CLI::App *command, const std::string &name, std::chrono::seconds &time, const std::string &description)
{
    command->add_option(name, time, description)->check(CLI::Range(0, 3600))->default_str(std::to_string(time.count()));
}

int runDoctor(const till::Options &options)
{
    using namespace till::doctor;
    Log4Qt::LogManager::rootLogger()->setLevel(Log4Qt::Level::OFF_INT); // the report says it all
    const auto findings = examine(hostChecks(options.configFile) + storeChecks() + serviceChecks(options.doctorPhone));
    till::console::print(options.json ? reportJson(findings) : reportText(findings));
    return exitStatus(findings);
}

/// Parsing stores the options where the commands find them, and then performs the command.
class CommandLine
{
public:
    CommandLine()
    {
        m_program.require_subcommand(1);
        m_program.set_version_flag("--version", "kvo-till " KVO_VERSION);
        m_program.set_help_all_flag("--help-all", "Print help for all commands and exit");
        addSelling();
        addDrainAndJournal();
        addQueue();
        addDoctor();
        addReplay();
        m_program.add_subcommand("settings", "Print the reference of all settings")->callback([] {
            till::console::print(till::settingsReference());
        });
    }

    int perform(int argc, char *argv[])
    {
        try {
            m_program.parse(argc, argv);
        } catch (const CLI::ParseError &error) {
            return m_program.exit(error) == 0 ? till::Succeeded : till::Unusable;
        } catch (const BasicException &error) {
            return till::fail(error, till::Unusable);
        }
        return m_status;
    }

private:
    using Action = till::QueueRequest::Action;

    CLI::App *add(const std::string &name, const std::string &description,
                  const std::function<int(const till::Options &)> &perform)
    {
        CLI::App *command = m_program.add_subcommand(name, description);
        addText(command, "--config", m_options.configFile, "INI file with the configuration");
        command->callback([this, perform] { m_status = perform(m_options); });
        return command;
    }

    void addSelling()
    {
        CLI::App *run =
            add("run", "Play scenario files; without one, finish what an earlier run left", till::runScenarios);
        addTexts(run, "FILE", m_options.scenarioFiles, "Scenario files, see scenario.schema.json");
        addText(run, "--code-command", m_options.codeCommand,
                "Command line that prints the code which the customer has received");
        CLI::App *sell = add("sell", "Sell by hand: each line typed is a step", till::sellByHand);
        CLI::App *voidCommand = add("void", "Void the check that was left open", till::voidOpenCheck);
        for (CLI::App *command : {run, sell, voidCommand})
            addTime(command, "--drain-seconds", m_options.drainTime, "How long to deliver queued requests at the end");
        add("status", "Print the open check, kept checks, loyalty and queue", till::showStatus);
    }

    void addDrainAndJournal()
    {
        CLI::App *drain = add("drain", "The same as queue drain", till::drainQueue);
        addTime(drain, "--seconds", m_options.drainTime, "How long to try");
        CLI::App *journal = add("journal", "Print the journal of finished checks", till::printJournal);
        journal->add_flag("--json", m_options.json, "One JSON object in a line for each check");
        addText(journal, "--since", m_options.journalSince,
                "Only checks finished since then: 2026-03-31 or 2026-03-31T18:00");
    }

    void addQueue()
    {
        CLI::App *queue = add("queue", "Look after the queued requests; lists them by default", till::manageQueue);
        queue->require_subcommand(0, 1);
        queue->add_flag("--json", m_request.json, "Answer in JSON");
        addList(queue);
        addStatus(queue);
        addActionsOnOne(queue);
        CLI::App *drain = queue->add_subcommand("drain", "Deliver queued requests now; status 1 when some are left");
        addTime(drain, "--seconds", m_options.drainTime, "How long to try");
        queue->callback(
            [this, drain] { m_status = *drain ? till::drainQueue(m_options) : till::manageQueue(m_options); });
        for (CLI::App *command : queue->get_subcommands({}))
            command->fallthrough(); // --config and --json may follow the action as well
    }

    CLI::App *addAction(CLI::App *queue, const std::string &name, Action action, const std::string &description)
    {
        CLI::App *command = queue->add_subcommand(name, description);
        command->callback([this, action] { m_request.action = action; });
        return command;
    }

    void addList(CLI::App *queue)
    {
        std::vector<std::string> states;
        for (const QString &code : till::stateCodes())
            states.push_back(code.toStdString());
        CLI::App *list =
            addAction(queue, "list", Action::List, "List requests: age, order, check, card, operation, state, reason");
        addText(list, "--state", m_request.state, "Only those in this state")->check(CLI::IsMember(states));
        addText(list, "--order", m_request.filter.order, "Only those of this order");
        addText(list, "--check", m_request.filter.check, "Only those of this check");
        list->add_option("--limit", m_request.filter.limit, "At most so many, the oldest")
            ->check(CLI::Range(1, 1'000'000));
    }

    void addStatus(CLI::App *queue)
    {
        CLI::App *status = addAction(
            queue, "status", Action::Status,
            "Counts, oldest age, last success and error; for a monitoring system: "
            "status 1 when requests were refused, a threshold is exceeded, nothing can be stored or a clock is wrong");
        status->add_option("--max-age", m_request.maxAgeMinutes, "Oldest request, in minutes")
            ->check(CLI::Range(0, 1'000'000));
        status->add_option("--max-waiting", m_request.maxWaiting, "Waiting requests")->check(CLI::Range(0, 1'000'000));
    }

    void addActionsOnOne(CLI::App *queue)
    {
        CLI::App *show = addAction(queue, "show", Action::Show, "Show one request, with secrets hidden");
        CLI::App *retry = queue->add_subcommand("retry", "Send a refused request again, or a waiting one now");
        CLI::App *discard =
            addAction(queue, "discard", Action::Discard, "Give a request up; it is kept together with the reason");
        CLI::App *restore = addAction(queue, "restore", Action::Restore, "Take a discard back");
        for (CLI::App *command : {show, discard, restore})
            command->add_option("ID", m_request.id, "Number of the request")->required();
        addText(discard, "--reason", m_request.reason, "Why")->required();
        CLI::App *which = retry->add_option_group("which")->require_option(1);
        which->add_option("ID", m_request.id, "Number of the request");
        which->add_flag("--all", m_retriesAll, "All that were refused");
        retry->callback([this] { m_request.action = m_retriesAll ? Action::RetryAll : Action::Retry; });
    }

    void addDoctor()
    {
        CLI::App *doctor =
            add("doctor", "Find out why the till does not sell; status 1 with warnings, 2 with failures", runDoctor);
        doctor->add_flag("--json", m_options.json, "Answer in JSON");
        addText(doctor, "--sms", m_options.doctorPhone, "Have the service send a text message to this number");
    }

    void addReplay()
    {
        CLI::App *replay = add("replay", "Sell a day of receipts from a CSV file", till::replay);
        addText(replay, "FILE", m_replay.csvFile, "Columns are found by the first line; see README.md")->required();
        addTexts(replay, "--map", m_replay.columns, "Names of columns: invoice=Bill,price=Net")->delimiter(',');
        replay->add_option("--tills", m_replay.tills, "Processes that sell at once")
            ->check(CLI::Range(1, 100))
            ->capture_default_str();
        addText(replay, "--ledger", m_replay.ledger, "Database of loyalty-sim to compare the journals with");
        addText(replay, "--make-customers", m_replay.customersFile,
                "Only write the file's customers, for loyalty-sim serve --customers");
        addTime(replay, "--drain-seconds", m_options.drainTime, "How long to deliver queued requests at the end");
        replay->add_flag("--worker", m_replay.isWorker)->group(""); // how the tills are started
    }

    CLI::App m_program{
        "Reference till: sells with the loyalty plugin, looks after its queue, and says what is wrong.\n"
        "Exit status: 0 all as expected, 1 something differed or failed, 2 not usable, nothing was sold.",
        "kvo-till"};
    till::Options m_options;
    till::QueueRequest &m_request = m_options.queueRequest;
    till::ReplayOptions &m_replay = m_options.replay;
    bool m_retriesAll = false;
    int m_status = till::Succeeded;
};

} // namespace

int main(int argc, char *argv[])
{
    till::console::openStandardStreams();
    const QCoreApplication application(argc, argv);
    const int status = CommandLine().perform(argc, argv);
    if (std::cout.flush())
        return status;
    std::fputs("kvo-till: the output could not be written\n", stderr);
    return std::max<int>(status, till::Differed);
}
