// A check with its loyalty system: what is raised when, and what a kill at any write to the disk leads to.
#include "recordingsystem.h"
#include "till/checksession.h"
#include "till/endingqueue.h"
#include "till/journal.h"

#include <cashier/dialog.h>
#include <core/basicexception.h>
#include <core/config.h>
#include <queue/queuedrain.h>

#include <gmock/gmock.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Stands for SIGKILL: nothing in the program may catch it.
struct Killed
{
};

/// Saves like the till until the process is "killed", before the write or after it.
class MortalSave : public SaveToFileLogic
{
public:
    void save(const QSharedPointer<AbstractDocument> &document, const QString &fileName, double paid) override
    {
        const int number = ++count;
        if (number == killBefore)
            throw Killed();
        SaveToFileLogic::save(document, fileName, paid);
        if (number == killAfter)
            throw Killed();
    }
    int count = 0;
    int killBefore = 0;
    int killAfter = 0;
};

class DialogDouble : public Dialog
{
public:
    MOCK_METHOD(bool, question, (const tr::Tr &, int, const tr::Tr &, const tr::Tr &, int), (override));
};

/// A till on a data folder of its own, which can be started anew as after a kill.
class Session : public testing::Test
{
protected:
    Session()
    {
        QFile ini(folder.filePath(u"till.ini"_s));
        EXPECT_TRUE(ini.open(QFile::WriteOnly));
        ini.write("[Host]\ndataFolder = " + QFile::encodeName(folder.path()) + "\n");
        ini.close();
        Singleton<Config>::replace(QSharedPointer<Config>::create(ini.fileName()));
        MockFactory<SaveToFileLogic>::install(disk);
        MockFactory<Dialog>::install(dialog);
        start();
    }
    ~Session() override
    {
        session.reset();
        Singleton<DBQueueBroker>::replace(nullptr);
        Singleton<ActivityNotifier>::replace(nullptr);
        MockFactory<SaveToFileLogic>::clear();
        MockFactory<Dialog>::clear();
        Singleton<Config>::replace(nullptr);
    }

    std::optional<till::CheckResult> start()
    {
        session.reset();
        system.reset(); // Before its successor registers.
        system = std::make_unique<RecordingSystem>();
        queue = QSharedPointer<till::EndingQueue>::create();
        Singleton<DBQueueBroker>::replace(queue);
        session = std::make_unique<till::CheckSession>(*system, *queue, journal);
        return session->resume();
    }

    static QSharedPointer<GoodsItem> item(qint64 kopecks)
    {
        auto item = QSharedPointer<GoodsItem>::create();
        item->setPrice(Money::fromKopecks(kopecks));
        return item;
    }

    /// A check with two lines and a priced card, with nothing noted yet.
    void openPriced()
    {
        session->open();
        session->addGoods(item(5000));
        session->addGoods(item(3000));
        session->addCard(ECardNumberType::Manual, u"777"_s);
        session->price();
        system->takeCalls();
    }

    QList<QJsonObject> booked() const
    {
        QList<QJsonObject> checks;
        QFile file(journal.fileName());
        if (file.open(QFile::ReadOnly)) {
            for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine())
                checks.append(QJsonDocument::fromJson(line).object());
        }
        return checks;
    }

    /// What is on the queue, delivered in order: "post BASKET".
    QStringList deliver()
    {
        QStringList sent;
        QueueDrain drain;
        drain.setHandler(u"kvo"_s, [&sent](const QJsonObject &event) {
            const QString basket = event.value(u"payload"_s).toObject().value(u"basket"_s).toString();
            sent.append(event.value(u"url"_s).toString() + u' ' + basket);
        });
        drain.start();
        EXPECT_TRUE(drain.waitUntilDrained(30s));
        drain.stop();
        return sent;
    }

    QTemporaryDir folder;
    QSharedPointer<MortalSave> disk = QSharedPointer<MortalSave>::create();
    QSharedPointer<testing::NiceMock<DialogDouble>> dialog = QSharedPointer<testing::NiceMock<DialogDouble>>::create();
    till::Journal journal{folder.filePath(u"journal.jsonl"_s)};
    QSharedPointer<till::EndingQueue> queue;
    std::unique_ptr<RecordingSystem> system;
    std::unique_ptr<till::CheckSession> session;
};

TEST_F(Session, RaisesEventsWhereATillDoes)
{
    using Steps = std::function<void(till::CheckSession &)>;
    const struct
    {
        const char *name;
        Steps steps;
        const char *calls;
    } cases[]{
        {"changes wait for the subtotal",
         [](auto &s) {
             s.changeGoods(1, 2, {});
             s.removeGoods(2);
             s.addGoods(item(100));
             s.subtotal();
         },
         "57 57 57 24"},
        {"a change taken back",
         [](auto &s) {
             s.removeGoods(2);
             s.restoreGoods();
             s.close();
         },
         "57 237 238 commit"},
        {"a change taken back after the order was updated",
         [](auto &s) {
             s.addGoods(item(100));
             s.subtotal();
             s.restoreGoods();
             s.spend(); // On prices that are those of the check already.
         },
         "57 24 237 request spend"},
        {"points are spent and paid with",
         [](auto &s) {
             s.spend();
             s.close();
         },
         "spend 238 commit"},
        {"points come off a check that changes, and are spent anew",
         [](auto &s) {
             s.spend();
             s.changeGoods(1, 3, {});
             EXPECT_EQ(s.result().spent(), Money());
             s.spend();
             EXPECT_EQ(s.result().spent(), Money::fromKopecks(1000));
         },
         "spend 239 request spend"},
        {"points are spent on the prices of the check as it is",
         [](auto &s) {
             s.addGoods(item(100));
             s.subtotal();
             s.spend();
         },
         "57 24 239 request spend"},
        {"voiding with points on the check",
         [](auto &s) {
             s.spend();
             const auto result = s.voidCheck();
             EXPECT_EQ(result.spent(), Money());
             EXPECT_EQ(result.basket, QString());
         },
         "spend rollback"},
    };
    for (const auto &[name, steps, calls] : cases) {
        openPriced();
        steps(*session);
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
