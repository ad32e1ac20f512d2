// The open check on disk: it comes back as it was, whatever happens while it is written.
#include "tests/support/checkbuilder.h"
#include "tests/support/file.h"

#include <core/basicexception.h>
#include <core/serder.h>
#include <document/documentbonusrecord.h>
#include <document/documentstore.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QJsonArray>
#include <QtCore/QTemporaryDir>

#include <csignal>
#include <filesystem>

using namespace Qt::Literals::StringLiterals;
using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

namespace {

int steps = 0;
int failingStep = 0;

} // namespace

// These two replace the system's, so that each step on the way to the disk can fail.
extern "C" Q_DECL_EXPORT int fsync(int)
{
    errno = EIO;
    return ++steps == failingStep ? -1 : 0;
}

extern "C" Q_DECL_EXPORT int rename(const char *from, const char *to) noexcept
{
    errno = EIO;
    return ++steps == failingStep ? -1 : ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace {

class DocumentStoreTest : public testing::Test
{
protected:
    ~DocumentStoreTest() override { failingStep = 0; }

    static auto permissionsOf(const QString &path) { return std::filesystem::status(path.toStdString()).permissions(); }

    QTemporaryDir temporary;
    const QString folder = temporary.filePath(u"data/till"_s);
    const DocumentStore store{folder};
    const QString file = store.openCheckFile();
};

const QDateTime moment(QDate(2024, 3, 1), QTime(12, 30, 15, 250));

const QJsonObject order{{u"basket"_s, u"order-1"_s},
                        {u"sum"_s, 0.1},
                        {u"whole"_s, 5.0},
                        {u"lines"_s, QJsonArray{QJsonObject{{u"lineID"_s, u"1"_s}}}}};

QSharedPointer<SaleDocument> fullCheck()
{
    const auto check = builder::check({10000, 30'000'000'000});
    const auto last = check->getGoodsItems().last();
    last->setCampaignLabels({u"NOSPEND"_s});
    last->setAllowBonusEarn(false);
    last->getTmc()->setPriceSourceType(EPriceSourceType::Promotion);
    check->addCard(builder::card(u"another"_s));
    const auto client = QSharedPointer<Client>::create();
    client->setName(u"Иванова Анна "_s);
    client->setBirthday({1990, 5, 17});
    client->setSex(Client::Sex::Female);
    const auto card = builder::card(u"2600001"_s, 26);
    card->getCard()->setClient(client);
    card->setOperationId(u"order-1"_s);
    card->setOperationInfo(order);
    card->setPointsForSpend(150.25);
    card->setPointsForEarn(5.0);
    card->setBonusBalance(1000.25);
    card->setExtendedOptions(QVariantMap{{u"loyaltyStatus"_s, QJsonValue(u"Gold"_s)}});
    check->addCard(card);
    const auto points = builder::shares({{1, 33.33}, {2, 0.0051}}, card);
    points->getTotals()->setDateTime(moment);
    points->getTotals()->setDiscountName(u"Баллы %1 €😀 \"a\\b\"\n\x01\xd800"_s);
    points->getDetails().at(1)->setDateTime(moment.toUTC());
    check->addImpact(points);
    const auto payment = builder::discount(10);
    payment->getTotals()->setValutCode(7);
    payment->getTotals()->setDateTime(QDateTime(moment.date(), moment.time(), Qt::UTC));
    check->addImpact(payment);
    const DocumentBonusRecord record{u"2600001"_s, 12.5, moment, u"cashier 1"_s, 2};
    check->setPluginData(u"loyaltySystem26"_s, {{u"pointsForSpend"_s, 60.5},
                                                {u"rates"_s, QVariantList{1e-7, -1e300, 0.1, 1e15, qint64(1) << 53}},
                                                {u"bonusRecords"_s, QVariant::fromValue(QList{record, record})}});
    return check;
}

/// Totals and shares of all impacts, with every property.
QVariantList detailsOf(const SaleDocument &check)
{
    const auto toMap = [](const QSharedPointer<DocumentImpactDetail> &detail) {
        return serder::gadgetToMap(DocumentImpactDetail::staticMetaObject, detail.data());
    };
    QVariantList impacts;
    for (const auto all = check.getDiscountImpacts(); const auto &impact : all) {
        QVariantList shares;
        for (const auto details = impact->getDetails(); const auto &share : details)
            shares.append(toMap(share));
        const bool bonus = !impact.dynamicCast<BonusImpact>().isNull();
        impacts.append(
            QVariantMap{{u"totals"_s, toMap(impact->getTotals())}, {u"details"_s, shares}, {u"bonus"_s, bonus}});
    }
    return impacts;
}

TEST_F(DocumentStoreTest, BringsBackEverything)
{
    const auto saved = fullCheck();
    EXPECT_FALSE(store.restore());
    store.save(*saved);
    for (const char *value :
         {"NOSPEND", "\"priceSourceType\":5", "\"allowBonusEarn\":false", "Иванова Анна ", "1990-05-17", "\"sex\":1",
          "order-1", "lineID", "150.25", "1000.25", "Gold", "Баллы %1", "2024-03-01T12:30:15.250\"",
          "2024-03-01T12:30:15.250Z\"", "33.33", "\"valutCode\":7", "\"pointsForSpend\":60.5", "\"amount\":12.5"})
        EXPECT_TRUE(readFile(file).contains(value)) << value;
    const auto restored = DocumentStore(folder).restore();
    ASSERT_TRUE(restored);
    EXPECT_EQ(builder::toJson(builder::stored(*restored)).toStdString(),
              builder::toJson(builder::stored(*saved)).toStdString());

    EXPECT_EQ(detailsOf(*restored), detailsOf(*saved));

    EXPECT_EQ(restored->getDiscountSum().kopecks(), 3333 + 1 + 1000);
    EXPECT_EQ(restored->findGoodsItem(1)->getTotal(), saved->findGoodsItem(1)->getTotal());
    const auto card = restored->getCardRecords().at(1);
    EXPECT_EQ(card->getOperationInfo().toJsonObject(), order);
    EXPECT_EQ(card->getPointsForEarn().typeId(), QMetaType::Double);
    EXPECT_FALSE(restored->getCardRecords().at(0)->getCard()->getClient());
    const auto impacts = restored->getDiscountImpacts();
    EXPECT_EQ(impacts.at(0)->getTotals()->getValutCode(), QVariant());
    EXPECT_EQ(impacts.at(0)->getDetails().at(1)->getCardRecord(), card);
    EXPECT_TRUE(impacts.at(1).dynamicCast<BonusImpact>());
    EXPECT_FALSE(impacts.at(1)->getCardRecord());
    store.remove();
    EXPECT_FALSE(store.restore());
}

TEST_F(DocumentStoreTest, KeepsOthersOutWhateverTheUmask)
{
    const mode_t before = ::umask(0);
    store.save(*fullCheck());
    EXPECT_EQ(permissionsOf(file), std::filesystem::perms(0600));
    EXPECT_EQ(permissionsOf(folder), std::filesystem::perms(0700));
    ::chmod(QFile::encodeName(file).constData(), 0666);
    store.save(*fullCheck());
    ::umask(before);
    EXPECT_EQ(permissionsOf(file), std::filesystem::perms(0600));
}

TEST_F(DocumentStoreTest, KeepsTheOldFileWhenAWriteFails)
{
    store.save(*builder::check({100}));
    const QByteArray before = readFile(file);
    const auto fails = [&](const SaleDocument &check, const char *reason) {
        EXPECT_THAT([&] { store.save(check); },
                    ThrowsMessage<BasicException>(AllOf(HasSubstr("open-check.json"), HasSubstr(reason))));
        EXPECT_EQ(readFile(file), before);
        EXPECT_EQ(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), 1) << "something was left behind";
    };

    // The disk is full: no file grows beyond 64 bytes.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full = {64, limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &full);
    fails(*fullCheck(), "");
    ::setrlimit(RLIMIT_FSIZE, &limit);

    for (const int step : {1, 2}) { // The file is synced and gets its name.
        failingStep = steps + step;
        fails(*fullCheck(), "");
    }

    const auto unstorable = builder::check({100});
    unstorable->setPluginData(u"kvo"_s, {{u"pointer"_s, QVariant::fromValue(static_cast<QObject *>(nullptr))}});
    fails(*unstorable, "QObject");
}

TEST_F(DocumentStoreTest, TellsWhenAChangeOfTheFolderMayNotBeOnTheDisk)
{
    store.save(*fullCheck());
    const auto namesTheFile = ThrowsMessage<BasicException>(HasSubstr("open-check.json"));
    failingStep = steps + 3; // After the two of the file.
    EXPECT_THAT([&] { store.save(*fullCheck()); }, namesTheFile);
    failingStep = steps + 1;
    EXPECT_THAT([&] { store.remove(); }, namesTheFile);
}

TEST_F(DocumentStoreTest, KeepsAndNamesADamagedFile)
{
    const QVariantMap good = builder::stored(*fullCheck());
    const auto with = [&good](const QString &entry, const QVariant &value) {
        QVariantMap bad = good;
        bad.insert(entry, value);
        return builder::toJson(bad);
    };
    QVariantMap line = good.value(u"goods"_s).toList().first().toMap();
    line.insert(u"price"_s, u"100"_s);
    const std::pair<QByteArray, const char *> cases[] = {
        {QByteArray(), "open-check.json"},
        {builder::toJson(good).chopped(20), "open-check.json"},
        {"[1, 2]", "JSON"},
        {with(u"version"_s, 2), "version"},
        {with(u"dateTime"_s, u"yesterday"_s), "dateTime"},
        {with(u"goods"_s, QVariantList{line}), "goods[0]: запись «price»"},
        {with(u"goods"_s, QVariantList()), "impacts"},
    };
    for (const auto &[content, named] : cases) {
        writeFile(file, content);
        EXPECT_THAT([&] { store.restore(); },
                    ThrowsMessage<BasicException>(AllOf(HasSubstr("open-check.json"), HasSubstr(named))));
        EXPECT_EQ(readFile(file), content);
    }
}

} // namespace
