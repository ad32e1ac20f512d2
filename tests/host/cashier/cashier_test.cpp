// What is asked of the cashier, and what happens on the answer: codes, questions, and a card taken off a check.
#include "tests/support/checkbuilder.h"

#include <cashier/cardaddlogic.h>
#include <cashier/cashierui.h>
#include <cashier/dialog.h>
#include <cashier/savetofilelogic.h>
#include <cashier/verificationlogic.h>
#include <core/basicexception.h>
#include <core/currenttime.h>
#include <core/mockfactory.h>
#include <core/singleton.h>
#include <loyalty/loyaltysystems.h>

#include <gmock/gmock.h>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

using testing::_;
using testing::HasSubstr;
using testing::StrictMock;

// Answers the prompts for a code one after the other; each answer takes its time, and nothing else does.
class Keyboard : public CashierUi, public CurrentTime
{
public:
    struct Answer
    {
        std::optional<QString> code;
        std::chrono::milliseconds takes{};
    };

    QDateTime currentDateTime() const override { return now; }

    bool ask(const tr::Tr &, const tr::Tr &, const tr::Tr &) override { return first; }

    std::optional<QString> enterCode(const tr::Tr &prompt, std::chrono::milliseconds timeLeft) override
    {
        prompts.append(prompt.ru());
        timesLeft.append(timeLeft);
        if (answers.isEmpty())
            return std::nullopt;
        const Answer answer = answers.takeFirst();
        now = now.addMSecs(answer.takes.count());
        return answer.code;
    }

    bool first = false;
    QDateTime now = QDateTime::currentDateTime();
    QList<Answer> answers;
    QStringList prompts;
    QList<std::chrono::milliseconds> timesLeft;
};

class CashierTest : public testing::Test
{
protected:
    CashierTest()
    {
        Singleton<CashierUi>::replace(keyboard);
        MockFactory<CurrentTime>::install(keyboard);
    }

    ~CashierTest() override
    {
        Singleton<CashierUi>::replace({});
        MockFactory<CurrentTime>::clear();
    }

    // Empty: confirmed.
    static std::string verify(const QString &code, const tr::Tr &prompt = {})
    {
        try {
            VerificationLogic().verify(code, prompt, 0);
        } catch (const BasicException &error) {
            return error.what();
        }
        return {};
    }

    QSharedPointer<Keyboard> keyboard = QSharedPointer<Keyboard>::create();
};

TEST_F(CashierTest, ConfirmsTheCustomerOnlyByTheRightCodeInTime)
{
    const QString right = u"0417"_s;
    const QString wrong = u"0418"_s;
    const struct
    {
        const char *label;
        QList<Keyboard::Answer> answers;
        qsizetype prompts;
        const char *refusal; ///< Empty: confirmed.
        QString code = u"0417"_s;
    } cases[] = {
        {"right at once", {{right}}, 1, ""},
        {"blanks around the code", {{u"\t0417 \n"_s}}, 1, ""},
        {"right at the third attempt", {{wrong}, {u""_s}, {right}}, 3, ""},
        {"three wrong codes", {{wrong}, {wrong}, {wrong}, {right}}, 3, "трижды"},
        {"a part of the code", {{u"041"_s}, {u"04170"_s}, {u"417"_s}}, 3, "трижды"},
        {"given up after a wrong code", {{wrong}, {std::nullopt}}, 2, "отменён"},
        {"just in time", {{right, 5min - 1ms}}, 1, ""},
        {"right but too late", {{right, 5min}}, 1, "истекло"},
        {"nobody answers until the time is over", {{std::nullopt, 5min}}, 1, "истекло"},
        {"the time is shared by all attempts", {{wrong, 3min}, {right, 2min}}, 2, "истекло"},
        {"no code is never right", {{u""_s}, {u" "_s}, {u""_s}}, 3, "трижды", {}},
    };
    for (const auto &[label, answers, prompts, refusal, code] : cases) {
        SCOPED_TRACE(label);
        keyboard->prompts.clear();
        keyboard->answers = answers;
        const std::string error = verify(code);
        EXPECT_EQ(error.empty(), *refusal == '\0') << error;
        EXPECT_THAT(error, HasSubstr(refusal));
        EXPECT_THAT(error, testing::Not(HasSubstr("0417")));
        EXPECT_EQ(keyboard->prompts.size(), prompts);
    }
}

