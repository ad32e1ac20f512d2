// A whole sale as the customer waits for it: saved at each step, its requests queued and delivered. Beside it the same
// sale by the plain means of Qt.
#include "barecurl.h"
#include "comparisons.h"
#include "floor.h"
#include "networkaccess.h"
#include "samples.h"
#include "tests/support/fakeconfig.h"
#include "till/checksession.h"
#include "till/endingqueue.h"
#include "till/loyaltyplugin.h"
#include "till/queuesender.h"

#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryDir>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

#include <optional>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace bench {

namespace {

constexpr int linesOfSale = 20;
constexpr int exchangesOfASale = 7;

QVariantHash inFolder(QVariantHash values, const QString &folder)
{
    values.insert(u"Host:dataFolder"_s, folder);
    return values;
}

/// The till's own parts, with a cashier who is never asked.
class WholeTill
{
public:
    explicit WholeTill(const AnswerServer &server) : m_config(inFolder(settings(server), folder.path()))
    {
        Singleton<DBQueueBroker>::replace(m_queue);
        m_session.emplace(m_plugin.system(), *m_queue);
        m_drain.setHandler(till::loyaltyQueueOwner, till::makeLoyaltySender());
        m_drain.start();
    }
    ~WholeTill()
    {
        m_drain.stop();
        m_session.reset();
        Singleton<DBQueueBroker>::replace(nullptr);
    }
    Q_DISABLE_COPY_MOVE(WholeTill)

    void sell()
    {
        m_session->open();
        for (int number = 1; number <= linesOfSale; ++number)
            m_session->addGoods(makeLine(number));
        m_session->addCard(ECardNumberType::Scanned, makeCard()->getNumber().toString());
        m_session->price();
        m_session->spend();
        m_session->close();
        require(m_drain.waitUntilDrained(std::chrono::minutes(1)), "the queue was not drained");
    }

    const QTemporaryDir folder{diskFolder()};

private:
    FakeConfig m_config;
    QSharedPointer<till::EndingQueue> m_queue = QSharedPointer<till::EndingQueue>::create();
    till::LoyaltyPlugin m_plugin{QFileInfo(QString::fromUtf8(LIBKVO_FILE)).path()};
    QueueDrain m_drain;
    std::optional<till::CheckSession> m_session;
};

/// The check is one JSON file that each step writes again; the queue and the journal are tables.
class PlainTill
{
public:
    PlainTill(const QString &folder, const QList<Exchange> &exchanges)
        : m_file(folder + u"/check.json"_s), m_database(QSqlDatabase::addDatabase(u"QSQLITE"_s))
    {
        for (const Exchange &exchange : exchanges)
            m_exchanges.push_back({Floor(exchange), NetworkAccess::requestOf(exchange)});
        m_database.setDatabaseName(folder + u"/plain.db"_s);
        require(m_database.open(), "Qt's SQLite database cannot be opened");
        run(u"CREATE TABLE queue (id INTEGER PRIMARY KEY, exchange INTEGER, body TEXT)"_s);
        run(u"CREATE TABLE journal (id INTEGER PRIMARY KEY, entry TEXT)"_s);
    }
    ~PlainTill()
    {
        const QString name = m_database.connectionName();
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    Q_DISABLE_COPY_MOVE(PlainTill)

    void sell()
    {
        m_check = QJsonObject{{u"state"_s, u"open"_s}};
        save();
        addLines();
        step(u"customer"_s, 0);
        step(u"card"_s, 1);
        step(u"balance"_s, 2);
        save();
        step(u"priced"_s, 3);
        save();
        step(u"order"_s, 4);
        save();
        close();
        deliver();
    }

private:
    struct Request
    {
        Floor floor;
        QNetworkRequest request;
    };

    static QJsonObject lineOf(const GoodsItem &item)
    {
        return {{u"barcode"_s, item.getAdditionalBarcode()},
                {u"code"_s, item.getTmc()->getCode()},
                {u"name"_s, item.getTmc()->getName()},
                {u"quantity"_s, item.getQuantity()},
                {u"price"_s, item.getPrice().toText()},
                {u"allowDiscount"_s, item.isAllowDiscount()},
                {u"allowBonusEarn"_s, item.isAllowBonusEarn()},
                {u"labels"_s, QJsonArray::fromVariantList(item.getCampaignLabels())}};
    }

    void addLines()
    {
        QJsonArray items;
        for (int number = 1; number <= linesOfSale; ++number) {
            items.append(lineOf(*makeLine(number)));
            m_check.insert(u"lines"_s, items);
            save();
        }
    }

    /// Sends a request; what was asked and answered goes onto the check.
    void step(const QString &name, std::size_t number)
    {
        Request &exchange = m_exchanges.at(number);
        const QByteArray body = exchange.floor.build().body;
        m_check.insert(name, m_network.send(exchange.request, body));
        if (!body.isEmpty())
            m_check.insert(u"body"_s, exchange.floor.body());
    }

    void close()
    {
        m_check.insert(u"state"_s, u"closed"_s);
        save();
        for (const int number : {5, 6})
            run(u"INSERT INTO queue (exchange, body) VALUES (?, ?)"_s,
                {number, QString::fromUtf8(m_exchanges.at(number).floor.build().body)});
        const QByteArray entry = QJsonDocument(m_check).toJson(QJsonDocument::Compact);
        run(u"INSERT INTO journal (entry) VALUES (?)"_s, {QString::fromUtf8(entry)});
        require(QFile::remove(m_file), "the check was not removed");
    }

    void deliver()
    {
        for (int delivered = 0; delivered < 2; ++delivered) {
            QSqlQuery first = run(u"SELECT id, exchange, body FROM queue ORDER BY id LIMIT 1"_s);
            require(first.next(), "nothing is queued");
            const QVariant id = first.value(0);
            m_network.send(m_exchanges.at(first.value(1).toUInt()).request, first.value(2).toString().toUtf8());
            first.finish();
            run(u"DELETE FROM queue WHERE id = ?"_s, {id});
        }
    }

    void save() const
    {
        QSaveFile file(m_file);
        require(file.open(QFile::WriteOnly) && file.write(QJsonDocument(m_check).toJson(QJsonDocument::Compact)) > 0 &&
                    file.commit(),
                "the check was not saved");
    }

    QSqlQuery run(const QString &sql, const QVariantList &values = {}) const
    {
        QSqlQuery query(m_database);
        require(query.prepare(sql), "Qt's SQL: not prepared");
        for (const QVariant &value : values)
            query.addBindValue(value);
        require(query.exec(), "Qt's SQL: statement failed");
        return query;
    }

    QString m_file;
    QSqlDatabase m_database;
    NetworkAccess m_network;
    std::vector<Request> m_exchanges;
    QJsonObject m_check;
};

} // namespace

void saleOnDiskVsPlainQt(Pairs &pairs)
{
    const AnswerServer server(answers(linesOfSale));
    WholeTill ours(server);
    const QList<Exchange> exchanges = record([&] { ours.sell(); });
    require(exchanges.size() == exchangesOfASale, "sale on disk: unexpected number of exchanges");
    PlainTill plain(ours.folder.path(), exchanges);
    pairs.run(calls(1, [&] { ours.sell(); }), calls(1, [&] { plain.sell(); }));
}

} // namespace bench
