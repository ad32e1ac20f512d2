// Sells receipts as a cashier would: goods, card, price, points, close; each operation is timed.
#include "replayworker.h"

#include "console.h"
#include "sellingtill.h"

#include <core/basicexception.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Tries again a few times, then goes on without the card. Has no codes: they are abandoned.
class ReplayCashier : public CashierUi
{
public:
    bool ask(const tr::Tr &message, const tr::Tr & /*first*/, const tr::Tr & /*second*/) override
    {
        show(message);
        return m_retries-- > 0;
    }
    std::optional<QString> enterCode(const tr::Tr &prompt, std::chrono::milliseconds /*timeLeft*/,
                                     int /*attemptsLeft*/) override
    {
        show(prompt);
        return std::nullopt;
    }
    void show(const tr::Tr &message) override { m_messages.append(message.ru().simplified()); }

    /// What was shown since the last call; the next check begins.
    QStringList takeMessages()
    {
        m_retries = retriesPerCheck;
        return std::exchange(m_messages, {});
    }

private:
    static constexpr int retriesPerCheck = 2;
    int m_retries = retriesPerCheck;
    QStringList m_messages;
};

class ReplayTill
{
public:
    ReplayTill(CheckSession &session, const BasicLoyaltySystem &system, ReplayCashier &cashier)
        : m_session(session), m_system(system), m_cashier(cashier)
    {}

    ReplayedReceipt sell(qsizetype index, const Receipt &receipt)
    {
        m_replayed = {};
        m_replayed.index = index;
        attempt([&] { sell(receipt); });
        if (m_session.isOpen()) // Closing has failed; what cannot even be voided ends the till.
            m_session.voidCheck();
        m_replayed.messages = m_cashier.takeMessages();
        if (!receipt.customer.isEmpty() && m_replayed.isClosed && !m_hasCard)
            m_replayed.messages.append(u"closed without the customer's card"_s);
        return m_replayed;
    }

private:
    void sell(const Receipt &receipt)
    {
        m_session.open();
        for (const Goods &goods : receipt.goods)
            timed(u"add line"_s, [&] { m_session.addGoods(makeItem(goods)); });
        if (!receipt.customer.isEmpty())
            attempt([&] { useCard(cardOf(receipt.customer)); });
        CheckResult result;
        timed(u"close"_s, [&] { result = m_session.close(); });
        m_replayed.isClosed = result.outcome == "closed"_L1;
        m_hasCard = !result.card.isEmpty();
        m_replayed.sum = result.sum();
        m_replayed.spent = result.spent();
        m_replayed.earned = result.earned;
    }

    void useCard(const QString &number)
    {
        timed(u"identify"_s, [&] { m_session.addCard(ECardNumberType::Scanned, number); });
        timed(u"price"_s, [&] { m_session.price(); });
        if (m_system.hasPointsForSpend())
            timed(u"spend"_s, [&] { m_session.spend(); });
    }

    template <class Operation>
    void timed(const QString &name, Operation operation)
    {
        QElapsedTimer timer;
        timer.start();
        operation();
        constexpr double nanosecondsPerMillisecond = 1e6;
        m_replayed.milliseconds[name].append(static_cast<double>(timer.nsecsElapsed()) / nanosecondsPerMillisecond);
    }

    template <class Operation>
    void attempt(Operation operation)
    {
        try {
            operation();
        } catch (const BasicException &error) {
            m_cashier.show(error.text());
        }
    }

    CheckSession &m_session;
    const BasicLoyaltySystem &m_system;
    ReplayCashier &m_cashier;
    ReplayedReceipt m_replayed;
    bool m_hasCard = false;
};

} // namespace

QByteArray ReplayedReceipt::toJson() const
{
    QJsonObject times;
    for (auto operation = milliseconds.cbegin(); operation != milliseconds.cend(); ++operation) {
        QJsonArray array;
        for (const double time : operation.value())
            array.append(time);
        times.insert(operation.key(), array);
    }
    const QJsonObject object{{u"index"_s, index},
                             {u"closed"_s, isClosed},
                             {u"milliseconds"_s, times},
                             {u"messages"_s, QJsonArray::fromStringList(messages)},
                             {u"sum"_s, sum.kopecks()},
                             {u"spent"_s, spent.kopecks()},
                             {u"earned"_s, earned.kopecks()}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

ReplayedReceipt ReplayedReceipt::fromJson(const QByteArray &line)
{
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    const auto money = [&object](QLatin1StringView key) { return Money::fromKopecks(object.value(key).toInteger()); };
    ReplayedReceipt receipt;
    receipt.index = object.value("index"_L1).toInteger(-1);
    receipt.isClosed = object.value("closed"_L1).toBool();
    receipt.sum = money("sum"_L1);
    receipt.spent = money("spent"_L1);
    receipt.earned = money("earned"_L1);
    const QJsonObject times = object.value("milliseconds"_L1).toObject();
    for (auto operation = times.begin(); operation != times.end(); ++operation) {
        for (const QJsonArray array = operation.value().toArray(); const auto &time : array)
            receipt.milliseconds[operation.key()].append(time.toDouble());
    }
    for (const QJsonArray array = object.value("messages"_L1).toArray(); const auto &message : array)
        receipt.messages.append(message.toString());
    return receipt;
}

bool replayReceipts(const Day &day, const QString &configFile, std::chrono::seconds drainTime)
{
    const auto cashier = QSharedPointer<ReplayCashier>::create();
    SellingTill shop(configFile, cashier);
    if (shop.system().getLoyaltySystemCode() == 0) // its stand-in
        throw BasicException(shop.system().getLastErrorString());
    CheckSession &session = shop.session();
    session.resume();
    if (session.isOpen())
        session.voidCheck();
    std::ignore = cashier->takeMessages();
    ReplayTill till(session, shop.system(), *cashier);
    while (const std::optional<QString> line = console::readLine({})) {
        bool isNumber = false;
        const qsizetype index = line->toLongLong(&isNumber);
        if (!isNumber || index < 0 || index >= day.receipts.size())
            throw BasicException(u"--worker: \"%1\" is not the number of a receipt of the day"_s.arg(*line));
        const ReplayedReceipt replayed = till.sell(index, day.receipts.at(index));
        shop.drain().wakeUp();
        console::printLine(QString::fromUtf8(replayed.toJson()));
    }
    session.endWaiting();
    shop.drain().wakeUp();
    const bool isDrained = shop.drain().waitUntilDrained(drainTime);
    const QueueStatus left = shop.host().queue().status();
    if (left.waiting + left.blocked > 0)
        std::fprintf(stderr, "kvo-till: %d requests wait and %d are blocked; see kvo-till queue --config %s\n",
                     left.waiting, left.blocked, qUtf8Printable(configFile));
    return isDrained && left.blocked == 0;
}

} // namespace till