TEST_F(CashierTest, TellsHowManyAttemptsAndHowMuchTimeAreLeft)
{
    keyboard->answers = {{u"1"_s, 1min}, {u"2"_s, 30s}, {u"3"_s}};
    verify(u"0417"_s, tr::Tr(u"Код из %1 сообщения"_s));
    EXPECT_EQ(keyboard->prompts,
              (QStringList{u"Код из %1 сообщения"_s, u"Неверный код. Осталось попыток: 2.\nКод из %1 сообщения"_s,
                           u"Неверный код. Осталось попыток: 1.\nКод из %1 сообщения"_s}));
    EXPECT_EQ(keyboard->timesLeft, (QList<std::chrono::milliseconds>{5min, 4min, 3min + 30s}));
}

TEST_F(CashierTest, AnswersAQuestionWithTheValueOfTheChosenButton)
{
    for (const bool first : {true, false}) {
        keyboard->first = first;
        EXPECT_EQ(Dialog().question({}, 1, {}, {}, 0), first);
        EXPECT_EQ(Dialog().question({}, 0, {}, {}, 1), !first);
    }
    // A program without a cashier never repeats for ever and never confirms.
    Singleton<CashierUi>::replace({});
    EXPECT_FALSE(Dialog().question({}, 1, {}, {}, 0));
    EXPECT_THAT(verify(u"0417"_s), HasSubstr("отменён"));
}

class Loyalty : public BasicLoyaltySystem
{
public:
    Loyalty() { loyaltySystemCode = 26; }
    MOCK_METHOD(bool, rollback, (const QSharedPointer<AbstractDocument> &), (override));
    MOCK_METHOD(bool, cancel, (), (override));
};

class Saver : public SaveToFileLogic
{
public:
    MOCK_METHOD(void, save, (const QSharedPointer<AbstractDocument> &, const QString &, double), (override));
};

class RemoveCardTest : public testing::Test
{
protected:
    RemoveCardTest()
    {
        MockFactory<SaveToFileLogic>::install(saver);
        check->addCard(card);
        check->addImpact(builder::discount(10, card));
        system.setDocument(check);
        system.setPluginData(u"pointsForSpend"_s, 10);
    }

    ~RemoveCardTest() override
    {
        MockFactory<SaveToFileLogic>::clear();
        Singleton<LoyaltySystems>::replace({});
    }

    QSharedPointer<StrictMock<Saver>> saver = QSharedPointer<StrictMock<Saver>>::create();
    QSharedPointer<SaleDocument> check = builder::check({10000});
    QSharedPointer<DocumentCardRecord> card = builder::card(u"2600001"_s, 26);
    StrictMock<Loyalty> system;
};

TEST_F(RemoveCardTest, UndoesTheOrderBeforeTheCardGoesAndSavesAfterwards)
{
    system.init();
    const auto cardIsThere = [this] { EXPECT_EQ(system.getCard(), card); };
    const testing::InSequence inSequence;
    EXPECT_CALL(system, rollback(testing::Eq(check))).WillOnce(testing::DoAll(cardIsThere, testing::Return(true)));
    EXPECT_CALL(system, cancel()).WillOnce(testing::DoAll(cardIsThere, testing::Return(true)));
    EXPECT_CALL(*saver, save(testing::Eq(check), QString(), 0.0)).WillOnce([this] {
        EXPECT_TRUE(check->getCardRecords().isEmpty());
        EXPECT_TRUE(check->getDiscountSum().isZero());
        EXPECT_TRUE(system.getPluginData().isEmpty());
    });
    CardAddLogic().removeCard(check, card);
}

TEST_F(RemoveCardTest, KeepsTheCardWhenTheCancellationCannotBeStored)
{
    system.init();
    EXPECT_CALL(system, rollback(_)).WillOnce(testing::Throw(BasicException(u"queue"_s)));
    EXPECT_THROW(CardAddLogic().removeCard(check, card), BasicException);
    EXPECT_EQ(check->getCardRecords(), QList{card});
    EXPECT_EQ(check->getDiscountSum().kopecks(), 1000);
    EXPECT_FALSE(system.getPluginData().isEmpty());
}

TEST_F(RemoveCardTest, NeedsACardOfTheCheckButNoLoyaltySystem)
{
    CardAddLogic().removeCard({}, card);
    CardAddLogic().removeCard(check, {});
    CardAddLogic().removeCard(check, builder::card(u"2600001"_s, 26));
    EXPECT_EQ(check->getCardRecords(), QList{card});
    EXPECT_CALL(*saver, save(_, _, _));
    CardAddLogic().removeCard(check, card);
    EXPECT_TRUE(check->getCardRecords().isEmpty());
}

} // namespace
