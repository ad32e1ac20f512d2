// The files that the program reads: errors name file, place and field, and a ledger is judged by the exit status.
#include "journal.h"
#include "simulatorfixture.h"

#include <QtCore/QProcess>

#include <fstream>

using namespace Qt::Literals::StringLiterals;

namespace sim {

class Files : public testing::Test
{
protected:
    std::string written(const std::string &text)
    {
        std::ofstream(file) << text;
        return file;
    }

    Folder folder;
    const std::string file = folder / "input.json";
};

TEST_F(Files, NameThePlaceOfAMistake)
{
    const Json customer = Json::parse(R"({"CustAccount": "C-9", "LastName": "Орлов", "FirstName": "Пётр",
        "Phone": "+79112223344", "Cards": ["1"], "Balance": "10.50", "Tiers": [{"Name": "A", "Discount": 4}]})");
    const auto names = [](const char *place, const char *field) {
        return ThrowsMessage<std::runtime_error>(AllOf(HasSubstr(place), HasSubstr(field)));
    };
    const std::pair<const char *, const char *> customers[] = {
        {R"({"Phone": "79112223344"})", "[0].Phone: expected a number like"},
        {R"({"LastName": ""})", "[0].LastName: must not be empty"},
        {R"({"Ballance": "1.00"})", "[0].Ballance: unknown field"},
        {R"({"Balance": "-1.00"})", "[0].Balance: expected a sum from 0.00 to 999999999999.99"},
        {R"({"Balance": "1e3"})", "[0].Balance"},
        {R"({"Balance": "1000000000000.00"})", "[0].Balance"},
        {R"({"Gender": 3})", "[0].Gender: expected a whole number in 0..2"},
        {R"({"Cards": ["1", "2", "1"]})", "[0].Cards: 1 occurs twice"},
        {R"({"Cards": []})", "[0].Cards: expected at least one card"},
        {R"({"Tiers": [{"Name": "A"}]})", "[0].Tiers[0].Discount: missing"},
        {R"({"Tiers": [{"Name": "", "Discount": 1}]})", "[0].Tiers[0].Name"},
        {R"({"Tiers": [{"Name": "A", "Discount": 101}]})", "[0].Tiers[0].Discount: expected a whole number in -1..100"},
        {R"({"Tiers": [{"Name": "A", "Discount": -2}]})", "[0].Tiers[0].Discount"},
        {R"({"Tiers": [{"Name": "A", "Discount": 5.5}]})", "[0].Tiers[0].Discount"},
        {R"({"Tiers": [{"Name": "A", "Discount": 18446744073709551615}]})", "[0].Tiers[0].Discount"},
    };
    EXPECT_EQ(readCustomerFile(written(Json{customer}.dump())).size(), 1u);
    for (const auto &[patch, field] : customers) {
        Json wrong = customer;
        wrong.merge_patch(Json::parse(patch));
        EXPECT_THAT([&] { readCustomerFile(written(Json{wrong}.dump())); }, names("input.json: ", field));
    }
    EXPECT_THAT([&] { readCustomerFile(written(Json{customer, customer}.dump())); }, names("[1].CustAccount", "twice"));
    EXPECT_THAT([&] { readCustomerFile(written(R"([{"Balance": NaN}])")); }, names("input.json: ", "line 1"));
    EXPECT_THAT([&] { readJournal(written("{}\n{")); }, names("input.json:1: ", "check"));
}

/// What the program prints when it ends with this status.
static std::string output(const QStringList &arguments, int status = 0)
{
    QProcess program;
    program.start(QStringLiteral(LOYALTY_SIM_PROGRAM), arguments);
    EXPECT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitCode(), status) << arguments.join(u' ').toStdString();
    return program.readAllStandardOutput().toStdString();
}

