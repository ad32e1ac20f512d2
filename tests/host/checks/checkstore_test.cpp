// Checks and journal on disk: they come back as they were, a save costs what has changed, and what cannot be read
// stands in nobody's way.
#include "tests/support/checkbuilder.h"
#include "tests/support/file.h"
#include "tests/support/fulldisk.h"
#include "tests/support/refusal.h"
#include "tests/support/sql.h"
#include "tests/support/test.h"

#include <checks/checkstore.h>

using Standing = CheckStore::Standing;

namespace {

struct CheckStoreTest : testing::Test
{
    void expectSells(CheckStore &checks)
    {
        const auto next = builder::check({100});
        checks.save(*next);
        EXPECT_EQ(builder::text(*CheckStore(folder).restore()), builder::text(*next));
    }

    QTemporaryDir temporary;
    const QString folder = temporary.filePath(u"data/till"_s);
    CheckStore store{folder};
    const QString file = store.fileName();
};

TEST_F(CheckStoreTest, BringsBackWhatWasSaved)
{
    CheckStore look(folder, CheckStore::Access::Look);
    EXPECT_FALSE(look.restore() || !look.checks().isEmpty() || !look.journal().isEmpty());
    EXPECT_FALSE(QFile::exists(folder)) << "looking creates nothing";
    EXPECT_FALSE(store.restore());
    const auto saved = builder::fullCheck();
    store.save(*saved);
    CheckStore later(folder);
    const auto restored = later.restore();
    ASSERT_TRUE(restored);
    EXPECT_EQ(builder::text(*restored).toStdString(), builder::text(*saved).toStdString());
    restored->addGoodsItem(builder::line(300));
    restored->removeImpactsOf(restored->getCardRecords().first());
    later.save(*restored);
    EXPECT_EQ(builder::text(*look.restore()), builder::text(*restored)) << "changes add to what was read";
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

TEST_F(CheckStoreTest, FinishesACheckOnceAndKeepsTheOthers)
{
    const auto parked = builder::fullCheck();
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
    const QDateTime entered = later.journal().first().entered;
    EXPECT_LE(std::abs(entered.secsTo(QDateTime::currentDateTime())), 60);
    EXPECT_EQ(later.journal(entered).size(), 1);
    EXPECT_TRUE(later.journal(entered.addMSecs(1)).isEmpty());
    ASSERT_EQ(later.checks().size(), 1);
    EXPECT_EQ(later.checks().first().standing, Standing::Parked);
    later.save(*later.parked(parked->getIdentifier()));
    EXPECT_EQ(later.checks().first().standing, Standing::Current) << "saved";
    later.park({}, Standing::Ending);
    EXPECT_EQ(builder::text(*later.resume(parked->getIdentifier())), builder::text(*parked));
    EXPECT_EQ(later.checks().first().standing, Standing::Current);
    later.park(u"Покупатель отошёл"_s);
    // What is finished cannot be taken up.
    EXPECT_THAT(refusalOf([&] { later.resume(check->getIdentifier()); }).toStdString(), HasSubstr("Отложенного чека"));
    EXPECT_EQ(later.checks().first().reason, u"Покупатель отошёл"_s);
    EXPECT_FALSE(later.restore());
}

TEST_F(CheckStoreTest, KeepsWhatIsStoredWhenTheDiskIsFull)
{
    const auto check = builder::check({100, 200});
    store.save(*check);
    const QByteArray before = builder::text(*check);
    check->removeGoodsItem(1);
    for (int i = 0; i < 200; ++i)
        check->addGoodsItem(builder::line(100));
    {
        const FullDisk full(QFileInfo(file + u"-wal"_s).size() + 8000);
        EXPECT_THROW(store.save(*check), BasicException);
    }
    EXPECT_EQ(builder::text(*CheckStore(folder).restore()), before);
    store.save(*check);
    EXPECT_EQ(builder::text(*CheckStore(folder).restore()), builder::text(*check));

    check->setPluginData(u"kvo"_s, {{u"pointer"_s, QVariant::fromValue(static_cast<QObject *>(nullptr))}});
    EXPECT_THROW(store.save(*check), BasicException);
}

TEST_F(CheckStoreTest, PutsACheckAsideThatCannotBeRead)
{
    const std::pair<QString, const char *> cases[] = {
        {u"UPDATE part SET content = '{}' WHERE kind = 'goods' AND key = 2"_s, "«goods 2», поле «posnum»"},
        {u"UPDATE part SET content = replace(CAST(content AS TEXT), 'identifier\":\"', 'identifier\":\"x') "
         u"WHERE kind = 'check'"_s,
         "«identifier»"},
    };
    for (const auto &[damage, named] : cases) {
        SCOPED_TRACE(named);
        const auto check = builder::fullCheck();
        store.save(*check);
        runSql(file, damage);
        CheckStore look(folder, CheckStore::Access::Look);
        EXPECT_FALSE(look.restore());
        EXPECT_EQ(look.checks().last().standing, Standing::Current) << "looking changes nothing";
        CheckStore next(folder);
        EXPECT_FALSE(next.restore());
        const auto kept = next.checks().last();
        EXPECT_EQ(kept.standing, Standing::Unreadable);
        EXPECT_THAT(kept.reason.toStdString(), HasSubstr(named));
        EXPECT_THAT(next.takeNotices().join(u' ').toStdString(), HasSubstr(check->getIdentifier().toStdString()));
        EXPECT_TRUE(next.takeNotices().isEmpty());
        EXPECT_THROW(next.resume(check->getIdentifier()), BasicException);
        EXPECT_EQ(runSql(file, u"SELECT count(*) FROM part JOIN sale ON sale.id = sale WHERE identifier = '%1'"_s.arg(
                                   check->getIdentifier())),
                  QVariantList{builder::rows(*check).size()});
        expectSells(next);
        next.park({});
    }
    const auto parked = builder::fullCheck();
    store.save(*parked);
    store.park(u"Отложен"_s);
    runSql(file, u"DELETE FROM part WHERE kind = 'check'"_s);
    EXPECT_THROW(store.resume(parked->getIdentifier()), BasicException);
    EXPECT_EQ(store.checks().last().standing, Standing::Unreadable);
    EXPECT_TRUE(store.takeNotices().isEmpty()) << "told by the exception";
}

TEST_F(CheckStoreTest, PutsAFileAsideThatIsBeyondUse)
{
    store.save(*builder::fullCheck());
    const std::pair<const char *, std::function<void()>> cases[] = {
        {"no database", [&] { writeFile(file, QByteArray(10'000, 'x')); }},
        {"a single byte", [&] { writeFile(file, "x"); }},
        {"damaged", [&] { writeFile(file, readFile(file).first(4096) + QByteArray(20'000, '\xff')); }},
        {"without a table", [&] { runSql(file, u"DROP TABLE part"_s); }},
        {"without a column", [&] { runSql(file, u"ALTER TABLE part RENAME COLUMN content TO text"_s); }},
        {"newer", [&] { runSql(file, u"PRAGMA user_version = 2"_s); }},
        {"another program's", [&] { runSql(file, u"PRAGMA application_id = 7"_s); }},
    };
    for (const auto &[label, damage] : cases) {
        SCOPED_TRACE(label);
        runSql(file, u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
        damage();
        const QByteArray damaged = readFile(file);
        CheckStore next(folder);
        EXPECT_FALSE(next.restore());
        const QStringList notices = next.takeNotices();
        ASSERT_EQ(notices.size(), 1);
        const QString aside = notices.first().section(u'«', -1).section(u'»', 0, 0);
        EXPECT_EQ(readFile(aside), damaged) << notices.first().toStdString();
        expectSells(next);
    }
    for (const bool foundBySaving : {true, false}) {
        CheckStore atWork(folder);
        const auto check = atWork.restore();
        runSql(file, u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
        writeFile(file, QByteArray(10'000, 'x'));
        EXPECT_TRUE(foundBySaving || atWork.journal().isEmpty());
        check->addGoodsItem(builder::line(100));
        atWork.save(*check);
        EXPECT_EQ(atWork.takeNotices().size(), 1);
        EXPECT_EQ(builder::text(*CheckStore(folder).restore()), builder::text(*check)) << "all of it is written again";
    }
}

} // namespace
