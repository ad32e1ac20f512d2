// The files that the program reads: errors name file, place and field, and a ledger is judged by the exit status.
#include "journal.h"
#include "simulatorfixture.h"
#include "tests/support/golden.h"

#include <QtCore/QProcess>

#include <fstream>

namespace sim {

struct Files : testing::Test
{
    std::string written(const std::string &text)
    {
        std::ofstream(file) << text;
        return file;
    }

    QTemporaryDir folder;
    const std::string file = folder.filePath(QStringLiteral("input")).toStdString();
};

TEST_F(Files, NameThePlaceOfAMistake)
{
    const Json customer = Json::parse(R"({"CustAccount": "C-9", "LastName": "Орлов", "FirstName": "Пётр",
        "Phone": "+79112223344", "Cards": ["1"], "Balance": "10.50", "Tiers": [{"Name": "A", "Discount": 4}]})");
    const auto names = [](const char *place, const char *field) {
        return ThrowsMessage<std::runtime_error>(AllOf(HasSubstr(place), HasSubstr(field)));
    };
    EXPECT_EQ(readCustomerFile(written(Json::array({customer}).dump())).size(), 1u);
    expectCases(u"simulator/customers.txt"_s, [&](const QByteArray &patch) {
        Json wrong = customer;
        wrong.merge_patch(Json::parse(patch.toStdString()));
        try {
            readCustomerFile(written(Json::array({wrong}).dump()));
        } catch (const std::runtime_error &error) {
            return QString::fromStdString(error.what());
        }
        return QString();
    });
    EXPECT_THAT([&] { readCustomerFile(written(Json{customer, customer}.dump())); }, names("[1].CustAccount", "twice"));
    EXPECT_THAT([&] { readCustomerFile(written(R"([{"Cards": {}, "Gender": 1, "Gender": 2}])")); },
                names("Gender", "twice"));
    EXPECT_THAT([&] { readCustomerFile(written(R"([{"Balance": NaN}])")); }, names("input: ", "line 1"));
    EXPECT_THAT([&] { readJournal(written("{}\n{")); }, names("input:1: ", "check"));
    const char *const line = R"({"check": "A", "outcome": "closed", "card": "7", "basket": "a", "lines": [], )"
                             R"("spent": "10.00", "earned": "2.43"})";
    const JournalCheck check = readJournal(written(line))["A"];
    EXPECT_EQ(std::tuple(check.closed, check.card, check.basket, check.spent, check.earned),
              std::tuple(true, "7", "a", 1000, 243));
}

TEST_F(Files, TellAGoodLedgerFromABadOneAndFromAForeignFile)
{
    const auto status = [this](const QString &command, const QStringList &more = {}) {
        const QStringList arguments{command, QStringLiteral("--database"), QString::fromStdString(file)};
        return QProcess::execute(QStringLiteral(LOYALTY_SIM_PROGRAM), arguments + more);
    };
    const QString config = folder.filePath(QStringLiteral("till.ini"));
    std::ofstream(config.toStdString()) << "[Kvo]";
    EXPECT_EQ(status(QStringLiteral("serve"), {QStringLiteral("--port-file"), config}), 2);
    EXPECT_TRUE(QFile::exists(config));
    Database(file, Database::Access::Serve).write([](const SQLite::Database &connection) {
        return addCustomers(connection, sampleCustomers());
    });
    EXPECT_EQ(status(QStringLiteral("check")), 0);
    EXPECT_EQ(std::pair(status(QStringLiteral("--version")), status(QStringLiteral("chek"))), std::pair(0, 2));
    SQLite::Database(file, SQLite::OPEN_READWRITE).exec("UPDATE customers SET balance = balance + 1");
    EXPECT_EQ(status(QStringLiteral("check")), 1);
    SQLite::Database(file, SQLite::OPEN_READWRITE).exec("PRAGMA application_id = 1");
    EXPECT_EQ(status(QStringLiteral("check")), 2);
    constexpr auto mode = std::filesystem::perms(0640);
    std::filesystem::permissions(file, mode);
    EXPECT_EQ(status(QStringLiteral("serve")), 2);
    EXPECT_EQ(std::filesystem::status(file).permissions(), mode);
}

} // namespace sim
