// The open check on disk: it comes back as it was, whatever happens while it is written.
#include "checkbuilder.h"

#include <core/basicexception.h>
#include <document/documentbonusrecord.h>
#include <document/documentstore.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QTemporaryDir>

#include <csignal>
#include <random>

using namespace Qt::Literals::StringLiterals;

namespace {

class DocumentStoreTest : public testing::Test
{
protected:
    void writeRaw(const QByteArray &content)
    {
        QDir().mkpath(QFileInfo(file).path());
        QFile raw(file);
        ASSERT_TRUE(raw.open(QFile::WriteOnly) && raw.write(content) == content.size());
    }

    QByteArray readRaw()
    {
        QFile raw(file);
        return raw.open(QFile::ReadOnly) ? raw.readAll() : QByteArray();
    }

    // The message of the exception that `action` throws, in UTF-8.
    template <class Action>
    static std::string errorOf(Action action)
    {
        try {
            action();
        } catch (const BasicException &error) {
            return error.what();
        }
        return "nothing was thrown";
    }

    static mode_t modeOf(const QString &path)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
        return status.st_mode & 0777;
    }

    QTemporaryDir temporary;
    const QString folder = temporary.filePath(u"data/till"_s);
    const DocumentStore store{folder};
    const QString file = store.openCheckFile();
};

QSharedPointer<DocumentCardRecord> fullCard()
{
    const auto client = QSharedPointer<Client>::create();
    client->setIdClient(u"A-17"_s);
    client->setName(u"Иванова Анна "_s);
    client->setBirthday({1990, 5, 17});
    client->setSex(Client::Sex::Female);
    client->setEmail(u"anna@example.org"_s);
    client->setPhoneNumber(u"79990001122"_s);
    const auto card = builder::card(u"2600001"_s, 26);
    card->getCard()->setClient(client);
    card->setOperationId(u"order-1"_s);
    card->setOperationInfo(QJsonObject{{u"basket"_s, u"order-1"_s},
                                       {u"qty"_s, 3},
                                       {u"sum"_s, 0.1},
                                       {u"whole"_s, 5.0},
                                       {u"flag"_s, true},
                                       {u"lines"_s, QJsonArray{QJsonObject{{u"lineID"_s, u"1"_s}}}}});
    card->setPointsForSpend(150.5);
    card->setPointsForEarn(5.0);
    card->setBonusBalance(1000.25);
    card->setExtendedOptions(
        QVariantMap{{u"loyaltyStatus"_s, QJsonValue(u"Gold"_s)}, {u"loyaltyTier"_s, QJsonValue(5)}});
    return card;
}

const QDateTime moment(QDate(2024, 3, 1), QTime(12, 30, 15, 250));

QSharedPointer<SaleDocument> fullCheck()
{
    const auto check = builder::check({10000, 25050});
    check->getGoodsItems().last()->setCampaignLabels({u"NOSPEND"_s});
    check->getGoodsItems().last()->setAllowBonusEarn(false);
    check->getGoodsItems().last()->getTmc()->setPriceSourceType(EPriceSourceType::Promotion);
    const auto card = fullCard();
    check->addCard(builder::card(u"another"_s));
    check->addCard(card);
    const auto totals = builder::totals(0, card);
    totals->setDateTime(moment);
    totals->setDiscountType(EDiscountType::Bonus);
    totals->setDiscountName(u"Баллы %1"_s);
    totals->setDiscountRate(150.5);
    const auto impact = QSharedPointer<BonusImpact>::create(totals);
    impact->addDetailForPosition(1, 33.33);
    impact->addDetailForPosition(2, 0.0051);
    check->addImpact(impact);
    const auto payment = builder::discount(10);
    payment->getTotals()->setValutCode(7);
    check->addImpact(payment);
    const DocumentBonusRecord record{u"2600001"_s, 12.5, moment, u"cashier 1"_s, 2};
    check->setPluginData(u"loyaltySystem26"_s, {{u"pointsForSpend"_s, 150.5},
                                                {u"orderCreated"_s, true},
                                                {u"bonusRecords"_s, QVariant::fromValue(QList{record, record})},
                                                {u"impact"_s, QVariant::fromValue(*totals)}});
    return check;
}

