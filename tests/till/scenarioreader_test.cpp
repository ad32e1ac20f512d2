// Scenario files: complaints that name file and path, amounts to the kopeck, and agreement with the published schema.
#include "till/scenarioreader.h"

#include <core/basicexception.h>

#include <gmock/gmock.h>

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;
using testing::HasSubstr;

namespace {

class ScenarioReader : public testing::Test
{
protected:
    till::Scenario read(const QByteArray &json)
    {
        QFile file(folder.filePath(u"sale.json"_s));
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(json) == json.size());
        file.close();
        return till::readScenario(file.fileName());
    }

    std::string complaint(const QByteArray &json)
    {
        try {
            read(json);
        } catch (const BasicException &error) {
            return error.what();
        }
        return "no complaint";
    }

    QTemporaryDir folder;
};

/// A file with one check that has the given goods, steps or expectation.
QByteArray withGoods(const QByteArray &goods)
{
    return R"({"checks": [{"goods": [)" + goods + R"(], "steps": []}]})";
}

QByteArray withSteps(const QByteArray &steps)
{
    return R"({"checks": [{"steps": [)" + steps + "]}]}";
}

TEST_F(ScenarioReader, NamesFileAndPathOfWhatItRefuses)
{
    const QByteArray goods = R"({"barcode": "1", "name": "A", "price": 1)";
    const struct
    {
        QByteArray json;
        const char *complaint;
    } cases[]{
        {"{\n\"checks\": [}", "sale.json: строка 2: не JSON"},
        {"[]", "sale.json: /: нужен объект"},
        {"{}", "sale.json: /: нет обязательного ключа \"checks\""},
        {R"({"checks": {}})", "sale.json: /checks: нужен массив"},
        {R"({"checks": [{}]})", "sale.json: /checks/0: нет обязательного ключа \"steps\""},
        {R"({"checks": [{"steps": [], "expects": {}}]})", "sale.json: /checks/0/expects: неизвестный ключ"},
        {R"({"checks": [{"steps": [], "continue": "yes"}]})", "sale.json: /checks/0/continue: нужно true или false"},
        {withGoods(R"({"barcode": "1", "name": "A"})"), "/checks/0/goods/0: нет обязательного ключа \"price\""},
        {withGoods(goods + R"(, "quantity": 0})"), "/checks/0/goods/0/quantity: нужно количество"},
        {withGoods(goods + R"(, "quantity": 0.0005})"), "/checks/0/goods/0/quantity: нужно количество"},
        {withGoods(goods + R"(, "labels": ["NOSPEND", ""]})"), "/checks/0/goods/0/labels/1: строка не может"},
        {withSteps(R"("close", "spend")"), "/checks/0/steps/1: чек уже закрыт"},
        {withSteps(R"("clse")"), "/checks/0/steps/0: \"clse\" не подходит"},
        {withSteps(R"("card")"), "/checks/0/steps/0: \"card\" не подходит"},
        {withSteps(R"({"card": "1", "phone": "2"})"), "/checks/0/steps/0: нужен ровно один ключ"},
        {withSteps(R"({"change": {"line": 1}})"), "/checks/0/steps/0/change: нужно \"quantity\" или \"price\""},
        {withSteps(R"({"remove": 1.5})"), "/checks/0/steps/0/remove: нужно целое число"},
        {R"({"checks": [{"steps": [], "answers": {"dialogs": ["later"]}}]})", "/checks/0/answers/dialogs/0: \"later\""},
        {R"({"checks": [{"steps": [], "expect": {"outcome": "sold"}}]})", "/checks/0/expect/outcome: \"sold\""},
    };
    for (const auto &[json, expected] : cases)
        EXPECT_THAT(complaint(json), HasSubstr(expected)) << json.toStdString();
    EXPECT_THROW(till::readScenario(folder.filePath(u"none.json"_s)), BasicException);
}

TEST_F(ScenarioReader, TakesAmountsToTheKopeckOrRefusesThem)
{
    const struct
    {
        const char *price;
        qint64 kopecks; ///< Below 0: refused.
    } cases[]{{"\"45.50\"", 4550}, {"45.5", 4550},   {"\"7\"", 700},        {"0", 0},       {"0.29", 29},
              {"1.15", 115},       {"\"45,5\"", -1}, {"\"45.505\"", -1},    {"45.505", -1}, {"-1", -1},
              {"\"\"", -1},        {"true", -1},     {"\"1000000000\"", -1}};
    for (const auto &[price, kopecks] : cases) {
        const QByteArray json = withGoods(R"({"barcode": "1", "name": "A", "price": )" + QByteArray(price) + "}");
        if (kopecks < 0)
            EXPECT_THAT(complaint(json), HasSubstr("/checks/0/goods/0/price: нужна сумма")) << price;
        else
            EXPECT_EQ(read(json).checks.constFirst().goods.constFirst().price.kopecks(), kopecks) << price;
    }
}

TEST_F(ScenarioReader, KnowsTheKeysOfThePublishedSchema)
{
    QFile file(QStringLiteral(KVO_TILL_SOURCES "/scenario.schema.json"));
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    const QJsonObject schema = QJsonDocument::fromJson(file.readAll()).object();
    const QJsonObject definitions = schema.value(u"$defs"_s).toObject();
    const struct
    {
        QJsonObject object; ///< As described by the schema.
        QByteArray json;    ///< The same object in a file, with a key that nobody knows.
    } cases[]{
        {schema, R"({"?": 0})"},
        {definitions.value(u"check"_s).toObject(), R"({"checks": [{"?": 0}]})"},
        {definitions.value(u"goods"_s).toObject(), withGoods(R"({"?": 0})")},
        {definitions.value(u"step"_s).toObject().value(u"oneOf"_s).toArray().last().toObject(),
         withSteps(R"({"?": 0})")},
        {definitions.value(u"change"_s).toObject(), withSteps(R"({"change": {"?": 0}})")},
        {definitions.value(u"answers"_s).toObject(), R"({"checks": [{"steps": [], "answers": {"?": 0}}]})"},
        {definitions.value(u"expect"_s).toObject(), R"({"checks": [{"steps": [], "expect": {"?": 0}}]})"},
    };
    for (const auto &[object, json] : cases) {
        QStringList known = QString::fromStdString(complaint(json)).section(u"возможны: "_s, 1).split(u", "_s);
        known.sort();
        EXPECT_EQ(known, object.value(u"properties"_s).toObject().keys()) << json.toStdString();
    }
}

TEST_F(ScenarioReader, ReadsTheSampleScenarios)
{
    const QDir samples(QStringLiteral(KVO_TILL_SOURCES "/scenarios"));
    ASSERT_FALSE(samples.entryList({u"*.json"_s}).isEmpty());
    for (const QString &name : samples.entryList({u"*.json"_s}))
        EXPECT_NO_THROW(till::readScenario(samples.filePath(name))) << name.toStdString();
}

} // namespace
