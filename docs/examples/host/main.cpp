// The smallest host: loads libKvo.so, sells one check to the holder of a card, and delivers what the plugin has queued.
// Usage: smallest-host CONFIG.ini /path/of/libKvo.so CARD
#include <core/activitynotifier.h>
#include <core/basicexception.h>
#include <core/config.h>
#include <core/eventcode.h>
#include <core/singleton.h>
#include <document/saledocument.h>
#include <loyalty/basicloyaltysystem.h>
#include <net/restclient.h>
#include <queue/dbqueuebroker.h>
#include <queue/queuedrain.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>
#include <QtCore/QPluginLoader>
#include <QtCore/QTextStream>

using namespace Qt::Literals::StringLiterals;

namespace {

QSharedPointer<GoodsItem> bread()
{
    auto article = QSharedPointer<Tmc>::create();
    article->setName(u"Хлеб ржаной"_s);
    auto line = QSharedPointer<GoodsItem>::create();
    line->setTmc(article);
    line->setAdditionalBarcode(u"4600000000028"_s);
    line->setPrice(Money::fromRubles(45.50));
    line->setQuantity(2);
    return line;
}

void require(bool done, BasicLoyaltySystem &loyalty)
{
    if (!done)
        throw BasicException(loyalty.getLastErrorString());
}

// The life of a check, in the order in which a plugin expects it.
void sell(BasicLoyaltySystem &loyalty, const QString &cardNumber)
{
    const auto check = QSharedPointer<SaleDocument>::create();
    loyalty.setDocument(check);
    loyalty.cancel(); // The customer found for the previous check must not become this one's.
    check->addGoodsItem(bread());

    auto card = QSharedPointer<DocumentCardRecord>::create();
    card->setNumber(cardNumber);
    card->setLoyaltySystemCode(loyalty.getLoyaltySystemCode());
    check->addCard(card); // Before it is identified: the plugin looks for its card on the check.
    require(loyalty.identifyByCard(card, ECardNumberType::Manual), loyalty);

    require(loyalty.request(check), loyalty);
    if (loyalty.hasPointsForSpend()) {
        loyalty.spendPoints();
        for (const auto impacts = loyalty.getBonusImpactsForSpend(); const auto &impact : impacts)
            check->addImpact(impact);
    }
    const auto document = QVariant::fromValue(check.staticCast<AbstractDocument>());
    Singleton<ActivityNotifier>::instance()->notify(Event(EventCode::PaymentStarted, {{u"document"_s, document}}));
    loyalty.commit(check);
    QTextStream(stdout) << "paid " << check->getTotal().toText() << ", points " << check->getDiscountSum().toText()
                        << ", order " << card->getOperationId() << Qt::endl;
    loyalty.clearAfterClose();
    loyalty.setDocument(nullptr);
}

// Sends one queued event as it was stored. It counts as delivered when the service itself says so; anything else
// throws, and the queue tries again later.
void send(const QJsonObject &event)
{
    QHash<QString, QString> headers;
    const QJsonObject stored = event.value("headers"_L1).toObject();
    for (auto header = stored.begin(); header != stored.end(); ++header)
        headers.insert(header.key(), header.value().toString());
    RestClient client;
    client.request(QNetworkAccessManager::PostOperation, QUrl(event.value("url"_L1).toString()),
                   QJsonDocument(event.value("payload"_L1).toObject()), headers);
    const http::Response answer = client.response();
    if (answer.networkError() != QNetworkReply::NoError || !answer.json().object().value("success"_L1).toBool())
        throw BasicException(answer.errorText());
}

int run(const QStringList &arguments)
{
    if (arguments.size() != 4) {
        QTextStream(stderr) << "Usage: smallest-host CONFIG.ini /path/of/libKvo.so CARD" << Qt::endl;
        return 2;
    }
    // Before the plugin is loaded: it reads its settings when it is made.
    Singleton<Config>::replace(QSharedPointer<Config>::create(arguments.at(1)));
    QPluginLoader loader(arguments.at(2));
    auto *loyalty = qobject_cast<BasicLoyaltySystem *>(loader.instance());
    if (!loyalty)
        throw BasicException(u"%1: %2"_s.arg(arguments.at(2), loader.errorString()));
    if (!loyalty->init())
        throw BasicException(u"%1 is registered already"_s.arg(arguments.at(2)));
    sell(*loyalty, arguments.at(3));

    QueueDrain drain;
    drain.setHandler(u"kvo"_s, send);
    drain.start();
    const bool delivered = drain.waitUntilDrained(std::chrono::seconds(10));
    drain.stop();
    loyalty->deinit();
    Singleton<DBQueueBroker>::replace(nullptr); // Databases are closed before Qt is gone.
    return delivered ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    try {
        return run(QCoreApplication::arguments());
    } catch (const BasicException &error) {
        QTextStream(stderr) << error.text().ru() << Qt::endl;
        return 1;
    }
}
