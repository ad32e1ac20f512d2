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
            if (!attempt([this] { step(); }))
                settle();
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
        const QString methods[]{u"calculateOrder"_s, u"createOrder"_s, u"updateOrder"_s, u"cancelOrder"_s};
        if (!m_isCalm && number(10) == 0)
            (number(2) == 0 ? m_host.trouble.killBefore : m_host.trouble.killAfter) = methods[number(4)];
    }

    /// False when it failed; the cashier would be shown why.
    bool attempt(const std::function<void()> &call)
    {
        bool succeeded = true;
        try {
            call();
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
        std::puts("| > Удалить");
        m_host.check->setState(State::Open);
        m_host.save();
        m_host.removeCard();
        return true;
    }

    void identify()
    {
        const QString customer = QString::number(1 + number(4));
        const bool byPhone = number(3) == 0;
        for (int i = 0; i < mostAttempts && !m_host.system().hasCard(); ++i) {
            attempt([&] {
                byPhone ? m_host.identifyByPhone(u"+7900100000"_s + customer)
                        : m_host.identify(u"777000000000"_s + customer);
            });
        }
        if (!attempt([this] { m_host.price(); }))
            settle();
    }

    void step()
    {
        const std::function<void()> steps[]{
            [this] { m_host.price(); },
            [this] { m_host.spend(); },
            [this] {
                m_host.price();
                m_host.spend();
            },
            [this] { m_host.change(1 + number(4)); },
            [this] { m_host.notify(EventCode::SubtotalEntered); },
            [this] { dropResult(number(2) == 0); },
            [this] { m_host.restart(); },
            [this] {
                m_host.removeCard();
                identify();
            },
        };
        steps[number(static_cast<int>(std::size(steps)))]();
    }

    void dropResult(bool withDocument)
    {
        m_host.takePointsOff();
        m_host.notify(EventCode::LoyaltyResultDropped, withDocument);
        m_host.price();
    }

    /// After a call that failed or was killed nobody knows what the service has carried out.
    void settle()
    {
        for (int attempts = 0; m_host.system().hasCard(); ++attempts) {
            if (attempts == mostAttempts)
                m_host.removeCard();
            else if (attempt([this] { dropResult(number(2) == 0); }))
                return;
        }
    }

    void end()
    {
        const bool closing = number(5) > 0;
        disturb();
        if (closing && !attempt([this] { m_host.notify(EventCode::PaymentStarted); }))
            settle();
        if (!closing)
            m_host.takePointsOff();
        const State state = closing ? State::Closed : State::Voided;
        m_host.check->setState(state);
        m_host.save();
        complete(state);
    }

    void complete(State state)
    {
        for (int repetitions = 1 + number(3); repetitions > 0;) {
            disturb();
            m_host.trouble.failingPush = m_isCalm ? 0 : number(4);
            repetitions -= attempt([&] {
                state == State::Closed ? m_host.commit() : m_host.rollback(number(2) == 0 ? m_host.check : nullptr);
            });
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
