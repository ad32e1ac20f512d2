// The program itself: its announcement and signals, the ledger after a kill, the commands on a ledger in use.
#include "simulator_fixture.h"

#include <QtCore/QProcess>

#include <atomic>
#include <csignal>
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

    void serve()
    {
        start("serve --user u --password p --brand K --port-file " + portFile);
        ASSERT_TRUE(process.waitForReadyRead());
        std::ifstream(portFile) >> port;
        EXPECT_EQ(output(), "loyalty-sim: listening on http://127.0.0.1:" + std::to_string(port) + "\n");
    }

    std::string output() { return process.readAll().toStdString(); }

    /// Waits for the end; the exit status, or minus the signal that ended it.
    int status()
    {
        EXPECT_TRUE(process.waitForFinished());
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -process.exitCode();
    }

    int run(const std::string &command)
    {
        start(command);
        return status();
    }

    Folder folder;
    const std::string ledger = folder / "ledger.db";
    const std::string portFile = folder / "port";
    QProcess process;
    int port = 0;
};

TEST_F(Program, KeepsEverythingItAnsweredThroughKills)
{
    std::vector<std::string> answered;
    for (int round = 1; round <= 3; ++round) {
        serve();
        std::atomic<int> count = 0;
        std::jthread killer([&, program = static_cast<pid_t>(process.processId())](const std::stop_token &stop) {
            while (count < 5 * round && !stop.stop_requested())
                std::this_thread::yield();
            ::kill(program, SIGKILL);
        });
        Caller caller(port);
        const auto sell = [&](const std::string &basket) {
            return caller.call("createOrder", basket).outcome() == "ok" &&
                   caller.call("postOrder", basket).outcome() == "ok" &&
                   caller.call("bindOrderId", basket).outcome() == "ok";
        };
        for (std::string basket = std::to_string(round) + "-"; sell(basket); ++count)
            answered.push_back(std::exchange(basket, basket + "i"));
        killer = {};
        EXPECT_EQ(status(), -SIGKILL);
        EXPECT_EQ(run("check"), 0) << output();
    }
    EXPECT_GE(answered.size(), 30u);
    EXPECT_EQ(run("ledger --json"), 0);
    const Json kept = Json::parse(output());
    std::vector<std::string> bound;
    for (const Json &order : kept["orders"])
        if (order["state"] == "bound")
            bound.push_back(order["basket"]);
    EXPECT_THAT(bound, testing::IsSupersetOf(answered));
}

TEST_F(Program, FinishesRunningRequestsOnSigterm)
{
    serve();
    EXPECT_EQ(std::filesystem::status(ledger).permissions(), std::filesystem::perms(0600));
    Caller caller(port);
    caller.fault({{"method", "createOrder"}, {"kind", "delay"}, {"milliseconds", 600000}});
    Received answer;
    std::thread slow([&] { answer = Caller(port).call("createOrder", "b"); });
    while (caller.requests()["counts"].empty())
        std::this_thread::yield();
    process.terminate();
    EXPECT_EQ(status(), 0);
    slow.join();
    EXPECT_EQ(answer.outcome(), "ok");
    run("ledger");
    EXPECT_THAT(output(), HasSubstr("created"));
}

TEST_F(Program, LeavesForeignFilesAlone)
{
    std::ofstream(ledger) << "something else entirely, long enough to be looked at";
    EXPECT_EQ(run("serve"), 2);
    EXPECT_EQ(run("ledger"), 2);
    std::filesystem::remove(ledger);
    SQLite::Database(ledger, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec("CREATE TABLE other (x)");
    EXPECT_EQ(run("serve"), 2);
    EXPECT_EQ(run("check"), 2);
}

} // namespace sim
