// A check as rows: their layout, what of a check comes back, which rows a change writes, and what is refused.
#include "tests/support/checkbuilder.h"
#include "tests/support/file.h"
#include "tests/support/refusal.h"
#include "tests/support/test.h"

namespace {

TEST(CheckRowsTest, EverythingComesBack)
{
    const auto saved = builder::fullCheck();
    const auto restored = builder::restored(*saved);
    EXPECT_EQ(builder::text(*restored).toStdString(), builder::text(*saved).toStdString());
    EXPECT_EQ(restored->getDiscountSum().kopecks(), 3333 + 1 + 1000);
    EXPECT_EQ(restored->findGoodsItem(1)->getTotal(), saved->findGoodsItem(1)->getTotal());
    const auto card = restored->getCardRecords().at(1);
    EXPECT_EQ(card->getOperationInfo().toJsonObject(), builder::order);
    EXPECT_EQ(card->getPointsForEarn().typeId(), QMetaType::Double);
    EXPECT_FALSE(restored->getCardRecords().at(0)->getCard()->getClient());
    const auto impacts = restored->getDiscountImpacts();
    EXPECT_EQ(impacts.at(0)->getTotals()->getValutCode(), QVariant());
    EXPECT_EQ(impacts.at(0)->getCardRecord(), card);
    EXPECT_EQ(impacts.at(0)->getDetails().at(1)->getCardRecord(), card);
    EXPECT_TRUE(impacts.at(1).dynamicCast<BonusImpact>());
    EXPECT_FALSE(impacts.at(1)->getCardRecord());
}

TEST(CheckRowsTest, HaveTheFormInWhichChecksLieOnTheTills)
{
    const auto check = builder::fullCheck();
    QByteArray stored = readFile(QStringLiteral(KVO_STORED_CHECK));
    stored.replace("IDENTIFIER", check->getIdentifier().toUtf8());
    stored.replace("OPENED", check->getDateTime().toString(Qt::ISODateWithMs).toUtf8());
    EXPECT_EQ(builder::text(*check).toStdString() + '\n', stored.toStdString());
}

TEST(CheckRowsTest, WritesTheRowsThatHaveChanged)
{
    const auto check = builder::fullCheck();
    CheckRows stored;
    stored.update(*check);
    const auto card = check->getCardRecords().at(1);
    const std::tuple<const char *, std::function<void()>, const char *> cases[] = {
        {"nothing", [] {}, ""},
        {"a line more", [&] { check->addGoodsItem(builder::line(500)); }, "goods 3"},
        {"an article's name", [&] { check->findGoodsItem(3)->getTmc()->setName(u"Хлеб"_s); }, "goods 3"},
        {"a customer's name", [&] { card->getCard()->getClient()->setName(u"Анна"_s); }, "card 2"},
        {"a share's name", [&] { check->getDiscountImpacts().at(0)->getDetails().at(0)->setDiscountName(u"x"_s); },
         "impact 1"},
        {"a number", [&] { check->setPluginData(u"loyaltySystem26"_s, u"pointsForSpend"_s, 61.5); },
         "data loyaltySystem26 pointsForSpend"},
        {"a number's type", [&] { check->setPluginData(u"loyaltySystem26"_s, u"pointsForSpend"_s, 60); },
         "data loyaltySystem26 pointsForSpend"},
        {"plugin data goes", [&] { check->setPluginData(u"loyaltySystem26"_s, {}); },
         "-data loyaltySystem26 bonusRecords, -data loyaltySystem26 pointsForSpend, -data loyaltySystem26 rates"},
        {"a line in the middle goes", [&] { check->removeCard(card), check->removeGoodsItem(2); },
         "-card 2, -goods 2, -impact 1, -impact 2, check 0"},
    };
    for (const auto &[label, change, expected] : cases) {
        change();
        const auto [removed, written] = stored.update(*check);
        QStringList names;
        for (const CheckRow &row : removed)
            names.append(u"-"_s + row.kind + u' ' + row.key.toString());
        for (const CheckRow &row : written)
            names.append(row.kind + u' ' + row.key.toString());
        names.sort();
        EXPECT_EQ(names.join(u", "_s), QString::fromUtf8(expected)) << label;
    }
}

/// What reading says of the check with `from` replaced by `to` in one of its rows; without `from`, the row is missing.
/// Empty: it reads.
std::string problemOf(const char *kind, int key, const QByteArray &from, const QByteArray &to)
{
    QList<CheckRow> rows = builder::rows(*builder::fullCheck());
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const CheckRow &one) {
        return one.kind == QLatin1StringView(kind) && one.key == key;
    });
    EXPECT_TRUE(row->content.contains(from)) << from.toStdString();
    if (from.isEmpty())
        rows.erase(row);
    else
        row->content.replace(from, to);
    return refusalOf([&] { CheckRows().read(rows); }).toStdString();
}

