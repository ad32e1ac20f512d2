// Whole sales with the real libKvo.so, and saving a check as it grows.
#include "barecurl.h"
#include "comparisons.h"
#include "floor.h"
#include "samples.h"
#include "sqlitewriter.h"
#include "tests/support/fakeconfig.h"

#include <cashier/savetofilelogic.h>
#include <checks/checkrows.h>
#include <checks/checkstore.h>
#include <core/activitynotifier.h>
#include <core/mockfactory.h>
#include <loyalty/basicloyaltysystem.h>
#include <queue/dbqueuebroker.h>

#include <QtCore/QPluginLoader>
#include <QtCore/QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace bench {

namespace {

struct NoSaving : SaveToFileLogic
{
    void save(const QSharedPointer<AbstractDocument> &, const QString &, double) override {}
};

struct MemoryQueue : DBQueueBroker
{
    void push(const QString &, const QJsonObject &event, const QString &) override { events.append(event); }
    QList<QJsonObject> events;
};

/// A till with the plugin, whose queue and saving are replaced by memory. Steps that fail throw std::runtime_error.
class Till
{
public:
    explicit Till(int lines);
    ~Till();
    Q_DISABLE_COPY_MOVE(Till)

    /// A card on the check, which is identified; the check priced.
    void price();
    void spend() const;
    /// Commit, and replay of the two queued events.
    void finish();
    void sell();

    AnswerServer server;
    FakeConfig config;
    kvo::Interface client; // the queue's sender
    QSharedPointer<MemoryQueue> queue = QSharedPointer<MemoryQueue>::create();
    QPluginLoader loader{QString::fromUtf8(LIBKVO_FILE)};
    BasicLoyaltySystem *system = qobject_cast<BasicLoyaltySystem *>(loader.instance());
    QSharedPointer<SaleDocument> check;
    QSharedPointer<DocumentCardRecord> card;
};

Till::Till(int lines) : server(answers(lines)), config(settings(server)), check(makeCheck(lines))
{
    require(system && system->init(), "libKvo.so does not start");
    Singleton<DBQueueBroker>::replace(queue);
    MockFactory<SaveToFileLogic>::install(QSharedPointer<NoSaving>::create());
}

Till::~Till()
{
    system->clearAfterClose();
    system->deinit();
    Singleton<DBQueueBroker>::replace(nullptr);
    MockFactory<SaveToFileLogic>::clear();
    loader.unload(); // deletes the plugin: the next till's one reads its own settings
}

void Till::price()
{
    card = makeCard();
    check->addCard(card);
    system->setDocument(check);
    require(system->identifyByCard(card, ECardNumberType::Scanned) && system->request(check), "sale: not priced");
}

void Till::spend() const
{
    require(system->spendPoints() && system->hasBonusImpacts(), "sale: no points spent");
}

void Till::finish()
{
    require(system->commit(check) && queue->events.size() == 2, "sale: nothing queued");
    for (const QJsonObject &event : std::as_const(queue->events))
        client.requestFromQueue(event);
    queue->events.clear();
    check->removeCard(card);
    system->clearAfterClose();
}

void Till::sell()
{
    price();
    spend();
    finish();
}

/// What a sale sends.
QList<Exchange> sale(Till &till)
{
    const QList<Exchange> exchanges = record([&] { till.sell(); });
    require(exchanges.size() == 7, "sale: unexpected number of exchanges");
    return exchanges;
}

Side withBodies(const QList<Exchange> &exchanges)
{
    const auto floors = std::make_shared<std::vector<Floor>>(exchanges.cbegin(), exchanges.cend());
    return calls(1, [floors, curl = std::make_shared<BareCurl>(exchanges.first())] {
        for (Floor &exchange : *floors)
            benchmark::DoNotOptimize(Floor::parse(QByteArray::fromStdString(curl->send(exchange.build()))));
    });
}

/// A priced check in a store on the disk, which takes one line more and gives it back.
class SavedCheck
{
public:
    explicit SavedCheck(int lines)
    {
        Till till(lines); // one at a time: a process has one plugin
        till.price();
        m_check = till.check;
        m_store.save(*m_check);
    }

    /// The seconds until a line more is on the disk.
    double addLine()
    {
        const auto item = GoodsItem::fromMap(m_check->getGoodsItems().first()->toMap());
        const double seconds = secondsOf([&] {
            m_check->addGoodsItem(item);
            m_store.save(*m_check);
        });
        m_check->removeGoodsItem(item->getPosnum());
        m_store.save(*m_check);
        return seconds;
    }

    /// What is stored of a line.
    QByteArray row() const { return CheckRows().update(*m_check).written.at(1).content; }

    const QTemporaryDir folder{diskFolder()};

private:
    QSharedPointer<SaleDocument> m_check;
    CheckStore m_store{folder.path()};
};

} // namespace

void saleVsCurl(Pairs &pairs, int lines)
{
    Till till(lines);
    pairs.run(calls(1, [&] { till.sell(); }), bareCurl(sale(till)));
}

void saleVsFloor(Pairs &pairs, int lines)
{
    Till till(lines);
    const Side floor = withBodies(sale(till));
    pairs.run(calls(1, [&] { till.sell(); }), floor);
}

void floorVsCurl(Pairs &pairs, int lines)
{
    Till till(lines);
    const QList<Exchange> exchanges = sale(till);
    pairs.run(withBodies(exchanges), bareCurl(exchanges));
}

void unchangedVsBody(Pairs &pairs)
{
    constexpr int repetitions = 2;
    Till till(100);
    till.price();
    const auto notify = [&] {
        Singleton<ActivityNotifier>::instance()->notify(
            Event(EventCode::PaymentStarted,
                  {{u"document"_s, QVariant::fromValue(QSharedPointer<AbstractDocument>(till.check))}}));
    };
    require(record(notify).isEmpty(), "an unchanged check was sent");
    const auto body = [&] { benchmark::DoNotOptimize(till.client.createOrderBody(till.check, till.card, false)); };
    pairs.run(calls(repetitions, notify), calls(repetitions, body));
}

void saveVsSqlite(Pairs &pairs)
{
    SavedCheck check(20);
    const QByteArray row = check.row();
    SqliteWriter writer(check.folder.filePath(u"peer.db"_s));
    writer.run("CREATE TABLE part (key INTEGER PRIMARY KEY, content BLOB NOT NULL)");
    writer.prepare("INSERT INTO part (content) VALUES (?)");
    pairs.run([&] { return check.addLine(); }, calls(1, [&] { writer.write(row); }));
}

void saveGrowth(Pairs &pairs)
{
    SavedCheck large(1000);
    SavedCheck small(20);
    pairs.run([&] { return large.addLine(); }, [&] { return small.addLine(); });
}

} // namespace bench
