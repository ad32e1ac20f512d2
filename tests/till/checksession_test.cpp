// A check with the real plugin: what the service is asked when, and what a kill at any write to the disk leads to.
#include "plugin/plugin.h"
#include "tests/support/checkbuilder.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/file.h"
#include "tests/support/installed.h"
#include "tests/support/refusal.h"
#include "tests/support/restexchange.h"
#include "tests/support/sql.h"
#include "tests/support/test.h"
#include "till/checksession.h"
#include "till/endingqueue.h"

#include <cashier/dialog.h>
#include <cashier/savetofilelogic.h>
#include <core/activitynotifier.h>
#include <queue/queueadmin.h>

namespace {

/// Stands for SIGKILL: nothing in the program may catch it.
struct Killed
{
};

/// Saves like the till until the process is "killed", before the write or after it.
struct MortalSave : SaveToFileLogic
{
    void save(const QSharedPointer<AbstractDocument> &document, const QString &fileName, double paid) override
    {
        const int number = ++count;
        if (number == killBefore)
            throw Killed();
        if (full)
            throw BasicException(u"диск заполнен"_s);
        SaveToFileLogic::save(document, fileName, paid);
        if (number == killAfter)
            throw Killed();
    }
    int count = 0;
    int killBefore = 0;
    int killAfter = 0;
    bool full = false;
};

/// Removes the card whenever the cashier has that choice.
struct Remover : Dialog
{
    bool question(const tr::Tr &, int, const tr::Tr &, const tr::Tr &, int) override { return false; }
};

/// A till on a data folder of its own, which can be started anew as after a kill.
struct Session : testing::Test
{
    Session()
    {
        service.answer = service.ok(R"({"success": true, "data": {"CardNumber": "777", "CustAccount": "A-1"},
            "result": {"earnPoints": 0.1, "redeemPoints": [{"lineId": 1, "points": 12.34}]}})");
        start();
    }
    ~Session() override
    {
        session.reset();
        Singleton<DBQueueBroker>::replace(nullptr);
        Singleton<ActivityNotifier>::replace(nullptr);
    }

    std::optional<till::CheckResult> start()
    {
        session.reset();
        system.reset(); // Before its successor registers.
        system = std::make_unique<kvo::Plugin>();
        system->init();
        queue = QSharedPointer<till::EndingQueue>::create();
        Singleton<DBQueueBroker>::replace(queue);
        Singleton<CheckStore>::replace(nullptr);
        session = std::make_unique<till::CheckSession>(*system, *queue);
        return session->resume();
    }

    /// What the service was asked since the last call, without the word "Order" that ends each of the names.
    std::string takeCalls() { return std::exchange(service.calls, {}).join(u' ').remove(u"Order"_s).toStdString(); }

    /// A check with two lines and a priced card, with nothing noted yet.
    void openPriced()
    {
        session->open();
        session->addGoods(builder::line(5000));
        session->addGoods(builder::line(3000));
        session->addCard(ECardNumberType::Manual, u"777"_s);
        session->price();
        takeCalls();
    }

    /// A sale in which everything happens that writes to the disk.
    void sell()
    {
        openPriced();
        session->changeGoods(1, 2, {});
        session->subtotal();
        session->spend();
        start(); // The rest is that of a check from the disk.
        session->removeGoods(2);
        session->spend();
        session->close();
    }

    static QList<CheckStore::JournalEntry> booked() { return Singleton<CheckStore>::instance()->journal(); }

    /// What has come onto the queue since the last call: "postOrder BASKET".
    QStringList takeQueued()
    {
        QStringList queued;
        const QList<QueueAdmin::Entry> entries = QueueAdmin().list();
        for (const QueueAdmin::Entry &entry : entries.mid(std::exchange(seen, entries.size())))
            queued.append(entry.operation + u' ' + entry.order);
        return queued;
    }

    void setQueueFull(bool isFull)
    {
        runSql(folder.filePath(u"queue.db"_s),
               isFull ? u"CREATE TRIGGER full BEFORE INSERT ON event BEGIN SELECT RAISE(FAIL, 'full'); END"_s
                      : u"DROP TRIGGER IF EXISTS full"_s);
    }

    qsizetype seen = 0; ///< Of the queue.
    QTemporaryDir folder{quickFolder()};
    FakeConfig config{{{u"Host:dataFolder"_s, folder.path()}}};
    RestExchange service;
    Installed<SaveToFileLogic, MortalSave> disk;
    QSharedPointer<till::EndingQueue> queue;
    std::unique_ptr<kvo::Plugin> system;
    std::unique_ptr<till::CheckSession> session;
};

