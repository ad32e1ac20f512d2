// A long queue, drained into a real HTTP server: what arrives, in which order, what is set aside, and how fast, beside
// the same bytes sent by bare libcurl in the same run. Exit status 1: a count or an order was wrong.
#include "bench/barecurl.h"
#include "client/interface.h"
#include "queue-load-receiver.h"
#include "tests/support/fakeconfig.h"

#include <core/basicexception.h>
#include <core/logsetup.h>
#include <queue/dbqueuebroker.h>
#include <queue/queueadmin.h>
#include <queue/queuedrain.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>

#include <iostream>
#include <numeric>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int eventsPerOrder = 20;
constexpr int eventsPerRefusal =
    100; // one in this many is refused: the last of its order, so that none waits behind it
constexpr auto longestDrain = std::chrono::minutes(10);

QString basketOf(int order)
{
    return u"order-%1"_s.arg(order);
}

/// How many of each there are.
struct Load
{
    int events;
    int orders = events / eventsPerOrder;
    int refused = events / eventsPerRefusal;

    bool isRefused(int order) const { return order < refused; }
};

std::set<std::string> refusedBaskets(const Load &load)
{
    std::set<std::string> baskets;
    for (int order = 0; order < load.orders; ++order)
        if (load.isRefused(order))
            baskets.insert(basketOf(order).toStdString());
    return baskets;
}

// In the sequence of their pushes: the orders interleaved.
QList<QJsonObject> makeEvents(const Load &load, const QString &address)
{
    QList<QJsonObject> events;
    for (int number = 0; number < eventsPerOrder; ++number)
        for (int order = 0; order < load.orders; ++order) {
            const QJsonObject body{
                {u"basket"_s, basketOf(order)}, {u"number"_s, number}, {u"lines"_s, QString(1000, u'x')}};
            const kvo::Request request{QNetworkAccessManager::PostOperation,
                                       QUrl(address + u"/queue"_s),
                                       {{u"Content-Type"_s, u"application/json"_s}},
                                       QJsonDocument(body)};
            events.append(request.toQueueEvent());
        }
    return events;
}

/// Runs the action for each event and returns how many were done in a second.
template <class Action>
double rate(qsizetype events, Action action)
{
    QElapsedTimer timer;
    timer.start();
    action();
    return static_cast<double>(events) * 1e9 / static_cast<double>(timer.nsecsElapsed());
}

double push(const QList<QJsonObject> &events)
{
    DBQueueBroker broker;
    return rate(events.size(), [&] {
        for (const QJsonObject &event : events)
            broker.push(u"kvo"_s, event, {});
    });
}

double drain(const QList<QJsonObject> &events)
{
    const kvo::Interface client;
    QueueDrain drain;
    drain.setHandler(u"kvo"_s, [&client](const QJsonObject &event) { client.requestFromQueue(event); });
    return rate(events.size(), [&drain] {
        drain.start();
        if (!drain.waitUntilDrained(longestDrain))
            std::cout << "FAILED: the queue was not drained in time\n";
    });
}

double sendByBareCurl(const QList<QJsonObject> &events, const QString &address)
{
    QList<bench::Exchange> exchanges;
    for (const QJsonObject &event : events)
        exchanges.append({address.toUtf8() + "/bare",
                          QJsonDocument(event.value(u"payload").toObject()).toJson(QJsonDocument::Compact),
                          {"Content-Type: application/json"}});
    bench::BareCurl curl(exchanges.constFirst());
    return rate(exchanges.size(), [&] {
        for (const bench::Exchange &exchange : exchanges)
            curl.send(exchange);
    });
}

// Each order's events exactly once, from the first on, without the refused one.
int ordersArrivedWhole(const Load &load, const QueueLoadReceiver &receiver)
{
    int whole = 0;
    for (int order = 0; order < load.orders; ++order) {
        std::vector<int> expected(eventsPerOrder - (load.isRefused(order) ? 1 : 0));
        std::iota(expected.begin(), expected.end(), 0);
        const auto arrived = receiver.accepted().find(basketOf(order).toStdString());
        whole += arrived != receiver.accepted().end() && arrived->second == expected ? 1 : 0;
    }
    return whole;
}

