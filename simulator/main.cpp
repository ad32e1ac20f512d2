#include "audit.h"
#include "commandline.h"
#include "compare.h"
#include "database.h"
#include "outbox.h"
#include "plaintext.h"
#include "report.h"
#include "serve.h"
#include "tail.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <set>
#include <string>

namespace {

/// Options of the commands that look into a ledger.
struct Inspection
{
    std::filesystem::path file;
    std::string phone;
    bool last = false;
    bool code = false;
    bool json = false;
    std::filesystem::path journal;
    std::set<std::string> open;
    bool onlyDifferences = false;
};

int printOutbox(const Inspection &options)
{
    const std::string phone = sim::phoneKey(options.phone);
    if (phone.empty() && !options.phone.empty())
        throw std::runtime_error("--phone: expected a number like +79001234567");
    sim::Database database(options.file, sim::Database::Access::Inspect);
    auto found = database.read([&](const SQLite::Database &connection) { return sim::messages(connection, phone); });
    if ((options.last || options.code) && found.empty())
        throw std::runtime_error("the outbox is empty");
    if (options.last || options.code)
        found.erase(found.begin(), found.end() - 1);
    if (options.code && sim::codeIn(found.front().text).empty())
        throw std::runtime_error("the last message has no code");
    for (const sim::SentMessage &message : found)
        std::cout << (options.code ? sim::codeIn(message.text) : sim::plainText(message.text)) << '\n';
    return 0;
}

int printLedger(const Inspection &options)
{
    sim::Database database(options.file, sim::Database::Access::Inspect);
    std::cout << (options.json
                      ? database.read([](const auto &connection) { return sim::ledgerJson(connection); }).dump(2) + "\n"
                      : database.read(sim::ledgerText));
    return 0;
}

int checkLedger(const Inspection &options)
{
    sim::Database database(options.file, sim::Database::Access::Inspect);
    const auto faults = database.read(sim::auditLedger);
    for (const std::string &fault : faults)
        std::cout << fault << '\n';
    if (faults.empty())
        std::cout << "the ledger is consistent\n";
    return faults.empty() ? 0 : 1;
}

int compareWithTill(const Inspection &options)
{
    const auto journal = sim::readJournal(options.journal);
    sim::Database database(options.file, sim::Database::Access::Inspect);
    const auto rows = sim::compare(journal, database.read(sim::allOrders), options.open);
    std::cout << sim::comparisonText(rows, options.onlyDifferences);
    return std::all_of(rows.begin(), rows.end(), [](const auto &row) { return row.differences.empty(); }) ? 0 : 1;
}

CLI::App *addServe(CLI::App &app, sim::ServeOptions &options)
{
    CLI::App *const command = app.add_subcommand("serve", "Serve the loyalty and message APIs on 127.0.0.1");
    command->add_option("--database", options.database, "Ledger file; created if missing")->required();
    command->add_option("--port", options.port, "Port; 0 takes a free one")->check(CLI::Range(0, 65535));
    command->add_option("--port-file", options.portFile, "File to write the port to");
    command->add_option("--user", options.server.user, "User name of the HTTP Basic authentication");
    command->add_option("--password", options.server.password, "Its password; better set in the environment")
        ->envname("LOYALTY_SIM_PASSWORD");
    command->add_option("--brand", options.server.brand, "Refuse requests of other brands");
    command->add_flag("--admin", options.server.admin, "Also serve a page at / to watch and control the service");
    command->add_option("--customers", options.customers, "JSON file of customers to add");
    return command;
}

CLI::App *addTail(CLI::App &app, sim::TailOptions &options)
{
    CLI::App *const command = app.add_subcommand("tail", "Print a server's requests as they arrive");
    command->add_option("--port", options.port, "Port of the server")->required()->check(CLI::Range(1, 65535));
    command->add_option("--last", options.last, "Start with so many past requests")->capture_default_str();
    command->add_flag("--json", options.json, "Print requests in full, as JSON lines");
    return command;
}

void addInspections(CLI::App &app, Inspection &options, int &status)
{
    const auto add = [&](const char *name, const char *description, int (*inspect)(const Inspection &)) {
        CLI::App *const command = app.add_subcommand(name, description);
        command->add_option("--database", options.file, "Ledger file; may be in use by a server")->required();
        command->callback([&options, &status, inspect] { status = inspect(options); });
        return command;
    };
    CLI::App *const outbox = add("outbox", "Print the text messages that were sent", printOutbox);
    outbox->add_option("--phone", options.phone, "Only those to this number");
    outbox->add_flag("--last", options.last, "Only the last one");
    outbox->add_flag("--code", options.code, "Only the digits of the last one's code");
    CLI::App *const ledger = add("ledger", "Print customers and orders", printLedger);
    ledger->add_flag("--json", options.json, "As JSON, with all movements");
    add("check", "Check that the ledger is consistent; exit status 1 if not", checkLedger);
    CLI::App *const compare =
        add("compare", "Compare a till's journal with the ledger; exit status 1 if they differ", compareWithTill);
    compare->add_option("--journal", options.journal, "The journal, JSON lines; - reads standard input")->required();
    compare->add_option("--open", options.open, "Baskets of checks that are still open");
    compare->add_flag("--differences", options.onlyDifferences, "Print only what differs, and the totals");
}

int perform(int argc, char **argv)
{
    CLI::App app("Stand-in for the loyalty service: its HTTP API on a ledger of its own.", "loyalty-sim");
    app.require_subcommand(1);
    int status = 0;
    sim::ServeOptions serveOptions;
    addServe(app, serveOptions)->callback([&] { status = serve(serveOptions); });
    sim::TailOptions tailOptions;
    addTail(app, tailOptions)->callback([&] { status = tail(tailOptions); });
    Inspection inspection;
    addInspections(app, inspection, status);
    const auto ended = sim::startProgram(app, argc, argv); // a command sets `status`
    return ended.value_or(status);
}

} // namespace

int main(int argc, char **argv)
try {
    const int status = perform(argc, argv);
    if (!std::cout.flush())
        throw std::runtime_error("the output could not be written");
    return status;
} catch (const std::exception &error) {
    std::cerr << "loyalty-sim: " << error.what() << std::endl;
    return 2;
}
