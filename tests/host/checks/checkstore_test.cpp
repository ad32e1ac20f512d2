// Checks and journal on disk: they come back as they were, a save costs what has changed, and what cannot be read
// stands in nobody's way.
#include "tests/support/checkbuilder.h"
#include "tests/support/file.h"

#include <checks/checkstore.h>
#include <core/basicexception.h>
#include <document/documentbonusrecord.h>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <QtCore/QJsonArray>
#include <QtCore/QTemporaryDir>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>

#include <csignal>
#include <filesystem>

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::HasSubstr;
using Standing = CheckStore::Standing;

namespace {

class CheckStoreTest : public testing::Test
{
protected:
    /// Runs SQL on the file, as support or a fault might; returns the first column of all rows.
    QStringList sql(const QString &statement) const
    {
        QStringList values;
        {
            QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"test"_s);
            database.setDatabaseName(file);
            QSqlQuery query(database);
            const bool done = database.open() && query.exec(statement);
            EXPECT_TRUE(done) << query.lastError().text().toStdString();
            while (query.next())
                values.append(query.value(0).toString());
        }
        QSqlDatabase::removeDatabase(u"test"_s);
        return values;
    }

    void expectSells(CheckStore &checks)
    {
        const auto next = builder::check({100});
        checks.save(*next);
        EXPECT_EQ(builder::text(*CheckStore(folder).restore()), builder::text(*next));
    }

    static auto permissionsOf(const QString &path) { return std::filesystem::status(path.toStdString()).permissions(); }

    QTemporaryDir temporary;
    const QString folder = temporary.filePath(u"data/till"_s);
    CheckStore store{folder};
    const QString file = store.fileName();
};

const QDateTime moment(QDate(2024, 3, 1), QTime(12, 30, 15, 250));
const QJsonObject order{
    {u"basket"_s, u"order-1"_s}, {u"sum"_s, 0.1}, {u"lines"_s, QJsonArray{QJsonObject{{u"lineID"_s, u"1"_s}}}}};

/// Two lines, two cards, points on both lines, a payment, and plugin data.
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
    points->getTotals()->setDiscountName(u"Баллы %1 €😀 \"a\\b\"\n\x01"_s);
    points->getDetails().at(1)->setDateTime(QDateTime(moment.date(), moment.time(), Qt::UTC));
    check->addImpact(points);
    const auto payment = builder::discount(10);
    payment->getTotals()->setValutCode(7);
    check->addImpact(payment);
    const DocumentBonusRecord record{u"2600001"_s, 12.5, moment, u"cashier 1"_s, 2};
    check->setPluginData(u"loyaltySystem26"_s, {{u"pointsForSpend"_s, 60.5},
                                                {u"rates"_s, QVariantList{1e-7, -1e300, 0.1, 1e15, qint64(1) << 53}},
                                                {u"bonusRecords"_s, QVariant::fromValue(QList{record, record})}});
    return check;
}

TEST_F(CheckStoreTest, BringsBackEverything)
{
    const auto saved = fullCheck();
    CheckStore look(folder, CheckStore::Access::Look);
    EXPECT_FALSE(look.restore() || !look.checks().isEmpty() || !look.journal().isEmpty());
    EXPECT_FALSE(QFile::exists(folder)) << "looking creates nothing";
    EXPECT_FALSE(store.restore());
    store.save(*saved);
    const auto restored = CheckStore(folder).restore();
    ASSERT_TRUE(restored);
    const QByteArray all = builder::text(*restored);
    EXPECT_EQ(all.toStdString(), builder::text(*saved).toStdString());
    for (const char *value :
         {"NOSPEND", "\"priceSourceType\":5", "\"allowBonusEarn\":false", "Иванова Анна ", "1990-05-17", "\"sex\":1",
          "order-1", "lineID", "150.25", "1000.25", "Gold", "Баллы %1", "2024-03-01T12:30:15.250\"",
          "2024-03-01T12:30:15.250Z\"", "33.33", "\"valutCode\":7", "60.5", "\"amount\":12.5"})
        EXPECT_TRUE(all.contains(value)) << value;

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
}

