// Whole sales with the real libKvo.so, and saving the check that they leave.
#include "barecurl.h"
#include "comparisons.h"
#include "samples.h"
#include "tests/support/fakeconfig.h"

#include <cashier/savetofilelogic.h>
#include <core/activitynotifier.h>
#include <core/mockfactory.h>
#include <document/documentstore.h>
#include <loyalty/basicloyaltysystem.h>
#include <queue/dbqueuebroker.h>

#include <fcntl.h>
#include <unistd.h>

#include <QtCore/QFile>
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

/// An exchange with what any client must do for it: one build of the body and its text, one parse of the answer.
class Floor
{
public:
    explicit Floor(const Exchange &exchange)
        : m_exchange(exchange), m_fields(QJsonDocument::fromJson(exchange.body).object()), m_order(textsOf(m_fields))
    {
        require(exchange.body.isEmpty() || text() == exchange.body, "floor: another body");
    }

    void send(BareCurl &curl)
    {
        if (!m_exchange.body.isEmpty())
            m_exchange.body = text();
        benchmark::DoNotOptimize(QJsonDocument::fromJson(QByteArray::fromStdString(curl.send(m_exchange))));
    }

private:
    // The one body without lines, of the binding, is a handful of strings and counts as built.
    QByteArray text() const
    {
        return QJsonDocument(m_order.lines.isEmpty() ? m_fields : buildByHand(m_order)).toJson(QJsonDocument::Compact);
    }

    Exchange m_exchange;
    QJsonObject m_fields;
    OrderTexts m_order;
};

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
            exchange.send(*curl);
    });
}

/// A new file beside the old one, on the disk before it takes its name, and the name on the disk as well.
void writeDurably(const QByteArray &file, const QByteArray &bytes)
{
    const QByteArray draft = file + ".new";
    const int descriptor = ::open(draft.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const bool written = ::write(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size())) == bytes.size();
    require(written && ::fsync(descriptor) == 0 && ::close(descriptor) == 0 &&
                ::rename(draft.constData(), file.constData()) == 0,
            "the peer cannot write");
    const int folder = ::open(file.left(file.lastIndexOf('/')).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    require(::fsync(folder) == 0 && ::close(folder) == 0, "the peer cannot sync its folder");
}

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

void saveVsFsync(Pairs &pairs)
{
    Till till(20);
    till.check = makePlainCheck(20); // its lines are to have room for the points
    till.price();
    till.spend();
    const BonusImpactPtrList impacts = till.system->getBonusImpactsForSpend();
    for (const auto &impact : impacts)
        till.check->addImpact(impact);

    const QTemporaryDir folder(diskFolder());
    const DocumentStore store(folder.path());
    store.save(*till.check);
    QFile saved(store.openCheckFile());
    require(saved.open(QFile::ReadOnly), "the check was not saved");
    const QByteArray bytes = saved.readAll();
    const QByteArray peer = QFile::encodeName(folder.filePath(u"peer.json"_s));
    pairs.run(calls(1, [&] { store.save(*till.check); }), calls(1, [&] { writeDurably(peer, bytes); }));
}

} // namespace bench
