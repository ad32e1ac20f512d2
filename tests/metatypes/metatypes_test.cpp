// Plugin data on its way through the disk: plain maps and lists there, equal values after the restart.
#include "metatypes/metatypes.h"
#include "plugin/plugin.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/printqt.h"

#include <document/saledocument.h>

#include <gtest/gtest.h>

#include <QtCore/QJsonDocument>
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

const QDateTime moment(QDate(2026, 3, 9), QTime(18, 31, 5, 250));

QSharedPointer<SaleDocument> throughTheDisk(const SaleDocument &document)
{
    const QByteArray file = QJsonDocument(QJsonObject::fromVariantMap(document.toMap())).toJson();
    return SaleDocument::fromMap(QJsonDocument::fromJson(file).object().toVariantMap());
}

QSharedPointer<BonusImpact> fullImpact(const QSharedPointer<DocumentCardRecord> &card)
{
    auto totals = QSharedPointer<DocumentImpactDetail>::create();
    totals->setCardRecord(card);
    totals->setCardIndex(card->getCodeInternal());
    totals->setDateTime(moment);
    totals->setDiscountType(EDiscountType::Bonus);
    totals->setDiscountMode(EDiscountMode::LoyaltySystem);
    totals->setDiscountName(u"Баллы Kvo"_s);
    totals->setDiscountObject(EDiscountObject::Position);
    totals->setPosition(1);
    totals->setDiscountRate(12.34);
    totals->setDiscountSum(12.34);
    totals->setImpactSource(EImpactSource::LoyaltySystem);
    totals->setMinPriceIgnored(true);
    auto impact = QSharedPointer<BonusImpact>::create(totals);
    impact->addDetailForPosition(1, 12.34);
    return impact;
}

} // namespace

TEST(MetaTypes, PluginDataSurvivesARestart)
{
    const QTemporaryDir folder;
    const FakeConfig config({{u"Host:dataFolder"_s, folder.path()}});
    const auto document = QSharedPointer<SaleDocument>::create();
    const auto card = QSharedPointer<DocumentCardRecord>::create();
    StatefulPlugin before;
    card->setLoyaltySystemCode(before.getLoyaltySystemCode());
    document->addCard(card);
    before.setDocument(document);
    before.pointsForSpend = 12.34;
    before.pointsForEarn = 0.1;
    before.orderCreated = true;
    before.bonusImpacts.append(fullImpact(card));
    DocumentBonusRecord record;
    record.cardNumber = u"2000"_s;
    record.amount = 0.1;
    record.dateTime = moment;
    record.userCode = u"17"_s;
    record.position = 1;
    before.bonusRecords = {record, DocumentBonusRecord()};
    before.updatePluginData();

    const auto restored = throughTheDisk(*document);
    StatefulPlugin after;
    after.setDocument(restored);
    ASSERT_TRUE(after.restoreLoyaltySystem());

    EXPECT_EQ(after.pointsForSpend, before.pointsForSpend);
    EXPECT_EQ(after.pointsForEarn, before.pointsForEarn);
    EXPECT_TRUE(after.orderCreated);
    EXPECT_EQ(after.bonusRecords, before.bonusRecords);
    ASSERT_EQ(after.bonusImpacts.size(), 1);
    EXPECT_EQ(after.bonusImpacts[0]->toMap(), before.bonusImpacts[0]->toMap());
    EXPECT_EQ(after.bonusImpacts[0]->getTotals()->getDateTime(), moment);
    EXPECT_EQ(after.bonusImpacts[0]->getDetails()[0]->getDiscountSum(), 12.34);
    EXPECT_EQ(after.bonusImpacts[0]->getCardRecord(), restored->getCardRecords()[0]);
}

TEST(MetaTypes, AreKnownByName)
{
    registerMetaTypes();
    EXPECT_EQ(QMetaType::fromName("Event"), QMetaType::fromType<Event>());
    EXPECT_EQ(QMetaType::fromName("DocumentBonusRecord"), QMetaType::fromType<DocumentBonusRecord>());
    EXPECT_EQ(QMetaType::fromName("BonusImpactPtrList"), QMetaType::fromType<BonusImpactPtrList>());

    const QSharedPointer<AbstractDocument> document = QSharedPointer<SaleDocument>::create();
    EXPECT_EQ(QVariant::fromValue(document).value<QObject *>(), document.get());

    const QVariant records = QVariant::fromValue(QList<DocumentBonusRecord>(2));
    ASSERT_EQ(records.toList().size(), 2);
    EXPECT_TRUE(records.toList()[0].toMap().contains(u"cardNumber"_s));
}

} // namespace kvo
