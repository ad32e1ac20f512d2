// kvo-till: a till on PosHost that loads the loyalty plugin and sells by scenario.
#include "commands.h"

#include <CLI/CLI.hpp>

#include <QtCore/QCoreApplication>

#include <iostream>

namespace {

/// Texts of the command line, converted for Qt once it is parsed.
struct Arguments
{
    std::string configFile = "kvo-till.ini";
    std::vector<std::string> scenarioFiles;
    std::string codeCommand;
    int drainSeconds = 5;
};

till::Options toOptions(const Arguments &arguments)
{
    till::Options options;
    options.configFile = QString::fromStdString(arguments.configFile);
    for (const std::string &file : arguments.scenarioFiles)
        options.scenarioFiles.append(QString::fromStdString(file));
    options.codeCommand = QString::fromStdString(arguments.codeCommand).trimmed();
    options.drainTime = std::chrono::seconds(arguments.drainSeconds);
    return options;
}

CLI::App *addCommand(CLI::App &program, const std::string &name, const std::string &description, Arguments &arguments)
{
    CLI::App *command = program.add_subcommand(name, description);
    command->add_option("--config", arguments.configFile, "INI file with the configuration")->capture_default_str();
    return command;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    Arguments arguments;
    CLI::App program("Reference till: loads the loyalty plugin and plays sales.\n"
                     "Exit status: 0 all as expected, 1 something differed or failed, 2 not usable, nothing was sold.",
                     "kvo-till");
    program.require_subcommand(1);

    CLI::App *run =
        addCommand(program, "run", "Play scenario files; without one, finish what an earlier run left", arguments);
    run->add_option("FILE", arguments.scenarioFiles, "Scenario files, see scenario.schema.json");
    run->add_option("--code-command", arguments.codeCommand,
                    "Command line that prints the code which the customer has received");
    run->add_option("--drain-seconds", arguments.drainSeconds, "How long to deliver queued requests at the end")
        ->check(CLI::Range(0, 3600))
        ->capture_default_str();
    CLI::App *drain = addCommand(program, "drain", "Deliver queued requests; status 1 when some are left", arguments);
    drain->add_option("--seconds", arguments.drainSeconds, "How long to try")
        ->check(CLI::Range(0, 3600))
        ->capture_default_str();
    CLI::App *queue = addCommand(program, "queue", "Tell how much is queued", arguments);

    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return program.exit(error) == 0 ? till::Succeeded : till::Unusable;
    }
    const till::Options options = toOptions(arguments);
    if (*run)
        return till::runScenarios(options);
    return *queue ? till::showQueue(options) : till::drainQueue(options);
}