std::size_t eventsArrived(const QueueLoadReceiver &receiver)
{
    return std::accumulate(receiver.accepted().begin(), receiver.accepted().end(), std::size_t{0},
                           [](std::size_t sum, const auto &entry) { return sum + entry.second.size(); });
}

// The orders whose refused event is what the queue still holds.
std::set<std::string> ordersSetAside(const QList<QueueAdmin::Entry> &left)
{
    std::set<std::string> orders;
    for (const QueueAdmin::Entry &entry : left)
        if (entry.state == QueueAdmin::State::SetAside && entry.attempts == 1)
            orders.insert(entry.order.toStdString());
    return orders;
}

bool judge(const Load &load, const QueueLoadReceiver &receiver)
{
    const QList<QueueAdmin::Entry> left = QueueAdmin().list();
    const std::set<std::string> setAside = ordersSetAside(left);
    const auto arrived = static_cast<int>(eventsArrived(receiver));
    const int whole = ordersArrivedWhole(load, receiver);
    std::cout << "delivered " << arrived << " of " << load.events - load.refused << ", orders complete and in order "
              << whole << " of " << load.orders << "\nset aside " << setAside.size() << " of " << load.refused
              << ", refused by the receiver " << receiver.refusals() << ", left in the queue " << left.size() << '\n';
    return arrived == load.events - load.refused && whole == load.orders && setAside == refusedBaskets(load) &&
           receiver.refusals() == load.refused && left.size() == load.refused;
}

// `postgres`: where the server's socket is; empty: a file keeps the queue.
QVariantHash settings(const QString &folder, const QString &address, const QString &postgres)
{
    QVariantHash values{
        {u"Host:dataFolder"_s, folder}, {u"Kvo:host"_s, address}, {u"Log:file"_s, folder + u"/queue-load.log"_s}};
    if (!postgres.isEmpty())
        values.insert({{u"Queue:driver"_s, u"QPSQL"_s},
                       {u"Queue:host"_s, postgres},
                       {u"Queue:user"_s, u"postgres"_s},
                       {u"Queue:database"_s, u"postgres"_s}});
    return values;
}

bool run(const Load &load, const QString &postgres)
{
    QueueLoadReceiver receiver(refusedBaskets(load), eventsPerOrder - 1);
    const QString address = u"http://127.0.0.1:%1"_s.arg(receiver.port());
    const QTemporaryDir folder;
    const FakeConfig config(settings(folder.path(), address, postgres));
    setUpLogging(*Singleton<Config>::instance());
    const QList<QJsonObject> events = makeEvents(load, address);
    const double pushed = push(events);
    const double drained = drain(events);
    const double bare = sendByBareCurl(events, address);
    const bool right = judge(load, receiver);
    std::cout << "pushed " << qRound(pushed) << "/s, drained " << qRound(drained) << "/s, bare libcurl " << qRound(bare)
              << "/s: the queue takes " << bare / drained << " times as long\n"
              << (right ? "" : "FAILED: a count or an order is wrong\n");
    return right;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({u"events"_s, u"How many events; one in a hundred is refused"_s, u"number"_s, u"10000"_s});
    parser.addOption({u"postgres"_s, u"Folder of the socket of a fresh PostgreSQL server that keeps the queue"_s,
                      u"folder"_s, qEnvironmentVariable("KVO_POSTGRES")});
    parser.process(application);
    const Load load{parser.value(u"events"_s).toInt()};
    if (load.events <= 0 || load.events % eventsPerRefusal != 0) {
        std::cerr << "--events: expected a multiple of " << eventsPerRefusal << '\n';
        return 2;
    }
    try {
        return run(load, parser.value(u"postgres"_s)) ? 0 : 1;
    } catch (const std::exception &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
