// A long queue, drained into a real HTTP server: what arrives, in which order, and what is refused. Exit status 1: a
// count or an order was wrong.
#include "client/interface.h"
#include "client/refusal.h"
#include "simulator/loopbackserver.h"
#include "tests/support/fakeconfig.h"

#include <core/basicexception.h>
#include <core/logsetup.h>
#include <queue/dbqueuebroker.h>
#include <queue/queueadmin.h>
#include <queue/queuedrain.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>

#include <iostream>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int eventsPerOrder = 20;
constexpr int eventsPerRefusal =
    100; // one in this many is refused: the last of its order, so that none waits behind it
constexpr auto longestDrain = std::chrono::minutes(10);

using Numbers = QMap<QString, QList<int>>; ///< Of the events of each order.

/// What is to arrive, and what is to be refused: one event of some orders.
struct Load
{
    explicit Load(int ofEvents) : events(ofEvents)
    {
        for (int order = 0; order < events / eventsPerOrder; ++order)
            for (int number = 0; number < eventsPerOrder; ++number) {
                const bool isRefused = number == eventsPerOrder - 1 && order < events / eventsPerRefusal;
                (isRefused ? refused : accepted)[u"order-%1"_s.arg(order)].append(number);
            }
    }

    int events;
    Numbers accepted;
    Numbers refused;
};

/// Answers as the service does, in as little time as possible, and notes what comes.
class Receiver : public sim::LoopbackServer
{
public:
    explicit Receiver(const Load &load) : m_load(load)
    {
        m_server.Post(".*", [this](const auto &request, auto &response) { receive(request, response); });
    }

    /// As they came. To be called when nothing is sent any more.
    Numbers accepted;
    Numbers refused;

private:
    void receive(const httplib::Request &request, httplib::Response &response)
    {
        const QJsonObject event = QJsonDocument::fromJson(QByteArray::fromStdString(request.body)).object();
        const QString basket = event.value(u"basket").toString();
        const int number = event.value(u"number").toInt(-1);
        const bool isRefused = m_load.refused.value(basket).contains(number);
        response.status = isRefused ? 404 : 200;
        response.set_content(isRefused ? R"({"success":false,"message":"order not found"})" : R"({"success":true})",
                             "application/json");
        const std::scoped_lock lock(m_mutex);
        (isRefused ? refused : accepted)[basket].append(number);
    }

    const Load &m_load;
    std::mutex m_mutex;
};

/// The orders interleaved.
void push(const Load &load, const QUrl &url)
{
    DBQueueBroker broker;
    for (int number = 0; number < eventsPerOrder; ++number)
        for (const QString &basket : load.accepted.keys()) {
            const QJsonObject body{{u"basket"_s, basket}, {u"number"_s, number}, {u"lines"_s, QString(1000, u'x')}};
            const kvo::Request request{QNetworkAccessManager::PostOperation,
                                       url,
                                       {{u"Content-Type"_s, u"application/json"_s}},
                                       QJsonDocument(body)};
            broker.push(u"kvo"_s, request.toQueueEvent(), {});
        }
}

void drain()
{
    const kvo::Interface client;
    QueueDrain drain;
    drain.setHandler(u"kvo"_s, [&client](const QJsonObject &event) {
        try {
            client.requestFromQueue(event);
        } catch (const kvo::Refusal &refusal) {
            throw QueueRefusal(refusal.text());
        }
    });
    drain.start();
    if (!drain.waitUntilDrained(longestDrain))
        std::cout << "FAILED: the queue was not drained in time\n";
}

/// Each order's events have come exactly once and in their order, and what was refused is all that is left.
bool judge(const Load &load, const Receiver &receiver)
{
    QStringList deadLetters;
    const QList<QueueAdmin::Entry> left = QueueAdmin().list();
    for (const QueueAdmin::Entry &entry : left)
        if (entry.state == QueueAdmin::State::DeadLetter && entry.attempts == 1)
            deadLetters.append(entry.order);
    deadLetters.sort();
    std::cout << "orders complete and in order: " << (receiver.accepted == load.accepted ? "all" : "NOT all") << " of "
              << load.accepted.size() << ", dead letters " << deadLetters.size() << " of " << load.refused.size()
              << ", left in the queue " << left.size() << '\n';
    return receiver.accepted == load.accepted && receiver.refused == load.refused &&
           deadLetters == load.refused.keys() && left.size() == load.refused.size();
}

QVariantHash settings(const QString &folder, const QString &address)
{
    const QString postgres = qEnvironmentVariable("KVO_POSTGRES"); // where the socket is; empty: a file is the queue
    QVariantHash values{
        {u"Host:dataFolder"_s, folder}, {u"Kvo:host"_s, address}, {u"Log:file"_s, folder + u"/queue-load.log"_s}};
    if (!postgres.isEmpty())
        values.insert({{u"Queue:driver"_s, u"QPSQL"_s},
                       {u"Queue:host"_s, postgres},
                       {u"Queue:user"_s, u"postgres"_s},
                       {u"Queue:database"_s, u"postgres"_s}});
    return values;
}

bool run(const Load &load)
{
    Receiver receiver(load);
    const QString address = u"http://127.0.0.1:%1"_s.arg(receiver.bind(0));
    const QTemporaryDir folder;
    const FakeConfig config(settings(folder.path(), address));
    setUpLogging(*Singleton<Config>::instance());
    const std::jthread serving([&receiver] { receiver.run(); });
    const auto stop = qScopeGuard([&receiver] { receiver.stop(); });
    push(load, QUrl(address));
    drain();
    return judge(load, receiver);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({u"events"_s, u"How many events; one in a hundred is refused"_s, u"number"_s, u"10000"_s});
    parser.process(application);
    const int events = parser.value(u"events"_s).toInt();
    if (events <= 0 || events % eventsPerRefusal != 0) {
        std::cerr << "--events: expected a multiple of " << eventsPerRefusal << '\n';
        return 2;
    }
    try {
        const bool right = run(Load(events));
        std::cout << (right ? "" : "FAILED: a count or an order is wrong\n");
        return right ? 0 : 1;
    } catch (const std::exception &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
