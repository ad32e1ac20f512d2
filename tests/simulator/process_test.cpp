// The program itself: its announcement, its end, and files that are not its own.
#include "simulator_fixture.h"

#include <QtCore/QProcess>

#include <filesystem>
#include <fstream>

namespace sim {

class Program : public testing::Test
{
protected:
    void start(const std::string &command)
    {
        process.start(QStringLiteral(LOYALTY_SIM_PROGRAM),
                      QString::fromStdString(command + " --database " + ledger).split(u' '));
    }
    std::string output() { return process.readAll().toStdString(); }
    int exitStatus()
    {
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return process.exitCode();
    }
    int run(const std::string &command)
    {
        start(command);
        return exitStatus();
    }

    Folder folder;
    const std::string ledger = folder / "ledger.db";
    QProcess process;
};

TEST_F(Program, FinishesRunningRequestsOnSigterm)
{
    const std::string portFile = folder / "port";
    start("serve --user u --password p --brand K --port-file " + portFile);
    ASSERT_TRUE(process.waitForReadyRead());
    int port = 0;
    std::ifstream(portFile) >> port;
    EXPECT_EQ(output(), "loyalty-sim: listening on http://127.0.0.1:" + std::to_string(port) + "\n");
    EXPECT_EQ(std::filesystem::status(ledger).permissions(), std::filesystem::perms(0600));

    Caller caller(port);
    caller.fault({{"method", "createOrder"}, {"kind", "delay"}, {"milliseconds", 600000}});
    Received answer;
    std::thread slow([&] { answer = Caller(port).call("createOrder", "b"); });
    while (caller.requests()["counts"].empty())
        std::this_thread::yield();
    process.terminate();
    EXPECT_EQ(exitStatus(), 0);
    slow.join();
    EXPECT_EQ(answer.outcome(), "ok");
    run("ledger");
    EXPECT_THAT(output(), HasSubstr("created"));
}

TEST_F(Program, TellsAGoodLedgerFromABadOneAndFromAForeignFile)
{
    Database(ledger, Database::Access::Serve).write([](const SQLite::Database &connection) {
        return addCustomers(connection, sampleCustomers());
    });
    EXPECT_EQ(run("check"), 0);
    SQLite::Database(ledger, SQLite::OPEN_READWRITE).exec("UPDATE customers SET balance = balance + 1");
    EXPECT_EQ(run("check"), 1);

    SQLite::Database(ledger, SQLite::OPEN_READWRITE).exec("PRAGMA application_id = 1");
    EXPECT_EQ(run("serve"), 2);
    EXPECT_EQ(run("check"), 2);
    std::ofstream(ledger) << "something else entirely, long enough to be looked at";
    EXPECT_EQ(run("serve"), 2);
    EXPECT_EQ(run("ledger"), 2);
}

} // namespace sim
