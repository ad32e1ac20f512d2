// Scenario files and catalogues: complaints that name file and path, and amounts to the kopeck.
#include "tests/support/file.h"
#include "tests/support/refusal.h"
#include "tests/support/test.h"
#include "till/catalogue.h"
#include "till/scenarioreader.h"

namespace {

struct ScenarioReader : testing::Test
{
    /// What a scenario, or a catalogue, is refused with; empty when it is accepted.
    std::string complaint(const QByteArray &json)
    {
        writeFile(file, json);
        const bool isCatalogue = json.startsWith(R"({"goods")");
        const auto read = [&] {
            isCatalogue ? void(till::Catalogue(file)) : void(scenario = till::readScenario(file));
        };
        return refusalOf(read).toStdString();
    }

    till::Scenario scenario; ///< The last one that was accepted.
    QTemporaryDir folder;
    const QString file = folder.filePath(u"sale.json"_s);
};

/// A file with one check that has these keys and no steps, unless they are among them.
QByteArray check(const QByteArray &keys)
{
    return R"({"checks": [{)" + keys + (keys.contains("steps") ? "}]}" : R"(, "steps": []}]})");
}

TEST_F(ScenarioReader, NamesFileAndPathOfWhatItRefuses)
{
    const QByteArray goods = R"({"barcode": "1", "name": "A", "price": 1)";
    const std::pair<QByteArray, const char *> cases[]{
        {"{\n\"checks\": [}", "sale.json: строка 2: не JSON"},
        {check("\"open\": [],\n\"steps\": [{\"a\": \"\\\":{\"}, {\"a\": 1}], \"steps\": []"),
         "строка 2: ключ \"steps\" задан"},
        {"{}", "sale.json: /: нет обязательного ключа \"checks\""},
        {check(R"("expects": {})"), "sale.json: /checks/0/expects: неизвестный ключ"},
        {check(R"("goods": [{"barcode": "1", "name": "A"}])"), "/checks/0/goods/0: нет обязательного ключа \"price\""},
        {check(R"("goods": [)" + goods + R"(, "quantity": 0}])"), "/checks/0/goods/0/quantity: нужно количество"},
        {check(R"("steps": ["close", "spend"])"), "/checks/0/steps/1: чек уже закрыт"},
        {check(R"("steps": [{"card": "1", "phone": "2"}])"), "/checks/0/steps/0: нужен ровно один ключ"},
        {check(R"("steps": [{"change": {"line": 1}}])"), "/checks/0/steps/0/change: нужно \"quantity\" или \"price\""},
        {check(R"("answers": {"dialogs": ["later"]})"), "/dialogs/0: \"later\" не подходит; возможны: retry, "},
        {R"({"goods": [)" + goods + "}, " + goods + "}]}", "sale.json: /goods/1/barcode: штрихкод 1 уже есть"},
        {R"({"goods": [)" + goods + R"(, "quantity": 2}]})", "/goods/0/quantity: в справочнике"},
    };
    for (const auto &[json, expected] : cases)
        EXPECT_THAT(complaint(json), HasSubstr(expected)) << json.toStdString();
    EXPECT_THROW(till::readScenario(u"none.json"_s), BasicException);
}

TEST_F(ScenarioReader, TakesAmountsToTheKopeckOrRefusesThem)
{
    // A price, and its kopecks; below 0: refused.
    const std::pair<const char *, qint64> cases[]{
        {"\"45.50\"", 4550}, {"45.5", 4550}, {"\"7\"", 700},        {"0", 0},
        {"0.29", 29},        {"1.15", 115},  {"\"45,5\"", -1},      {"\"45.505\"", -1},
        {"45.505", -1},      {"-1", -1},     {"5000.004", -1},      {"999999999.99", 99999999999},
        {"\"\"", -1},        {"true", -1},   {"\"1000000000\"", -1}};
    for (const auto &[price, kopecks] : cases) {
        const std::string said =
            complaint(check(R"("goods": [{"barcode": "1", "name": "A", "price": )" + QByteArray(price) + "}]"));
        EXPECT_EQ(said.empty() ? scenario.checks.at(0).goods.at(0).price.kopecks() : -1, kopecks) << price;
        EXPECT_THAT(said, HasSubstr(kopecks < 0 ? "/checks/0/goods/0/price: нужна сумма" : ""));
    }
}

} // namespace
