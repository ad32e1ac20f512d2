// A host of another make at work: random calls by the rules of docs/integration.md, through the loaded plugin. It kills
// itself at the worst moments, and goes on with the check that a killed run has left open.
// Usage: random-host CONFIG SEED CHECKS; without checks to sell it only ends what is open, and calmly.
#include "tests/sale/loyaltyhost.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

#include <csignal>
#include <cstdio>
#include <random>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using State = SaleDocument::State;

namespace {

constexpr int mostAttempts = 30; // before the card is taken off
constexpr int longestPause = 20; // milliseconds, after a failure

class RandomHost
{
public:
    RandomHost(const QString &configFile, quint64 seed, bool isCalm)
        : m_host(configFile, QStringLiteral(KVO_PLUGIN_FOLDER)), m_random(seed), m_isCalm(isCalm)
    {
        calmDown();
        m_host.restart();
    }

    /// Ends the check that an earlier run has left.
    void goOn()
    {
        if (!m_host.check)
            return;
        if (m_host.check->getState() != State::Open)
            return complete(m_host.check->getState());
        settle();
        end();
    }

    void sell()
    {
        m_host.open();
        identify();
        for (int steps = number(8); steps >= 0; --steps) {
            disturb();
            const bool replaces = number(8) == 0;
            if (!attempt(replaces ? u"remove"_s : randomCalls()))
                settle();
            if (replaces)
                identify();
        }
        end();
    }

private:
    int number(int limit) { return std::uniform_int_distribution(0, limit - 1)(m_random); }

    void calmDown()
    {
        m_host.trouble = {};
        m_host.trouble.kill = [] { std::raise(SIGKILL); };
        m_host.trouble.answer = [this] { return number(20) > 0 || !removesCard(); };
        m_host.trouble.atCodePrompt = [this] {
            if (number(20) == 0)
                removesCard();
        };
    }

    void disturb()
    {
        const QString methods[]{u"calculateOrder"_s, u"createOrder"_s, u"updateOrder"_s,
                                u"cancelOrder"_s,    u"postOrder"_s,   u"bindOrderId"_s};
        if (!m_isCalm && number(10) == 0)
            (number(2) == 0 ? m_host.trouble.killBefore : m_host.trouble.killAfter) = methods[number(6)];
        if (!m_isCalm && number(20) == 0)
            m_host.trouble.failingSave = 1 + number(3);
    }

    /// False when it failed; the cashier would be shown why.
    bool attempt(const QString &calls)
    {
        bool succeeded = true;
        try {
            m_host.play(calls);
        } catch (const BasicException &) {
            succeeded = false;
            QThread::msleep(static_cast<unsigned>(number(longestPause)));
        }
        calmDown();
        return succeeded;
    }

    /// A card that goes while the check is being ended makes it an open one again until it is gone: after a kill nobody
    /// could tell whether the order's cancellation was stored already.
    bool removesCard()
    {
        m_host.check->setState(State::Open);
        m_host.save();
        m_host.play(u"remove"_s);
        return true;
    }

    void identify()
    {
        const QString customer = QString::number(1 + number(4));
        const QString call = (number(3) == 0 ? u"phone:+7900100000"_s : u"card:777000000000"_s) + customer;
        for (int i = 0; i < mostAttempts && !m_host.system().hasCard(); ++i)
            attempt(call);
        if (!attempt(u"price"_s))
            settle();
    }

    QString randomCalls()
    {
        const QString calls[]{
            u"price"_s,    u"spend"_s,   u"price spend"_s, u"change:"_s + QString::number(1 + number(4)),
            u"subtotal"_s, dropResult(), u"restart"_s};
        return calls[number(static_cast<int>(std::size(calls)))];
    }

    QString dropResult() { return u"take-off drop%1 price"_s.arg(number(2) == 0 ? u":blind"_s : QString()); }

    /// After a call that failed or was killed nobody knows what the service has carried out.
    void settle()
    {
        for (int attempts = 0; m_host.system().hasCard(); ++attempts) {
            if (attempts == mostAttempts)
                m_host.play(u"remove"_s);
            else if (attempt(dropResult()))
                return;
        }
    }

    void end()
    {
        const bool closing = number(5) > 0;
        if (closing)
            disturb();
        if (!attempt(closing ? u"payment"_s : u"take-off"_s))
            settle();
        complete(closing ? State::Closed : State::Voided);
    }

    void complete(State state)
    {
        for (int repetitions = 1 + number(3); repetitions > 0;) {
            // At each attempt: a removal of the card that failed in the last one has left the check open.
            m_host.check->setState(state);
            m_host.save();
            disturb();
            m_host.trouble.failingPush = m_isCalm ? 0 : number(4);
            const QString rollback = number(2) == 0 ? u"rollback"_s : u"rollback:blind"_s;
            repetitions -= attempt(state == State::Closed ? u"commit"_s : rollback);
            if (number(6) == 0)
                std::ignore = m_host.deliver(300ms);
        }
        m_host.end(state);
    }

    sale::LoyaltyHost m_host;
    std::mt19937_64 m_random;
    bool m_isCalm;
};

} // namespace

int main(int argc, char *argv[])
try {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    int checks = arguments.at(3).toInt();
    RandomHost host(arguments.at(1), arguments.at(2).toULongLong(), checks == 0);
    for (host.goOn(); checks > 0; --checks)
        host.sell();
} catch (const std::exception &error) {
    std::fprintf(stderr, "random-host: %s\n", error.what());
    return 2;
}