TEST_F(DocumentStoreTest, BringsBackEverything)
{
    const auto saved = fullCheck();
    EXPECT_FALSE(store.restore());
    store.save(*saved);
    const auto restored = DocumentStore(folder).restore();
    ASSERT_TRUE(restored);
    store.remove();
    EXPECT_FALSE(store.restore());

    EXPECT_EQ(builder::toJson(restored->toMap()).toStdString(), builder::toJson(saved->toMap()).toStdString());
    EXPECT_EQ(restored->getDateTime(), saved->getDateTime());
    EXPECT_EQ(restored->getDiscountSum().kopecks(), 3333 + 1 + 1000);
    EXPECT_EQ(restored->findGoodsItem(1)->getTotal(), saved->findGoodsItem(1)->getTotal());
    EXPECT_EQ(restored->findGoodsItem(2)->getTmc()->getPriceSourceType(), EPriceSourceType::Promotion);
    EXPECT_TRUE(restored->findGoodsItem(2)->getCampaignLabels().contains(QVariant(u"NOSPEND"_s)));

    const auto card = restored->getCardRecords().at(1);
    const auto before = saved->getCardRecords().at(1);
    EXPECT_EQ(card->getOperationId(), before->getOperationId());
    EXPECT_EQ(card->getOperationInfo().toMap(), before->getOperationInfo().toMap());
    EXPECT_EQ(card->getOperationInfo().toJsonObject(), before->getOperationInfo().toJsonObject());
    EXPECT_EQ(card->getPointsForEarn(), QVariant(5.0));
    EXPECT_EQ(card->getExtendedOptions().toMap().value(u"loyaltyStatus"_s), QVariant(u"Gold"_s));
    const auto client = card->getCard()->getClient();
    EXPECT_EQ(client->getName(), u"Иванова Анна "_s);
    EXPECT_EQ(client->getBirthday(), QDate(1990, 5, 17));
    EXPECT_EQ(client->getSex(), Client::Sex::Female);
    EXPECT_TRUE(restored->getCardRecords().at(0)->getOperationInfo().isNull());
    EXPECT_FALSE(restored->getCardRecords().at(0)->getCard()->getClient());
}

TEST_F(DocumentStoreTest, BringsBackImpactsWithTheirCards)
{
    store.save(*fullCheck());
    const auto restored = store.restore();
    const auto impacts = restored->getDiscountImpacts();
    ASSERT_EQ(impacts.size(), 2);
    const auto card = restored->getCardRecords().at(1);
    EXPECT_TRUE(impacts[0].dynamicCast<BonusImpact>());
    EXPECT_EQ(impacts[0]->getTotals()->getDateTime(), moment);
    EXPECT_EQ(impacts[0]->getTotals()->getDiscountRate(), QVariant(150.5));
    EXPECT_EQ(impacts[0]->getTotals()->getDiscountType(), EDiscountType::Bonus);
    EXPECT_EQ(impacts[0]->getTotals()->getValutCode(), QVariant());
    EXPECT_EQ(impacts[0]->getCardRecord(), card);
    for (const auto details = impacts[0]->getDetails(); const auto &share : details)
        EXPECT_EQ(share->getCardRecord(), card);
    EXPECT_FALSE(impacts[1]->getCardRecord());
    EXPECT_EQ(impacts[1]->getTotals()->getValutCode(), QVariant(7));
    restored->removeCard(card);
    EXPECT_EQ(restored->getDiscountSum().kopecks(), 1000);
}

TEST_F(DocumentStoreTest, BringsBackPluginDataAsPlainMapsAndLists)
{
    store.save(*fullCheck());
    const QVariantMap data = store.restore()->getPluginData(u"loyaltySystem26"_s);
    EXPECT_EQ(data.value(u"pointsForSpend"_s), QVariant(150.5));
    EXPECT_EQ(data.value(u"orderCreated"_s), QVariant(true));
    const QVariantList records = data.value(u"bonusRecords"_s).toList();
    ASSERT_EQ(records.size(), 2);
    EXPECT_EQ(records[1].toMap().value(u"amount"_s), QVariant(12.5));
    EXPECT_EQ(records[1].toMap().value(u"position"_s), QVariant(2));
    EXPECT_EQ(records[1].toMap().value(u"dateTime"_s).toDateTime(), moment);
    EXPECT_EQ(data.value(u"impact"_s).toMap().value(u"discountName"_s), QVariant(u"Баллы %1"_s));
}

