// The plugin with every collaborator replaced: the service client, the cashier, the queue, the disk and the clock.
#pragma once

#include "plugin/plugin.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/fakedocument.h"
#include "tests/support/json.h"
#include "tests/support/printqt.h"

#include <cashier/cardaddlogic.h>
#include <cashier/dialog.h>
#include <cashier/savetofilelogic.h>
#include <cashier/verificationlogic.h>
#include <core/basicexception.h>
#include <core/currenttime.h>
#include <core/mockfactory.h>
#include <core/singleton.h>
#include <queue/dbqueuebroker.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kvo {

using namespace Qt::Literals::StringLiterals;
using testing::_;
using testing::NiceMock;
using testing::Return;
using testing::Throw;

using DocumentPtr = QSharedPointer<AbstractDocument>;
using CardPtr = QSharedPointer<DocumentCardRecord>;

class MockInterface : public Interface
{
public:
    MockInterface() : Interface(utils::ForMock()) {}
    MOCK_METHOD(QJsonObject, searchCustomer, (const QString &, ECardNumberType), (const, override));
    MOCK_METHOD(QJsonObject, cardInfo, (const QString &, const QString &), (const, override));
    MOCK_METHOD(double, loyaltyBonusInfo, (const QString &, const QString &), (const, override));
    MOCK_METHOD(Response, calculateOrder, (const DocumentPtr &, const CardPtr &), (const, override));
    MOCK_METHOD(Response, createOrder, (const DocumentPtr &, const CardPtr &, bool), (const, override));
    MOCK_METHOD(void, verification, (const QString &, const QString &), (const, override));
    MOCK_METHOD(Response, requestOnline, (const Request &), (const, override));
};

class MockDialog : public Dialog
{
public:
    MOCK_METHOD(bool, question, (const tr::Tr &, int, const tr::Tr &, const tr::Tr &, int), (override));
};

class MockCardAddLogic : public CardAddLogic
{
public:
    MOCK_METHOD(void, removeCard, (const DocumentPtr &, const CardPtr &), (override));
};

class MockVerificationLogic : public VerificationLogic
{
public:
    MOCK_METHOD(void, verify, (const QString &, const tr::Tr &, int), (override));
};

class MockSaveToFileLogic : public SaveToFileLogic
{
public:
    MOCK_METHOD(void, save, (const DocumentPtr &, const QString &, double), (override));
};

class FixedTime : public CurrentTime
{
public:
    QDateTime currentDateTime() const override { return {QDate(2026, 3, 9), QTime(18, 31, 5)}; }
};

class MockQueue : public DBQueueBroker
{
public:
    MOCK_METHOD(void, push, (const QString &, const QJsonObject &, const QString &), (override));
};

/// Everything protected opened for the tests.
class OpenPlugin : public Plugin
{
public:
    using Plugin::bonusImpacts;
    using Plugin::bonusRecords;
    using Plugin::customer;
    using Plugin::interface;
    using Plugin::orderCreated;
    using Plugin::pendingUpdate;
    using Plugin::Plugin;
    using Plugin::pointsForEarn;
    using Plugin::pointsForSpend;
};

/// Installs a mock in the factory until the test ends.
template <class Mock, class Real>
struct Installed
{
    Installed() { MockFactory<Real>::install(object); }
    ~Installed() { MockFactory<Real>::clear(); }
    Q_DISABLE_COPY_MOVE(Installed)
    Mock *operator->() const { return object.get(); }
    Mock &operator*() const { return *object; }

    QSharedPointer<Mock> object = QSharedPointer<Mock>::create();
};

/// A check of two lines with the card 2000, whose order "basket-1" was priced.
class PluginTest : public testing::Test
{
protected:
    PluginTest()
    {
        plugin.interface = client;
        Singleton<DBQueueBroker>::replace(queue);
        ON_CALL(*queue, push).WillByDefault([this](const auto &owner, const auto &event, const auto &key) {
            EXPECT_EQ(owner, u"kvo");
            EXPECT_TRUE(key.isNull());
            queued.append(event.value("url"_L1).toString().section(u'/', -1));
        });
        card->setNumber(u"2000"_s);
        card->setLoyaltySystemCode(plugin.getLoyaltySystemCode());
        card->setOperationId(u"basket-1"_s);
        document->cards = {card};
        document->goods = {makeGoodsItem(1, 60), makeGoodsItem(2, 40)};
        plugin.setDocument(document);
    }
    ~PluginTest() override { Singleton<DBQueueBroker>::replace({}); }

    static Response response(const char *result, const QString &basket = u"basket-1"_s)
    {
        Response answer(json(result));
        answer.basket = basket;
        return answer;
    }

    /// The cashier's answers to the question with this text, in turn.
    void expectQuestions(const QString &text, const QList<bool> &answers)
    {
        auto &call = EXPECT_CALL(*dialog, question(testing::Property(&tr::Tr::ru, text), 1,
                                                   tr::Tr(u"kvoErrorOk"_s, u"Повторить"_s),
                                                   tr::Tr(u"kvoErrorCancel"_s, u"Удалить"_s), 0));
        call.Times(static_cast<int>(answers.size()));
        for (const bool answer : answers)
            call.WillOnce(Return(answer));
    }

    void raise(EventCode code)
    {
        plugin.handleEvent(Event(code, {{u"document"_s, QVariant::fromValue(DocumentPtr(document))}}));
    }

    const QString createError = u"Ошибка при создании заказа.\nПовторить или удалить карту из чека?"_s;
    const QString updateError = u"Ошибка при обновлении заказа.\nПовторить или удалить карту из чека?"_s;
    const BasicException refusal{u"отказ"_s};

    QSharedPointer<NiceMock<MockInterface>> client = QSharedPointer<NiceMock<MockInterface>>::create();
    QSharedPointer<NiceMock<MockQueue>> queue = QSharedPointer<NiceMock<MockQueue>>::create();
    Installed<testing::StrictMock<MockDialog>, Dialog> dialog;
    Installed<testing::StrictMock<MockCardAddLogic>, CardAddLogic> cardAddLogic;
    Installed<testing::StrictMock<MockVerificationLogic>, VerificationLogic> verificationLogic;
    Installed<NiceMock<MockSaveToFileLogic>, SaveToFileLogic> saveToFile;
    Installed<FixedTime, CurrentTime> time;
    QStringList queued; ///< The methods of the events on the queue.
    QSharedPointer<FakeDocument> document = QSharedPointer<FakeDocument>::create();
    CardPtr card = CardPtr::create();
    OpenPlugin plugin{utils::ForMock()};
};

} // namespace kvo