TEST_F(CheckStoreTest, WritesTheRowsThatHaveChanged)
{
    const auto check = fullCheck();
    CheckRows stored;
    stored.update(*check);
    const auto changes = [&] {
        const auto [removed, written] = stored.update(*check);
        QStringList names;
        for (const CheckRow &row : removed)
            names.append(u"-"_s + row.kind + u' ' + row.key.toString());
        for (const CheckRow &row : written)
            names.append(row.kind + u' ' + row.key.toString());
        return names.join(u", "_s).toStdString();
    };
    const auto card = check->getCardRecords().at(1);
    const std::tuple<const char *, std::function<void()>, const char *> cases[] = {
        {"nothing", [] {}, ""},
        {"a line more", [&] { check->addGoodsItem(builder::line(500)); }, "check 0, goods 3"},
        {"an article's name", [&] { check->findGoodsItem(3)->getTmc()->setName(u"Хлеб"_s); }, "goods 3"},
        {"a customer's name", [&] { card->getCard()->getClient()->setName(u"Анна"_s); }, "card 2"},
        {"a share's name", [&] { check->getDiscountImpacts().at(0)->getDetails().at(0)->setDiscountName(u"x"_s); },
         "impact 1"},
        {"a number's type", [&] { check->setPluginData(u"loyaltySystem26"_s, u"pointsForSpend"_s, 60); },
         "data loyaltySystem26 pointsForSpend"},
        {"plugin data goes", [&] { check->setPluginData(u"loyaltySystem26"_s, {}); },
         "-data loyaltySystem26 bonusRecords, -data loyaltySystem26 pointsForSpend, -data loyaltySystem26 rates"},
        {"a line in the middle goes",
         [&] {
             check->removeCard(card);
             check->removeGoodsItem(2);
         },
         "-goods 2, -card 2, -impact 1, -impact 2"},
    };
    for (const auto &[label, change, expected] : cases) {
        change();
        const auto found = changes();
        EXPECT_THAT(QString::fromStdString(found).split(u", "_s),
                    testing::UnorderedElementsAreArray(QString::fromUtf8(expected).split(u", "_s)))
            << label << ": " << found;
    }
}

TEST_F(CheckStoreTest, SavesInProportionToTheChange)
{
    const auto check = builder::check(QList<qint64>(1000, 100));
    store.save(*check);
    const auto logSize = [this] { return QFileInfo(file + u"-wal"_s).size(); };
    const qint64 before = logSize();
    check->addGoodsItem(builder::line(100));
    store.save(*check);
    const qint64 afterLine = logSize();
    EXPECT_LE(afterLine - before, 5 * 4200);
    store.save(*check);
    EXPECT_EQ(logSize(), afterLine) << "nothing has changed";
}

TEST_F(CheckStoreTest, KeepsOthersOutWhateverTheUmask)
{
    const mode_t before = ::umask(0);
    store.save(*fullCheck());
    ::umask(before);
    for (const QString &suffix : {u""_s, u"-wal"_s})
        EXPECT_EQ(permissionsOf(file + suffix), std::filesystem::perms(0600));
    EXPECT_EQ(permissionsOf(folder), std::filesystem::perms(0700));
}

TEST_F(CheckStoreTest, FinishesACheckOnceAndKeepsTheOthers)
{
    const auto parked = fullCheck();
    store.save(*parked);
    const auto check = builder::check({100});
    store.save(*check); // The other one was not finished.
    EXPECT_THROW(store.resume(parked->getIdentifier()), BasicException) << "there is a current check";
    for (int i = 0; i < 2; ++i)
        store.finish(*check, {{u"check"_s, check->getIdentifier()}});
    CheckStore later(folder);
    EXPECT_FALSE(later.restore());
    ASSERT_EQ(later.journal().size(), 1);
    EXPECT_EQ(later.journal().first().entry.value(u"check"_s).toString(), check->getIdentifier());
    EXPECT_TRUE(later.journal(QDateTime::currentDateTime().addSecs(3600)).isEmpty());
    ASSERT_EQ(later.checks().size(), 1);
    EXPECT_EQ(later.checks().first().standing, Standing::Parked);
    EXPECT_EQ(builder::text(*later.resume(parked->getIdentifier())), builder::text(*parked));
    later.park(u"Покупатель отошёл"_s);
    EXPECT_EQ(later.checks().first().reason, u"Покупатель отошёл"_s);
    EXPECT_FALSE(later.restore());
}