TEST_F(Session, AsksTheServiceForWhatTheCheckHasBecome)
{
    using Step = std::function<void(till::CheckSession &)>;
    const Step add = [](auto &s) { s.addGoods(builder::line(100)); };
    const Step change = [](auto &s) { s.changeGoods(1, 3, {}); };
    const Step remove = [](auto &s) { s.removeGoods(2); };
    const Step restore = &till::CheckSession::restoreGoods;
    const Step subtotal = [](auto &s) {
        s.subtotal();
        EXPECT_TRUE(s.result().isPriced && !s.result().isOffered);
    };
    const Step spend = &till::CheckSession::spend;
    const Step close = &till::CheckSession::close;
    const Step giveUp = &till::CheckSession::voidCheck;
    const Step park = &till::CheckSession::park;
    const Step restart = [this](auto &) { start(); };
    const Step takeNone = [this](auto &s) {
        service.answers.insert(u"createOrder"_s, RestExchange::ok(R"({"result": {}})"));
        s.spend();
        service.answers.clear();
    };
    const Step takeUp = [](auto &s) { s.take(u"1"_s); };
    const Step damage = [this](auto &) {
        runSql(folder.filePath(u"checks.db"_s), u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
        writeFile(folder.filePath(u"checks.db"_s), QByteArray(10'000, 'x'));
    };
    const Step look = [](auto &s) {
        EXPECT_TRUE(booked().isEmpty());
        s.reportNotices();
    };
    const std::tuple<const char *, std::vector<Step>, const char *> cases[]{
        {"changes wait for the subtotal", {change, remove, add, subtotal}, "create update"},
        {"a change taken back", {change, restore, close}, "create"},
        {"taken back after an update", {add, subtotal, restore, spend}, "create update cancel calculate create"},
        {"points are paid with", {spend, close}, "create"},
        {"points come off a check that changes", {spend, change, spend}, "create cancel calculate create"},
        {"points are spent on the check as it is", {add, subtotal, spend}, "create update cancel calculate create"},
        {"points are on a check that is voided", {spend, giveUp}, "create"},
        {"the service takes no points", {takeNone, spend}, "create cancel calculate create"},
        {"it says nothing of the points", {takeNone, close}, "create cancel calculate create"},
        {"points of another day", {park, takeUp, spend}, "cancel calculate create"},
        {"taken up on another day", {change, park, restart, takeUp, subtotal}, "create update"},
        {"parked in a damaged file", {spend, damage, park, restart, takeUp, close}, "create"},
        {"open while the journal is found damaged", {spend, damage, look, restart, close}, "create"},
    };
    for (const auto &[name, steps, calls] : cases) {
        openPriced();
        for (const Step &step : steps)
            step(*session);
        EXPECT_EQ(takeCalls(), calls) << name;
        if (session->isOpen())
            session->voidCheck();
        EXPECT_NE(booked().last().entry.value(u"basket"_s).toString(), QString()) << "the journal names the order";
    }
}

TEST_F(Session, LeavesTheCheckAsItWasWhenAnOperationIsRefused)
{
    const std::pair<const char *, std::function<void()>> cases[]{
        {"a quantity of zero", [this] { session->changeGoods(1, 0, {}); }},
        {"no such line", [this] { session->removeGoods(7); }},
        {"a disk that is full", [this] { session->addGoods(builder::line(100)); }},
        {"closing on a disk that is full", [this] { session->close(); }},
        {"voiding on a disk that is full", [this] { session->voidCheck(); }},
        {"a card on a disk that is full", [this] { session->removeCard(); }},
        {"another check", [this] { session->take(u"1"_s); }},
        {"a new check", [this] { session->open(); }},
        {"a second card", [this] { session->addCard(ECardNumberType::Manual, u"778"_s); }},
    };
    disk->full = true;
    EXPECT_THROW(session->open(), BasicException);
    EXPECT_FALSE(session->isOpen());
    disk->full = false;
    openPriced();
    session->park();
    openPriced();
    session->spend();
    QJsonObject before = session->result().toJournal();
    for (const auto &[name, operation] : cases) {
        SCOPED_TRACE(name);
        disk->full = QByteArrayView(name).contains("disk");
        EXPECT_THROW(operation(), BasicException);
        disk->full = false;
        EXPECT_EQ(session->result().toJournal(), before);
        start();
        EXPECT_EQ(session->result().toJournal(), before);
    }
}

TEST_F(Session, SellsToNobodyWhoHasNoNumberOrAccount)
{
    for (const char *said :
         {R"({"success": true, "data": {"CustAccount": "A-1"}})", R"({"success": true, "data": {"CardNumber": "777"}})",
          "{}", R"({"error": {"errorCode": 5, "description": " "}})"}) {
        session->open();
        service.answer = service.ok(said);
        EXPECT_NE(refusalOf([&] { session->addCard(ECardNumberType::Manual, u"777"_s); }).trimmed(), QString()) << said;
        EXPECT_EQ(session->result().card, QString());
        start();
        EXPECT_EQ(session->result().card, QString());
        disk->killAfter = disk->count + 1; // Of the loyalty system if it has found a card.
        EXPECT_THROW(session->addCard(ECardNumberType::Manual, u"777"_s), Killed);
        start();
        EXPECT_EQ(session->result().card, QString());
        session->voidCheck();
    }
}

TEST_F(Session, SellsOnWhileTheQueueIsFull)
{
    openPriced();
    session->spend();
    setQueueFull(true);
    const till::CheckResult closed = session->close();
    EXPECT_EQ(closed.outcome, u"closed"_s);
    EXPECT_FALSE(closed.loyaltyOff.isEmpty());
    EXPECT_EQ(session->keptChecks().size(), 1);
    EXPECT_TRUE(booked().isEmpty()) << "what is in the books is certain to be sent";
    EXPECT_TRUE(session->endWaiting());
    session->open();
    setQueueFull(false);
    ASSERT_TRUE(!session->endWaiting() && session->isOpen()) << "not in the place of another check";
    session->voidCheck();
    const QString checks = folder.filePath(u"checks.db"_s);
    runSql(checks, u"CREATE TRIGGER full BEFORE INSERT ON journal BEGIN SELECT RAISE(FAIL, 'full'); END"_s);
    EXPECT_TRUE(session->endWaiting());
    EXPECT_FALSE(session->isOpen());
    EXPECT_EQ(booked().size(), 1);
    runSql(checks, u"DROP TRIGGER full"_s);
    session->open();
    EXPECT_EQ(session->loyaltyOff(), QString());
    EXPECT_TRUE(session->keptChecks().isEmpty());
    ASSERT_EQ(booked().size(), 2);
    const QString basket = booked().last().entry.value(u"basket"_s).toString();
    EXPECT_EQ(takeQueued(), QStringList({u"postOrder "_s + basket, u"bindOrderId "_s + basket}));
    setQueueFull(true);
    queue->push(u"kvo"_s, {}, {});
    EXPECT_NE(session->loyaltyOff(), QString());
    setQueueFull(false);
    queue->push(u"kvo"_s, {}, {});
    EXPECT_EQ(session->loyaltyOff(), QString()) << "the queue works again";
}

TEST(TillState, KnowsDamage)
{
    for (const char *field : {"ending", "order"})
        for (const int value : {-1, 4}) {
            SaleDocument check;
            check.setPluginData(u"till"_s, {{QString::fromLatin1(field), value}});
            EXPECT_TRUE(refusalOf([&] { till::TillState::readFrom(check); }).contains(QLatin1StringView(field)));
        }
}

TEST_F(Session, QueuesTheCancellationOfARemovedCardAtOnceOrKeepsItOnTheCheck)
{
    const Installed<Dialog, Remover> cashier;
    sell();
    const auto accepted = service.answer;
    for (const bool isFull : {false, true}) {
        service.answer = accepted;
        openPriced();
        session->changeGoods(1, 2, {});
        takeQueued();
        service.answer = RestExchange::response(500, R"({"success": false})");
        setQueueFull(isFull);
        session->subtotal();
        EXPECT_EQ(session->result().card, QString());
        EXPECT_EQ(takeQueued().size(), isFull ? 0 : 1);
        start();
        setQueueFull(false);
        session->voidCheck();
        EXPECT_EQ(takeQueued().size(), isFull ? 1 : 0);
    }
}

TEST_F(Session, DropsAnOrderThatWasPerhapsCreatedWhenTheTillWasKilled)
{
    for (int save = 2; save <= 3; ++save) { // Of the loyalty system with the order, and of the till with the impacts.
        openPriced();
        disk->killBefore = disk->count + save;
        EXPECT_THROW(session->spend(), Killed);
        start();
        EXPECT_EQ(takeCalls(), "create cancel calculate");
        EXPECT_EQ(session->result().spent(), Money());
        disk->killAfter = disk->count + 2; // When the order is off the card.
        EXPECT_THROW(session->voidCheck(), Killed);
        start();
        EXPECT_NE(booked().last().entry.value(u"basket"_s).toString(), QString());
    }
}

TEST_F(Session, IsKilledAtAnyWriteAndEndsWithTheSameBooks)
{
    sell();
    const int writes = disk->count;
    ASSERT_GT(writes, 15);
    takeQueued();
    for (int kill = 1; kill <= writes + 1; ++kill) {
        SCOPED_TRACE(kill);
        disk->count = 0;
        disk->killBefore = kill;
        disk->killAfter = writes;
        const qsizetype before = booked().size();
        EXPECT_THROW(sell(), Killed);
        EXPECT_TRUE(takeQueued().isEmpty()) << "something left before the check was on the disk as closed";
        disk->killBefore = disk->killAfter = 0;
        start();
        if (session->isOpen() && session->result().lines.isEmpty())
            session->voidCheck();
        else if (session->isOpen())
            session->close();
        const QStringList sent = takeQueued();
        const auto lines = booked();
        ASSERT_EQ(lines.size(), before + (kill == 1 ? 0 : 1)) << "killed before there was a check: nothing to book";
        if (kill == 1)
            continue;
        const QString basket = lines.last().entry.value(u"basket"_s).toString();
        EXPECT_EQ(sent, basket.isEmpty() ? QStringList()
                                         : QStringList({u"postOrder "_s + basket, u"bindOrderId "_s + basket}));
    }
}

} // namespace
