// Starts the server, announces its port and shuts it down.
#include "serve.h"

#include "customerfile.h"

#include <unistd.h>

#include <csignal>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <thread>

namespace sim {

namespace {

/// Blocks the signals that end the process, in this thread and those it starts, so that one place can wait for them.
sigset_t blockEndSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void importCustomers(Database &database, const std::filesystem::path &file)
{
    if (!file.empty()) {
        const auto customers = readCustomerFile(file);
        try {
            database.write([&](const SQLite::Database &connection) { return addCustomers(connection, customers); });
        } catch (const std::exception &error) {
            throw std::runtime_error(file.string() + ": " + error.what());
        }
    } else if (database.read(allCustomers).empty()) {
        database.write([](const SQLite::Database &connection) { return addCustomers(connection, sampleCustomers()); });
    }
}

/// Removes what an earlier run has left: nobody may take its port for this one's. A file with anything else stays.
void removePortFile(const std::filesystem::path &file)
{
    if (!std::filesystem::exists(std::filesystem::symlink_status(file)))
        return;
    std::string port;
    std::string more;
    if (std::filesystem::is_regular_file(file))
        std::ifstream(file) >> port >> more;
    if (!std::filesystem::is_regular_file(file) || !more.empty() || port.find_first_not_of("0123456789") != port.npos)
        throw std::runtime_error(file.string() +
                                 ": this is not the port file of an earlier run; name another with --port-file");
    std::filesystem::remove(file);
}

/// Renames a finished file, so that a reader never sees half a number.
void writePortFile(const std::filesystem::path &file, int port)
{
    const std::filesystem::path draft = file.string() + ".new";
    std::filesystem::remove(draft); // with another mode, or a link
    std::ofstream stream(draft);
    stream << port << '\n';
    stream.close();
    if (!stream)
        throw std::runtime_error(file.string() + ": the port cannot be written");
    std::filesystem::rename(draft, file);
}

} // namespace

int serve(const ServeOptions &options)
{
    if (!options.portFile.empty())
        removePortFile(options.portFile);
    const sigset_t endSignals = blockEndSignals();
    Database database(options.database, Database::Access::Serve);
    importCustomers(database, options.customers);
    HttpServer server(database, options.server);
    const int port = server.bind(options.port);
    if (!options.portFile.empty())
        writePortFile(options.portFile, port);
    std::cout << "loyalty-sim: listening on http://127.0.0.1:" << port << std::endl;

    bool served = true;
    std::thread thread([&] {
        served = server.run();
        ::kill(::getpid(), SIGTERM); // wakes the wait below when accepting has failed
    });
    int received = 0;
    sigwait(&endSignals, &received);
    server.stop();
    thread.join();
    return served ? 0 : 1;
}

} // namespace sim
