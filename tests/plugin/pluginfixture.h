// The plugin with its collaborators replaced: the service client, the cashier, the queue and the disk.
#pragma once

#include "plugin/plugin.h"
#include "tests/support/checkbuilder.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/installed.h"
#include "tests/support/json.h"
#include "tests/support/printqt.h"

#include <cashier/dialog.h>
#include <cashier/savetofilelogic.h>
#include <cashier/verificationlogic.h>
#include <core/basicexception.h>
#include <queue/dbqueuebroker.h>

#include <gmock/gmock.h>

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
        card->setOperationId(u"basket-1"_s);
        document->addCard(card);
        plugin.setDocument(document);
    }
    ~PluginTest() override { Singleton<DBQueueBroker>::replace({}); }

    static Response response(const char *result, const QString &basket = u"basket-1"_s)
    {
        Response answer(json(result));
        answer.basket = basket;
        return answer;
    }

    /// The cashier has the attempt repeated this many times.
    void expectRetries(const QString &question, int times)
    {
        EXPECT_CALL(*dialog,
                    question(testing::Property(&tr::Tr::ru, question), 1, tr::Tr(u"kvoErrorOk"_s, u"Повторить"_s),
                             tr::Tr(u"kvoErrorCancel"_s, u"Удалить"_s), 0))
            .Times(times)
            .WillRepeatedly(Return(true));
    }

    void raise(int code)
    {
        plugin.handleEvent(Event(code, {{u"document"_s, QVariant::fromValue(DocumentPtr(document))}}));
    }

    const QString createError = u"Ошибка при создании заказа.\nПовторить или удалить карту из чека?"_s;
    const BasicException refusal{u"отказ"_s};

    QSharedPointer<NiceMock<MockInterface>> client = QSharedPointer<NiceMock<MockInterface>>::create();
    QSharedPointer<NiceMock<MockQueue>> queue = QSharedPointer<NiceMock<MockQueue>>::create();
    Installed<Dialog, testing::StrictMock<MockDialog>> dialog;
    Installed<VerificationLogic, testing::StrictMock<MockVerificationLogic>> verificationLogic;
    Installed<SaveToFileLogic, NiceMock<MockSaveToFileLogic>> saveToFile;
    QStringList queued; ///< The methods of the events on the queue.
    QSharedPointer<SaleDocument> document = builder::check({6000, 4000});
    OpenPlugin plugin{utils::ForMock()};
    CardPtr card = builder::card(u"2000"_s, plugin.getLoyaltySystemCode());
};

} // namespace kvo