TEST_F(DocumentStoreTest, KeepsOthersOutWhateverTheUmask)
{
    const mode_t before = ::umask(0);
    store.save(*fullCheck());
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(folder), 0700U);
    ::chmod(QFile::encodeName(file).constData(), 0666);
    store.save(*fullCheck());
    ::umask(before);
    EXPECT_EQ(modeOf(file), 0600U);
}

TEST_F(DocumentStoreTest, KeepsTheOldFileWhenAWriteFails)
{
    store.save(*builder::check({100}));
    const QByteArray before = readRaw();

    // The disk is full: no file grows beyond 64 bytes.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full = {64, limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &full);
    const std::string error = errorOf([&] { store.save(*fullCheck()); });
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_THAT(error, testing::HasSubstr("open-check.json"));

    const auto unstorable = builder::check({100});
    unstorable->setPluginData(u"kvo"_s, {{u"pointer"_s, QVariant::fromValue(static_cast<QObject *>(nullptr))}});
    EXPECT_THAT(errorOf([&] { store.save(*unstorable); }),
                testing::AllOf(testing::HasSubstr("open-check.json"), testing::HasSubstr("QObject")));

    EXPECT_EQ(readRaw(), before);
    EXPECT_EQ(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), 1) << "a half-written file was left behind";
}

TEST_F(DocumentStoreTest, KeepsAndNamesADamagedFile)
{
    QVariantMap good = builder::throughJson(fullCheck()->toMap());
    const auto with = [&good](const QString &entry, const QVariant &value) {
        QVariantMap bad = good;
        if (value.isValid())
            bad.insert(entry, value);
        else
            bad.remove(entry);
        return builder::toJson(bad);
    };
    QVariantMap line = good.value(u"goods"_s).toList().first().toMap();
    line.insert(u"price"_s, u"100"_s);
    QVariantMap impact = good.value(u"impacts"_s).toList().first().toMap();
    impact.insert(u"details"_s, QVariantList());
    struct
    {
        QByteArray content;
        const char *named;
    } const cases[] = {
        {QByteArray(), "open-check.json"},
        {builder::toJson(good).chopped(20), "open-check.json"},
        {"[1, 2]", "JSON"},
        {"SQLite format 3", "open-check.json"},
        {with(u"version"_s, 2), "version"},
        {with(u"identifier"_s, {}), "identifier"},
        {with(u"dateTime"_s, u"yesterday"_s), "dateTime"},
        {with(u"lastPosnum"_s, 1.5), "lastPosnum"},
        {with(u"cards"_s, QVariantMap()), "cards"},
        {with(u"goods"_s, QVariantList{line}), "goods[0]: запись «price»"},
        {with(u"goods"_s, QVariantList()), "impacts"},
        {with(u"impacts"_s, QVariantList{impact}), "impacts"},
    };
    for (const auto &[content, named] : cases) {
        SCOPED_TRACE(named);
        writeRaw(content);
        EXPECT_THAT(errorOf([&] { store.restore(); }),
                    testing::AllOf(testing::HasSubstr("open-check.json"), testing::HasSubstr(named)));
        EXPECT_EQ(readRaw(), content);
    }
}

TEST_F(DocumentStoreTest, SurvivesAKillAtAnyInstant)
{
    std::mt19937 random(std::random_device{}());
    for (int round = 0; round < 8; ++round) {
        int saved[2];
        ASSERT_EQ(::pipe(saved), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            SaleDocument check;
            for (;;) {
                check.addGoodsItem(builder::line(100));
                store.save(check);
                if (::write(saved[1], "x", 1) != 1)
                    ::_exit(1);
            }
        }
        const int lines = std::uniform_int_distribution(1, 40)(random);
        char mark = 0;
        for (int i = 0; i < lines; ++i)
            ASSERT_EQ(::read(saved[0], &mark, 1), 1);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ::close(saved[0]);
        ::close(saved[1]);
        const auto restored = store.restore();
        ASSERT_TRUE(restored);
        EXPECT_GE(restored->getGoodsItems().size(), lines) << "a check whose save() had returned is lost";
    }
}

} // namespace