TEST(CheckRowsTest, WhatIsOutsideItsLimitsIsRefusedByRowAndField)
{
    const std::tuple<const char *, int, QByteArray, const char *, QByteArrayList, QByteArrayList> cases[] = {
        {"goods", 1, "\"quantity\":1", "«quantity»", {"0.5", "1000000"}, {"0", "-1", "1000001", "\"1\""}},
        {"goods", 1, "\"price\":10000", "«price»", {"5000"}, {"-1", "\"100\"", "100.5", "null"}},
        {"goods", 2, "\"minPrice\":0", "«tmc.minPrice»", {"1"}, {"-1"}},
        {"goods", 2, "\"priceSourceType\":5", "«tmc.priceSourceType»", {"0"}, {"-1", "6", "1.5", "4294967296"}},
        {"goods", 2, "\"allowDiscount\":true", "«allowDiscount»", {"false"}, {"1"}},
        {"goods", 2, "\"campaignLabels\":[\"NOSPEND\"]", "«campaignLabels»", {"[]"}, {"\"NOSPEND\""}},
        {"goods", 1, "\"posnum\":1", "«posnum»", {}, {"0"}},
        {"impact", 2, "\"discountSum\":10", "«totals.discountSum»", {}, {"-10", "1e308"}},
        {"impact", 2, "\"givenSum\":10", "«totals.givenSum»", {"1000000000000"}, {"-1", "1e308"}},
        {"impact", 1, "\"discountType\":0", "«totals.discountType»", {"5"}, {"-1", "6"}},
        {"impact", 1, "\"discountMode\":0", "«totals.discountMode»", {"6"}, {"-1", "7"}},
        {"impact", 1, "\"discountObject\":0", "«totals.discountObject»", {"1"}, {"-1", "2"}},
        {"impact", 1, "\"impactSource\":0", "«totals.impactSource»", {"3"}, {"-1", "4"}},
        {"impact", 1, "\"bonus\":false", "«bonus»", {"true"}, {"0"}},
        {"impact", 1, "\"dateTime\":\"2024-03-01T12:30:15.250\"", "«totals.dateTime»", {"\"\""}, {"\"no\"", "5"}},
        {"card", 2, "\"sex\":1", "«card.client.sex»", {"0"}, {"-1", "2", "true"}},
        {"card", 2, "\"birthday\":\"1990-05-17\"", "«card.client.birthday»", {"\"\""}, {"\"17.05.1990\"", "1990"}},
        {"card", 2, "\"operationId\":\"order-1\"", "«operationId»", {"\"\""}, {"1"}},
        {"card", 2, "\"pointsForSpend\":150.25", "«pointsForSpend»", {"0"}, {"-1", "1e300", "true"}},
        {"card", 2, "\"pointsForEarn\":5", "«pointsForEarn»", {"null"}, {"-1", "\"5\""}},
        {"check", 0, "\"type\":1", "«type»", {"2", "25"}, {"0", "3"}},
        {"check", 0, "\"state\":0", "«state»", {"1", "2"}, {"-1", "3"}},
        {"check", 0, "\"lastRemovedPosnum\":0", "«lastRemovedPosnum»", {"3"}, {"-1"}},
        {"check", 0, "\"lastCardCode\":2", "«lastCardCode»", {"3"}, {"-1"}},
    };
    for (const auto &[kind, key, from, field, good, bad] : cases) {
        SCOPED_TRACE(field);
        const QByteArray start = from.first(from.indexOf(':') + 1);
        for (const QByteArray &value : good)
            EXPECT_EQ(problemOf(kind, key, from, start + value), "") << value.toStdString();
        for (const QByteArray &value : bad)
            EXPECT_THAT(problemOf(kind, key, from, start + value), HasSubstr(field)) << value.toStdString();
    }
}

TEST(CheckRowsTest, RowsThatAreMissingOrContradictEachOtherAreRefused)
{
    const std::tuple<const char *, int, QByteArray, QByteArray, const char *> cases[] = {
        {"card", 2, "\"codeInternal\":2,", "", "«card 2», поле «codeInternal»: ожидается целое число"},
        {"card", 1, "\"card\":{\"client\":null}", "\"card\":null", "«card 1», поле «card»: недопустимое"},
        {"card", 1, "\"card\":{\"client\":null}", "\"card\":{\"client\":7}", "«card.client»: ожидается объект"},
        {"impact", 2, "\"details\":[", "\"details\":7,\"x\":[", "«details»: ожидается список"},
        {"impact", 2, "\"details\":[", "\"details\":[null],\"x\":[", "«details»: ожидается объект"},
        {"goods", 2, "{", "[{", "«goods 2», это не JSON"},
        {"check", 0, "", "", "«check» отсутствует"},
        {"check", 0, "\"identifier\":\"", "\"identifier\":\"\",\"x\":\"", "«check», поле «identifier»"},
        {"goods", 2, "\"posnum\":2", "\"posnum\":1", "строка чека 1"},
        {"goods", 1, "\"price\":10000", "\"price\":3000", "строка чека 1"},
        {"goods", 1, "", "", "скидки строк"},
        {"impact", 2, "", "", ""}, // a check without that impact is a check
    };
    for (const auto &[kind, key, from, to, problem] : cases)
        EXPECT_THAT(problemOf(kind, key, from, to), HasSubstr(problem)) << kind << from.toStdString();
    EXPECT_THROW(CheckRows().read({{u"rest"_s, 1, "{}"}}), BasicException);
    EXPECT_THROW(CheckRows().read({{u"data kvo"_s, u"x"_s, "[1,2]"}}), BasicException);
}

} // namespace
