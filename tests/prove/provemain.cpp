// kvo-prove: sells at random with the real till, another host, the plugin and the service's stand-in, kills them,
// spoils their exchanges, and then compares the books of both sides.
#include "proof.h"

#include <CLI/CLI.hpp>

#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>

#include <csignal>
#include <iostream>

namespace {

int carryOut(const prove::Options &options)
{
    QTemporaryDir folder;
    if (!folder.isValid())
        throw std::runtime_error("no temporary folder can be made");
    folder.setAutoRemove(false);
    std::cout << "seed " << options.seed << std::endl;
    const QStringList findings = prove::Proof(folder.path(), options).run();
    for (const QString &finding : findings)
        std::cout << "FOUND: " << qPrintable(finding) << '\n';
    std::cout << (findings.isEmpty() ? "All holds" : "It does not hold") << ", seed " << options.seed << std::endl;
    if (!findings.isEmpty()) {
        std::cout << "The files are kept in " << qPrintable(folder.path()) << std::endl;
        return 1;
    }
    folder.remove();
    return 0;
}

} // namespace

int main(int argc, char *argv[])
try {
    const QCoreApplication application(argc, argv);
    prove::Options options;
    CLI::App program("Random sales under kills and faults. The seed fixes what is sold and drawn; when a process is "
                     "killed depends on the machine as well.\nExit status: 0 nothing was lost or doubled, 1 something "
                     "does not hold, 2 the proof could not be carried out.\nAfter SIGTERM no further sales are begun; "
                     "those that were are judged.\nThe queue is on the PostgreSQL server that "
                     "KVO_POSTGRES names, see scripts/with-postgres, otherwise in a file.",
                     "kvo-prove");
    program.add_option("--sales", options.sales, "Checks to finish")
        ->check(CLI::Range(1, 1'000'000))
        ->capture_default_str();
    program.add_option("--kills", options.kills, "Processes to kill")
        ->check(CLI::Range(0, 1'000'000))
        ->capture_default_str();
    program.add_option("--seed", options.seed, "Start of the random numbers; by default another one each time");
    program.add_option("--faults", options.faultRate, "Part of the exchanges that meet with a fault")
        ->check(CLI::Range(0., 1.))
        ->capture_default_str();
    CLI11_PARSE(program, argc, argv);
    std::signal(SIGTERM, [](int) { prove::Proof::stop = 1; });
    return carryOut(options);
} catch (const std::exception &error) {
    std::cerr << "kvo-prove: " << error.what() << std::endl;
    return 2;
}
