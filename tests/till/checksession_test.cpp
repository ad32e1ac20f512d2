// A check with its loyalty system: what is raised when, and what a kill at any write to the disk leads to.
#include "sessionfixture.h"

#include <core/basicexception.h>

namespace {

TEST_F(Session, RaisesEventsWhereATillDoes)
{
    using Step = std::function<void(till::CheckSession &)>;
    const Step add = [](auto &s) { s.addGoods(item(100)); };
    const Step change = [](auto &s) { s.changeGoods(1, 3, {}); };
    const Step remove = [](auto &s) { s.removeGoods(2); };
    const Step restore = &till::CheckSession::restoreGoods;
    const Step subtotal = &till::CheckSession::subtotal;
    const Step spend = &till::CheckSession::spend;
    const Step close = &till::CheckSession::close;
    const Step giveUp = &till::CheckSession::voidCheck;
    const struct
    {
        const char *name;
        std::vector<Step> steps;
        const char *calls;
    } cases[]{
        {"changes wait for the subtotal", {change, remove, add, subtotal}, "57 57 57 24"},
        {"a change taken back", {remove, restore, close}, "57 237 238 commit"},
        {"taken back after the order was updated", {add, subtotal, restore, spend}, "57 24 237 request spend"},
        {"points are paid with", {spend, close}, "spend 238 commit"},
        {"points come off a check that changes", {spend, change, spend}, "spend 239 request spend"},
        {"points are spent on the check as it is", {add, subtotal, spend}, "57 24 239 request spend"},
        {"points are on a check that is voided", {spend, giveUp}, "spend rollback"},
    };
    for (const auto &[name, steps, calls] : cases) {
        openPriced();
        for (const Step &step : steps)
            step(*session);
        EXPECT_EQ(system->takeCalls().toStdString(), calls) << name;
        if (session->isOpen())
            session->voidCheck();
    }
}

TEST_F(Session, RaisesNothingForChangesBeforeTheCheckIsPriced)
{
    session->open();
    session->addGoods(item(100));
    session->addCard(ECardNumberType::Manual, u"777"_s);
    session->changeGoods(1, 2, {});
    session->restoreGoods();
    EXPECT_EQ(system->takeCalls(), QString());
}

TEST_F(Session, AsksWhenACheckCannotBePricedAnew)
{
    openPriced();
    session->spend();
    system->failing = true;
    EXPECT_CALL(*dialog, question).WillOnce(testing::Return(true)).WillOnce(testing::Return(false));
    session->changeGoods(1, 2, {});
    EXPECT_EQ(system->takeCalls(), u"spend 239 request 239 request rollback"_s);
    const till::CheckResult result = session->close();
    EXPECT_EQ(result.card, QString());
    EXPECT_EQ(result.total(), Money::fromKopecks(13000));
}

TEST_F(Session, DoesNotCloseACheckWhoseCardIsNotPriced)
{
    session->open();
    session->addGoods(item(100));
    session->addCard(ECardNumberType::Manual, u"777"_s);
    system->failing = true;
    EXPECT_THROW(session->price(), BasicException);
    EXPECT_CALL(*dialog, question).WillOnce([this] { return !(system->failing = false); });
    EXPECT_NE(session->close().basket, QString());
    EXPECT_EQ(system->takeCalls(), u"request request request 238 commit"_s);
}

TEST_F(Session, ReportsAChangeAgainAfterARestart)
{
    openPriced();
    session->changeGoods(1, 2, {});
    start();
    ASSERT_TRUE(session->isOpen());
    session->restoreGoods();
    EXPECT_EQ(system->takeCalls(), u"57 237"_s);
    EXPECT_EQ(session->result().sum(), Money::fromKopecks(8000));
}

TEST_F(Session, DropsAnOrderThatWasPerhapsCreatedWhenTheTillWasKilled)
{
    for (int save = 2; save <= 3; ++save) { // Of the loyalty system with the order, and of the till with the impacts.
        openPriced();
        disk->killBefore = disk->count + save;
        EXPECT_THROW(session->spend(), Killed);
        start();
        EXPECT_EQ(system->takeCalls(), u"239 request"_s);
        EXPECT_EQ(session->result().spent(), Money());
        session->voidCheck();
    }
}

TEST_F(Session, EntersACheckOnceThatWasKilledAfterTheJournal)
{
    openPriced();
    QFile file(folder.filePath(u"open-check.json"_s));
    const QString copy = folder.filePath(u"copy.json"_s);
    session->close();
    openPriced();
    disk->killAfter = disk->count + 2; // The ending is noted, the check is closed.
    EXPECT_THROW(session->close(), Killed);
    ASSERT_TRUE(file.copy(copy));
    ASSERT_TRUE(start());
    ASSERT_TRUE(QFile::rename(copy, file.fileName())); // As if the journal had been the last that was done.
    ASSERT_TRUE(start());
    EXPECT_EQ(booked().size(), 2);
}

/// A sale in which everything happens that writes to the disk.
void sell(till::CheckSession &session, const QSharedPointer<GoodsItem> &first, const QSharedPointer<GoodsItem> &second)
{
    session.open();
    session.addGoods(first);
    session.addGoods(second);
    session.addCard(ECardNumberType::Manual, u"777"_s);
    session.price();
    session.changeGoods(1, 2, {});
    session.subtotal();
    session.spend();
    session.removeGoods(2);
    session.spend();
    session.close();
}

TEST_F(Session, IsKilledAtAnyWriteAndEndsWithTheSameBooks)
{
    sell(*session, item(5000), item(3000));
    const int writes = disk->count;
    ASSERT_GT(writes, 15);
    deliver();
    for (int kill = 1; kill <= writes + 1; ++kill) {
        SCOPED_TRACE(kill);
        disk->count = 0;
        disk->killBefore = kill;
        disk->killAfter = writes;
        const qsizetype before = booked().size();
        EXPECT_THROW(sell(*session, item(5000), item(3000)), Killed);
        EXPECT_LE(deliver().size(), 0); // Nothing leaves before the check is on the disk as closed.
        disk->killBefore = disk->killAfter = 0;
        start();
        if (session->isOpen() && session->result().lines.isEmpty())
            session->voidCheck();
        else if (session->isOpen())
            session->close();
        const QStringList sent = deliver();
        const auto checks = booked();
        ASSERT_EQ(checks.size(), before + (kill == 1 ? 0 : 1)) << "killed before there was a check: nothing to book";
        if (kill == 1)
            continue;
        const QString basket = checks.constLast().value(u"basket"_s).toString();
        EXPECT_EQ(sent, basket.isEmpty() ? QStringList() : QStringList(u"post "_s + basket));
    }
}

} // namespace
