// Scenario files and catalogues: complaints that name file and path, and amounts to the kopeck.
#include "tests/support/golden.h"
#include "tests/support/refusal.h"
#include "till/catalogue.h"
#include "till/scenarioreader.h"

namespace {

struct ScenarioReader : testing::Test
{
    /// What a scenario, or a catalogue, is refused with; empty when it is accepted.
    QString complaint(const QByteArray &json)
    {
        writeFile(file, json);
        const bool isCatalogue = json.startsWith(R"({"goods")");
        const auto read = [&] {
            isCatalogue ? void(till::Catalogue(file)) : void(scenario = till::readScenario(file));
        };
        return refusalOf(read);
    }

    till::Scenario scenario; ///< The last one that was accepted.
    QTemporaryDir folder;
    const QString file = folder.filePath(u"sale.json"_s);
};

TEST_F(ScenarioReader, NamesFileAndPathOfWhatItRefuses)
{
    expectCases(u"till/scenarios.txt"_s, [this](const QByteArray &json) { return complaint(json); });
    EXPECT_THROW(till::readScenario(u"none.json"_s), BasicException);
    const till::ScenarioCheck read = scenario.checks.value(0); // The last case is accepted.
    const QMap<QString, QString> &fields = read.expectation.fields;
    EXPECT_EQ(
        (fields.keys() + fields.values()).join(u' '),
        u"balance card customer discount earned outcome spent sum tier total 4.00  c 2.00 6.00 voided 5.00 1.00 t 3.00"_s);
    EXPECT_EQ(read.steps.value(10).wait, std::chrono::minutes(1));
}

TEST_F(ScenarioReader, TakesAmountsToTheKopeckOrRefusesThem)
{
    // A price, and its kopecks; below 0: refused.
    const std::pair<const char *, qint64> cases[]{
        {"\"45.50\"", 4550}, {"45.5", 4550}, {"\"7\"", 700},         {"0", 0},
        {"0.29", 29},        {"1.15", 115},  {"\"45,5\"", -1},       {"\"45.505\"", -1},
        {"45.505", -1},      {"-1", -1},     {"5000.004", -1},       {"999999999.99", 99999999999},
        {"\"\"", -1},        {"true", -1},   {"\"1000000000\"", -1}, {"1000000000", -1}};
    for (const auto &[price, kopecks] : cases) {
        const QString said =
            complaint(R"({"checks": [{"steps": [], "goods": [{"barcode": "1", "name": "A", "price": )" +
                      QByteArray(price) + "}]}]}");
        EXPECT_EQ(said.isEmpty() ? scenario.checks.at(0).goods.at(0).price.kopecks() : -1, kopecks) << price;
        EXPECT_EQ(said.contains(u"/checks/0/goods/0/price: нужна сумма"_s), kopecks < 0) << price;
    }
}

} // namespace