TEST_F(Files, OfTheProgramTellWhatWasSold)
{
    const auto text = [](const std::string &value) { return QString::fromStdString(value); };
    const QString ledger = text(folder / "ledger.db");
    const auto ask = [&](QStringList arguments, int status = 0) {
        return output(arguments << QStringLiteral("--database") << ledger, status);
    };
    QProcess service;
    service.start(QStringLiteral(LOYALTY_SIM_PROGRAM), {u"serve"_s, u"--database"_s, ledger, u"--user"_s, u"u"_s,
                                                        u"--password"_s, u"p"_s, u"--brand"_s, u"K"_s});
    ASSERT_TRUE(service.waitForReadyRead());
    const QString port = QString::fromUtf8(service.readLine()).trimmed().section(u':', -1);
    QProcess tail;
    tail.start(QStringLiteral(LOYALTY_SIM_PROGRAM), {u"tail"_s, u"--port"_s, port});
    Caller caller(port.toInt());
    for (const char *method : {"createOrder", "postOrder", "bindOrderId", "createOrder"})
        caller.call(method, "b");
    for (const char *phone : {"+7 (900) 123-45-67", "+79990001122"}) {
        const Json message{{"brand", "K"}, {"phone", phone}, {"text", "7 points\nCode 0421."}, {"channel", "sms"}};
        EXPECT_EQ(caller.send(std::string(Api::messagePath) + "send", message.dump()).status, 200);
    }
    EXPECT_EQ(ask({u"outbox"_s, u"--code"_s, u"--phone"_s, u"+79001234567"_s}), "0421\n");
    EXPECT_EQ(ask({u"outbox"_s}), "7 points Code 0421.\n7 points Code 0421.\n");
    EXPECT_EQ(ask({u"outbox"_s, u"--last"_s, u"--phone"_s, u"+79001234568"_s}, 2), "");
    EXPECT_EQ(ask({u"ledger"_s}), R"(ACCOUNT  NAME            PHONE         CARDS                        EARNS  BALANCE
C-0001   Иванова Мария   +79001234567  7770000000001 7770000000018  5 %    1452.50
C-0002   Петров Алексей  +79007654321  7770000000025                3 %    0.00
C-0003   Сидорова Анна   +79161112233  7770000000032                7 %    320.55

BASKET  CARD           STATE  LINE  AMOUNT  POINTS  EARNED  ORDER ID
b       7770000000001  bound  all   100.00  50.00   2.50    check-b
                              1     100.00  50.00
)");
    written(R"({"check": "check-b", "outcome": "closed", "card": "7770000000001", "basket": "b", "spent": "50.00", )"
            R"("earned": "2.50", "lines": [{"lineId": 1, "amount": "100.00", "spent": "50.00"}]})");
    EXPECT_EQ(ask({u"compare"_s, u"--journal"_s, text(file)}),
              R"(CHECK    BASKET  STATE     SUM till  service  SPENT till  service  EARNED till  service
check-b  b       bound     100.00    100.00   50.00       50.00    2.50         2.50     ok
TOTAL            1 orders  100.00    100.00   50.00       50.00    2.50         2.50     all equal
)");
    service.terminate();
    EXPECT_TRUE(service.waitForFinished());
    EXPECT_EQ(service.exitCode(), 0);
    EXPECT_TRUE(tail.waitForFinished());
    EXPECT_THAT(tail.readAllStandardOutput().toStdString(),
                testing::ContainsRegex("^[0-9:.]{12}  createOrder +200 +[0-9.]+ ms  ok\n(.*\n){2}.*"
                                       "createOrder +200 +[0-9.]+ ms  error 102: order b is posted already\n"));
}

TEST_F(Files, TellAGoodLedgerFromABadOneAndFromAForeignFile)
{
    const std::string ledger = folder / "ledger.db";
    const auto ask = [&ledger](const char *command, int status) {
        return output({QString::fromUtf8(command), QStringLiteral("--database"), QString::fromStdString(ledger)},
                      status);
    };
    Database(ledger, Database::Access::Serve).write([](const SQLite::Database &connection) {
        return addCustomers(connection, sampleCustomers());
    });
    EXPECT_EQ(ask("check", 0), "the ledger is consistent\n");
    SQLite::Database(ledger, SQLite::OPEN_READWRITE).exec("UPDATE customers SET balance = balance + 1");
    EXPECT_EQ(ask("check", 1), "customer C-0001: balance 1500.01, movements 1500.00\n"
                               "customer C-0002: balance 0.01, movements 0.00\n"
                               "customer C-0003: balance 320.56, movements 320.55\n");
    SQLite::Database(ledger, SQLite::OPEN_READWRITE).exec("PRAGMA application_id = 1");
    ask("check", 2);
    ask("serve", 2);
}

} // namespace sim