TEST_F(CheckStoreTest, KeepsWhatIsStoredWhenTheDiskIsFull)
{
    const auto check = builder::check({100});
    store.save(*check);
    const QByteArray before = builder::text(*check);
    for (int i = 0; i < 200; ++i)
        check->addGoodsItem(builder::line(100));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full = {static_cast<rlim_t>(QFileInfo(file + u"-wal"_s).size() + 8000), limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_THROW(store.save(*check), BasicException);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(builder::text(*CheckStore(folder).restore()), before);
    store.save(*check);
    EXPECT_EQ(builder::text(*CheckStore(folder).restore()), builder::text(*check));

    check->setPluginData(u"kvo"_s, {{u"pointer"_s, QVariant::fromValue(static_cast<QObject *>(nullptr))}});
    EXPECT_THROW(store.save(*check), BasicException);
}

TEST_F(CheckStoreTest, PutsACheckAsideThatCannotBeRead)
{
    const auto set = [](const char *kind, int key, const char *from, const char *to) {
        return u"UPDATE part SET content = replace(CAST(content AS TEXT), '%1', '%2') WHERE kind = '%3' AND key = %4"_s
            .arg(QString::fromUtf8(from), QString::fromUtf8(to), QString::fromUtf8(kind), QString::number(key));
    };
    const std::pair<QString, const char *> cases[] = {
        {set("goods", 1, "\"quantity\":1", "\"quantity\":0"), "«goods 1», поле «quantity»"},
        {set("goods", 1, "\"price\":10000", "\"price\":\"100\""), "«goods 1», поле «price»: ожидается целое"},
        {set("goods", 2, "\"minPrice\":0", "\"minPrice\":-1"), "«goods 2», поле «tmc.minPrice»"},
        {set("impact", 2, "\"discountSum\":10", "\"discountSum\":-10"), "«impact 2», поле «totals.discountSum»"},
        {set("impact", 2, "\"givenSum\":10", "\"givenSum\":1e308"), "«impact 2», поле «totals.givenSum»"},
        {set("impact", 1, "\"discountType\":0", "\"discountType\":77"), "«impact 1», поле «totals.discountType»"},
        {set("card", 2, "\"codeInternal\":2,", ""), "«card 2», поле «codeInternal»"},
        {set("card", 2, "\"sex\":1", "\"sex\":true"), "«card 2», поле «card.client.sex»"},
        {set("check", 0, "\"state\":0", "\"state\":9"), "«check», поле «state»: неизвестное значение 9"},
        {set("check", 0, "dateTime\":\"", "dateTime\":\"x"), "«check», поле «dateTime»"},
        {set("goods", 2, "{", "[{"), "«goods 2», это не JSON"},
        {u"DELETE FROM part WHERE kind = 'check'"_s, "«check» отсутствует"},
        {u"DELETE FROM part WHERE kind = 'impact' AND key = 2"_s, nullptr},
        {u"DELETE FROM part WHERE kind = 'goods' AND key = 1"_s, "скидк"},
    };
    for (const auto &[damage, named] : cases) {
        SCOPED_TRACE(damage.toStdString());
        const auto check = fullCheck();
        store.save(*check);
        sql(damage);
        CheckStore next(folder);
        EXPECT_EQ(next.restore().isNull(), named != nullptr);
        if (!named)
            continue; // a check without that impact is a check
        const auto kept = next.checks().last();
        EXPECT_EQ(kept.standing, Standing::Unreadable);
        EXPECT_THAT(kept.reason.toStdString(), HasSubstr(named));
        EXPECT_THAT(next.takeNotices().join(u' ').toStdString(), HasSubstr(check->getIdentifier().toStdString()));
        EXPECT_EQ(sql(u"SELECT count(*) FROM part JOIN sale ON sale.id = sale WHERE identifier = '%1'"_s.arg(
                          check->getIdentifier()))
                          .first()
                          .toInt() +
                      (damage.startsWith(u"DELETE"_s) ? 1 : 0),
                  builder::rows(*check).size());
        expectSells(next);
    }
}

TEST_F(CheckStoreTest, PutsAFileAsideThatIsBeyondUse)
{
    store.save(*fullCheck());
    const std::pair<const char *, std::function<void()>> cases[] = {
        {"no database", [&] { writeFile(file, QByteArray(10'000, 'x')); }},
        {"damaged", [&] { writeFile(file, readFile(file).first(4096) + QByteArray(20'000, '\xff')); }},
        {"newer", [&] { sql(u"PRAGMA user_version = 2"_s); }},
        {"another program's", [&] { sql(u"PRAGMA application_id = 7"_s); }},
    };
    for (const auto &[label, damage] : cases) {
        SCOPED_TRACE(label);
        sql(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
        damage();
        const QByteArray damaged = readFile(file);
        CheckStore next(folder);
        EXPECT_FALSE(next.restore());
        const QStringList notices = next.takeNotices();
        ASSERT_EQ(notices.size(), 1);
        const QString aside = notices.first().section(u'«', -1).section(u'»', 0, 0);
        EXPECT_EQ(readFile(aside).size(), damaged.size()) << notices.first().toStdString();
        expectSells(next);
    }
}

} // namespace
