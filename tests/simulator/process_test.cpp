// The program itself: its announcement and signals, the ledger after a kill, the commands on a ledger in use.
#include "simulator_fixture.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>

namespace sim {

namespace {

using testing::HasSubstr;

constexpr int patienceMilliseconds = 20000;

/// A run of the program with its standard output on a pipe.
class Process
{
public:
    explicit Process(std::vector<std::string> arguments)
    {
        int pipe[2];
        if (::pipe2(pipe, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        m_output = pipe[0];
        arguments.insert(arguments.begin(), LOYALTY_SIM_PROGRAM);
        std::vector<char *> argv;
        for (std::string &argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
        if (posix_spawn(&m_id, LOYALTY_SIM_PROGRAM, &actions, nullptr, argv.data(), environ) != 0)
            throw std::runtime_error("cannot start " LOYALTY_SIM_PROGRAM);
        posix_spawn_file_actions_destroy(&actions);
        ::close(pipe[1]);
    }

    ~Process()
    {
        if (m_id > 0)
            end(SIGKILL);
        ::close(m_output);
    }

    /// Output up to the end of a line, or all of it.
    std::string read(bool onlyALine)
    {
        std::string text;
        char character = 0;
        pollfd ready{m_output, POLLIN, 0};
        while (::poll(&ready, 1, patienceMilliseconds) > 0 && ::read(m_output, &character, 1) == 1) {
            text += character;
            if (onlyALine && character == '\n')
                break;
        }
        return text;
    }

    /// Sends a signal (0: none) and waits for the end; the exit status, or minus the signal that ended it.
    int end(int signal)
    {
        ::kill(m_id, signal);
        int status = 0;
        ::waitpid(std::exchange(m_id, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    pid_t m_id = -1;
    int m_output = -1;
};

class Program : public testing::Test
{
protected:
    std::unique_ptr<Process> serve()
    {
        auto process = std::make_unique<Process>(std::vector<std::string>{
            "serve", "--database", ledger, "--port-file", portFile, "--user", "u", "--password", "p", "--brand", "K"});
        const std::string line = process->read(true);
        std::ifstream(portFile) >> port;
        EXPECT_EQ(line, "loyalty-sim: listening on http://127.0.0.1:" + std::to_string(port) + "\n");
        return process;
    }

    /// Output and exit status of an inspecting command.
    std::pair<std::string, int> run(const char *command, const std::vector<std::string> &more = {})
    {
        std::vector<std::string> arguments{command, "--database", ledger};
        arguments.insert(arguments.end(), more.begin(), more.end());
        Process process(arguments);
        std::string output = process.read(false);
        return {output, process.end(0)};
    }

    TemporaryDirectory directory;
    std::string ledger = directory / "ledger.db";
    std::string portFile = directory / "port";
    int port = 0;
};

TEST_F(Program, KeepsEverythingItAnsweredThroughKills)
{
    for (int round = 0; round < 3; ++round) {
        auto process = serve();
        std::atomic<int> answered = 0;
        std::thread till([&] {
            Caller caller(port);
            for (int i = 0;; ++i) {
                const std::string basket = std::to_string(round) + "-" + std::to_string(i);
                for (const char *step : {"createOrder", "postOrder", "bindOrderId"})
                    if (caller.call(step, basket).outcome() != "ok")
                        return;
                ++answered;
            }
        });
        while (answered < 5 * (round + 1))
            std::this_thread::yield();
        EXPECT_EQ(process->end(SIGKILL), -SIGKILL);
        till.join();

        EXPECT_EQ(run("check").second, 0) << run("check").first;
        const Json kept = Json::parse(run("ledger", {"--json"}).first);
        for (int i = 0; i < answered; ++i) {
            const std::string basket = std::to_string(round) + "-" + std::to_string(i);
            const auto &orders = kept["orders"];
            const auto found =
                std::find_if(orders.begin(), orders.end(), [&](const Json &each) { return each["basket"] == basket; });
            ASSERT_NE(found, orders.end()) << basket;
            EXPECT_EQ((*found)["state"], "bound") << basket;
        }
    }
}

TEST_F(Program, FinishesRunningRequestsOnSigterm)
{
    auto process = serve();
    Caller caller(port);
    caller.send("/sim/faults", R"({"method": "createOrder", "kind": "delay", "milliseconds": 600000})");
    Received answer;
    std::thread slow([&] { answer = Caller(port).call("createOrder", "b"); });
    while (caller.get("/sim/requests").json()["counts"].empty())
        std::this_thread::yield();
    EXPECT_EQ(process->end(SIGTERM), 0);
    slow.join();
    EXPECT_EQ(answer.outcome(), "ok");
    EXPECT_THAT(run("ledger").first, HasSubstr("created"));
}

TEST_F(Program, PrintsOutboxAndLedgerWhileServing)
{
    auto process = serve();
    struct stat status
    {
    };
    ASSERT_EQ(::stat(ledger.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);

    EXPECT_EQ(run("outbox", {"--code"}).second, 2) << "nothing was sent yet";
    Caller caller(port);
    for (const char *text : {"Код 1111", "Код 2222"})
        caller.send(std::string(Api::messagePath) + "send",
                    Json({{"brand", "K"}, {"phone", "+79001234567"}, {"text", text}, {"channel", "sms"}}).dump());
    EXPECT_EQ(run("outbox", {"--phone", "+79001234567", "--code"}).first, "2222\n");
    EXPECT_EQ(run("outbox").first, "Код 1111\nКод 2222\n");
    EXPECT_EQ(run("outbox", {"--phone", "+79990000000"}).first, "");
    EXPECT_THAT(run("ledger").first, HasSubstr("Иванова"));
}

TEST_F(Program, LeavesForeignFilesAlone)
{
    std::ofstream(ledger) << "something else entirely, long enough to be looked at";
    EXPECT_EQ(run("serve").second, 2);
    EXPECT_EQ(run("ledger").second, 2);
    std::filesystem::remove(ledger);
    SQLite::Database(ledger, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec("CREATE TABLE other (x)");
    EXPECT_EQ(run("serve").second, 2);
    EXPECT_EQ(run("check").second, 2);
}

} // namespace

} // namespace sim
