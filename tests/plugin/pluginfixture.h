// The plugin with its client; replaced are the wire, the cashier, the queue and the disk.
#pragma once

#include "plugin/plugin.h"
#include "tests/support/checkbuilder.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/installed.h"
#include "tests/support/json.h"
#include "tests/support/restexchange.h"
#include "tests/support/test.h"

#include <cashier/dialog.h>
#include <cashier/savetofilelogic.h>
#include <cashier/verificationlogic.h>
#include <core/activitynotifier.h>
#include <core/basicexception.h>
#include <queue/dbqueuebroker.h>

namespace kvo {

using testing::_;
using testing::NiceMock;
using testing::Return;
using testing::Throw;

using DocumentPtr = QSharedPointer<AbstractDocument>;
using CardPtr = QSharedPointer<DocumentCardRecord>;

struct MockDialog : Dialog
{
    MOCK_METHOD(bool, question, (const tr::Tr &, int, const tr::Tr &, const tr::Tr &, int), (override));
};

struct MockVerificationLogic : VerificationLogic
{
    MOCK_METHOD(void, verify, (const QString &, const tr::Tr &, int), (override));
};

struct MockSaveToFileLogic : SaveToFileLogic
{
    MOCK_METHOD(void, save, (const DocumentPtr &, const QString &, double), (override));
};

struct MockQueue : DBQueueBroker
{
    MOCK_METHOD(void, push, (const QString &, const QJsonObject &, const QString &), (override));
};

/// Everything protected opened for the tests.
struct OpenPlugin : Plugin
{
    using Plugin::bonusImpacts;
    using Plugin::bonusRecords;
    using Plugin::customer;
    using Plugin::interface;
    using Plugin::orderCreated;
    using Plugin::pendingUpdate;
    using Plugin::pointsForEarn;
    using Plugin::pointsForSpend;
};

/// A check of two lines with the card 2000, whose order "basket-1" was priced.
struct PluginTest : testing::Test
{
    PluginTest()
    {
        Singleton<DBQueueBroker>::replace(queue);
        ON_CALL(*queue, push).WillByDefault([this](const auto &owner, const auto &event, const auto &key) {
            EXPECT_EQ(owner, u"kvo");
            EXPECT_TRUE(key.isNull());
            queued.append(event.value("url"_L1).toString().section(u'/', -1));
            queuedBodies.append(event.value("payload"_L1).toObject());
        });
        card->setOperationId(u"basket-1"_s);
        document->addCard(card);
        plugin.setDocument(document);
        plugin.init();
    }
    ~PluginTest() override
    {
        plugin.deinit();
        Singleton<DBQueueBroker>::replace({});
    }

    void serviceAnswers(const QByteArray &result)
    {
        service.answer = service.ok(R"({"success": true, "result": )" + result + "}");
    }

    /// The cashier has the attempt repeated this many times.
    void expectRetries(const tr::Tr &question, int times)
    {
        EXPECT_CALL(*dialog, question(question, 1, tr::Tr(u"kvoErrorOk"_s, u"Повторить"_s),
                                      tr::Tr(u"kvoErrorCancel"_s, u"Удалить"_s), 0))
            .Times(times)
            .WillRepeatedly(Return(true));
    }

    void raise(int code)
    {
        Singleton<ActivityNotifier>::instance()->notify(
            Event(code, {{u"document"_s, QVariant::fromValue(DocumentPtr(document))}}));
    }

    const tr::Tr createError{u"kvoCreateOrderError"_s,
                             u"Ошибка при создании заказа.\nПовторить или удалить карту из чека?"_s};

    FakeConfig config{{{u"Kvo:brand"_s, u"B"_s}}};
    RestExchange service;
    QSharedPointer<NiceMock<MockQueue>> queue = QSharedPointer<NiceMock<MockQueue>>::create();
    Installed<Dialog, testing::StrictMock<MockDialog>> dialog;
    Installed<VerificationLogic, testing::StrictMock<MockVerificationLogic>> verificationLogic;
    Installed<SaveToFileLogic, NiceMock<MockSaveToFileLogic>> saveToFile;
    QStringList queued; ///< The methods of the events on the queue.
    QList<QJsonObject> queuedBodies;
    QSharedPointer<SaleDocument> document = builder::check({6000, 4000});
    OpenPlugin plugin;
    CardPtr card = builder::card(u"2000"_s, plugin.getLoyaltySystemCode());
};

} // namespace kvo
