// A simulator on a free port inside the test process, and the words in which the tests speak to it.
#pragma once

#include "database.h"
#include "http_server.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <concepts>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace sim {

/// The sample customer with two cards, 5 % and a balance of 1500.00.
inline constexpr const char *card = "7770000000001";
inline constexpr const char *secondCard = "7770000000018";
inline constexpr const char *otherCard = "7770000000032";

/// The base of a table's cases: the label, in the test's name and in ctest's list.
struct Case
{
    const char *name;
};

template <std::derived_from<Case> Tested>
void PrintTo(const Tested &tested, std::ostream *out)
{
    *out << tested.name;
}

inline constexpr auto caseName = [](const auto &tested) { return std::string(tested.param.name); };

struct Received
{
    int status = 0; ///< 0: the connection ended without an answer
    std::string text;

    Json json() const { return Json::parse(text, nullptr, false); }
    Json result() const { return json()["result"]; }
    /// "ok", the errorCode, or the HTTP status of any other refusal.
    std::string outcome() const;
};

Json line(int lineId, const char *amount, const Json &changes = Json::object());
/// An order body; the payment discount is the sum of the lines'.
Json order(const std::string &basket, const std::vector<Json> &lines, const char *cardNumber = card);
Json basketBody(const std::string &basket, const char *cardNumber = card);
Json binding(const std::string &basket, const std::string &orderId);

/// Speaks to a simulator over real HTTP with the credentials u:p.
class Caller
{
public:
    explicit Caller(int port);

    Received get(const std::string &target);
    Received post(const std::string &method, const Json &body);
    Received send(const std::string &path, const std::string &body);
    httplib::Client &http() { return m_client; }

    Json ledger() { return get("/sim/ledger").json(); }
    /// Of the sample customer with two cards, as text.
    std::string balance();
    /// Calls "calculateOrder", "createOrder" and so on with the usual body for the basket.
    Received call(const std::string &method, const std::string &basket);

private:
    httplib::Client m_client;
};

class TemporaryDirectory
{
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    std::filesystem::path operator/(const char *name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

class SimulatorTest : public testing::Test
{
protected:
    SimulatorTest();
    ~SimulatorTest() override;

    TemporaryDirectory directory;
    Database database;
    HttpServer server;
    int port;
    std::thread thread;
    Caller caller;
};

} // namespace sim
