// Plugin data on its way through the disk: plain maps and lists there, equal values after the restart.
#include "plugin/plugin.h"
#include "tests/support/checkbuilder.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/json.h"

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

class StatefulPlugin : public Plugin
{
public:
    StatefulPlugin() : Plugin(utils::ForMock()) {}
    using Plugin::bonusImpacts;
    using Plugin::bonusRecords;
    using Plugin::orderCreated;
    using Plugin::pointsForEarn;
    using Plugin::pointsForSpend;
};

} // namespace

TEST(MetaTypes, PluginDataSurvivesARestart)
{
    const QTemporaryDir folder;
    const FakeConfig config({{u"Host:dataFolder"_s, folder.path()}});
    const auto document = builder::check({});
    StatefulPlugin before;
    const auto card = builder::card(u"2000"_s, before.getLoyaltySystemCode());
    document->addCard(card);
    before.setDocument(document);
    before.pointsForSpend = 12.34;
    before.pointsForEarn = 0.1;
    before.orderCreated = true;
    before.bonusImpacts =
        before.createBonusImpacts(card, Response(json(R"({"redeemPoints": [{"lineId": 1, "points": 12.34}]})")));
    const QDateTime moment(QDate(2026, 3, 9), QTime(18, 31, 5, 250));
    before.bonusRecords = {{u"2000"_s, 0.1, moment, u"17"_s, 1}, {}};
    before.updatePluginData();

    StatefulPlugin after;
    const auto restored = SaleDocument::fromMap(builder::throughJson(document->toMap()));
    after.setDocument(restored);
    ASSERT_TRUE(after.restoreLoyaltySystem());

    EXPECT_EQ(after.pointsForSpend, before.pointsForSpend);
    EXPECT_EQ(after.pointsForEarn, before.pointsForEarn);
    EXPECT_TRUE(after.orderCreated);
    EXPECT_EQ(after.bonusRecords, before.bonusRecords);
    ASSERT_EQ(after.bonusImpacts.size(), 1);
    EXPECT_EQ(after.bonusImpacts[0]->toMap(), before.bonusImpacts[0]->toMap());
    EXPECT_EQ(after.bonusImpacts[0]->getDetails()[0]->getDiscountSum(), 12.34);
    EXPECT_EQ(after.bonusImpacts[0]->getCardRecord(), restored->getCardRecords()[0]);
}

} // namespace kvo
