// What is asked of the cashier, and what happens on the answer: codes, and a card taken off a check.
#include "tests/support/checkbuilder.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/installed.h"
#include "tests/support/refusal.h"
#include "tests/support/test.h"

#include <cashier/cardaddlogic.h>
#include <cashier/cashierui.h>
#include <cashier/dialog.h>
#include <cashier/verificationlogic.h>
#include <core/currenttime.h>
#include <loyalty/basicloyaltysystem.h>

using namespace std::chrono_literals;

namespace {

// Answers the prompts for a code one after the other; each answer takes its time, and nothing else does.
struct Keyboard : CashierUi, CurrentTime
{
    struct Answer
    {
        std::optional<QString> code;
        std::chrono::milliseconds takes{};
    };

    QDateTime currentDateTime() const override { return now; }

    std::optional<QString> enterCode(const tr::Tr &prompt, std::chrono::milliseconds left, int attemptsLeft) override
    {
        EXPECT_TRUE(prompt.ru().endsWith(u"Какой код?"_s) && left > 0ms && left <= 5min) << prompt.ru().toStdString();
        EXPECT_EQ(prompt.ru().startsWith(u"Неверный код. Осталось попыток: %1."_s.arg(attemptsLeft)), prompts > 0);
        ++prompts;
        if (answers.isEmpty())
            return std::nullopt;
        const Answer answer = answers.takeFirst();
        now = now.addMSecs(answer.takes.count());
        return answer.code;
    }

    QDateTime now = QDateTime::currentDateTime();
    QList<Answer> answers;
    int prompts = 0;
};

struct CashierTest : testing::Test
{
    CashierTest() { Singleton<CashierUi>::replace(keyboard.object); }
    ~CashierTest() override { Singleton<CashierUi>::replace({}); }

    // Empty: confirmed.
    static std::string verify(const QString &code)
    {
        return refusalOf([&] { VerificationLogic().verify(code, tr::Tr(u"Какой код?"_s), 0); }).toStdString();
    }

    Installed<CurrentTime, Keyboard> keyboard;
};

TEST_F(CashierTest, ConfirmsTheCustomerOnlyByTheRightCodeInTime)
{
    const QString right = u"0417"_s;
    const QString wrong = u"0418"_s;
    // Label, answers, the number of prompts, and the refusal, which is empty when the code is confirmed.
    const std::tuple<const char *, QList<Keyboard::Answer>, int, const char *> cases[] = {
        {"right at once", {{right}}, 1, ""},
        {"blanks around the code", {{u"\t0417 \n"_s}}, 1, ""},
        {"right at the third attempt", {{wrong}, {u""_s}, {right}}, 3, ""},
        {"three wrong codes", {{wrong}, {u"1417"_s}, {wrong}, {right}}, 3, "трижды"},
        {"a part of the code", {{u"041"_s}, {u"04170"_s}, {u"417"_s}}, 3, "трижды"},
        {"given up after a wrong code", {{wrong}, {std::nullopt}}, 2, "отменён"},
        {"just in time", {{right, 5min - 1ms}}, 1, ""},
        {"right but too late", {{right, 5min}}, 1, "истекло"},
        {"nobody answers until the time is over", {{std::nullopt, 5min}}, 1, "истекло"},
        {"the time is shared by all attempts", {{wrong, 3min}, {right, 2min}}, 2, "истекло"},
    };
    for (const auto &[label, answers, prompts, refusal] : cases) {
        SCOPED_TRACE(label);
        keyboard->prompts = 0;
        keyboard->answers = answers;
        const std::string error = verify(right);
        EXPECT_EQ(error.empty(), *refusal == '\0') << error;
        EXPECT_THAT(error, HasSubstr(refusal));
        EXPECT_THAT(error, testing::Not(HasSubstr("0417")));
        EXPECT_EQ(keyboard->prompts, prompts);
    }
    keyboard->prompts = 0;
    keyboard->answers = {{u""_s}, {u" "_s}, {u""_s}};
    EXPECT_THAT(verify({}), HasSubstr("трижды")) << "no code is never right";
}

TEST_F(CashierTest, NobodyAtTheTillChoosesTheSecondButton)
{
    EXPECT_FALSE(Dialog().question({}, 1, {}, {}, 0));
    EXPECT_TRUE(Dialog().question({}, 0, {}, {}, 2));
}

struct Loyalty : BasicLoyaltySystem
{
    Loyalty() { loyaltySystemCode = 26; }
    bool rollback(const QSharedPointer<AbstractDocument> &) override
    {
        return queueIsFull ? throw BasicException(u"queue"_s) : true;
    }
    bool queueIsFull = true;
};

TEST(CardAddLogic, KeepsTheCardUntilTheCancellationIsStored)
{
    const QTemporaryDir folder;
    const FakeConfig config({{u"Host:dataFolder"_s, folder.path()}});
    const auto check = builder::check({10000});
    const auto card = builder::card(u"2600001"_s, 26);
    check->addCard(card);
    check->addImpact(builder::discount(10, card));
    Loyalty system;
    system.setDocument(check);
    system.setPluginData(u"pointsForSpend"_s, 10);
    system.setPointsForSpend(10);
    system.init();
    const auto second = builder::card(u"2600002"_s, 26);
    check->addCard(second);
    CardAddLogic().removeCard(check, second); // The order is the first one's.
    EXPECT_THROW(CardAddLogic().removeCard(check, card), BasicException);
    EXPECT_EQ(check->getCardRecords(), QList{card});
    EXPECT_EQ(check->getDiscountSum().kopecks(), 1000);
    EXPECT_FALSE(system.getPluginData().isEmpty());

    system.queueIsFull = false;
    CardAddLogic().removeCard(check, card);
    EXPECT_TRUE(check->getCardRecords().isEmpty() && check->getDiscountSum().isZero());
    EXPECT_TRUE(system.getPluginData().isEmpty() && !system.hasPointsForSpend())
        << "points would come back after a restart";
    EXPECT_EQ(builder::text(*CheckStore(folder.path()).restore()), builder::text(*check)) << "saved";
}

} // namespace
