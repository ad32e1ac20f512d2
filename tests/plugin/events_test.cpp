// Which event of the host does what.
#include "pluginfixture.h"

#include <core/activitynotifier.h>

namespace kvo {

namespace {

/// Records what the events lead to.
class EventPlugin : public OpenPlugin
{
public:
    using OpenPlugin::OpenPlugin;
    bool cancel() override
    {
        calls.append(u"cancel"_s);
        return OpenPlugin::cancel();
    }
    bool request(const DocumentPtr &document) override
    {
        calls.append(document ? u"request"_s : u"request without a check"_s);
        return true;
    }

    QStringList calls;
};

class Events : public PluginTest
{
protected:
    Events()
    {
        eventPlugin.interface = client;
        eventPlugin.setDocument(document);
        ON_CALL(*client, requestOnline).WillByDefault([this](const Request &request) {
            eventPlugin.calls.append(request.url.path().section(u'/', -1));
            return response("{}");
        });
        // As if the order had been created with just this body.
        card->setOperationInfo(client->createOrderBody(document, card, false));
        eventPlugin.orderCreated = true;
    }

    void changeCheck() { document->goods.append(makeGoodsItem(static_cast<int>(document->goods.size()) + 1, 10)); }

    EventPlugin eventPlugin{utils::ForMock()};
};

} // namespace

TEST_F(Events, LeadToUpdatesAndNewPricings)
{
    const struct
    {
        const char *name;
        QList<int> codes;
        QStringList calls;
    } cases[] = {
        {"a subtotal alone", {24}, {}},
        {"a change and the subtotal", {57, 24}, {u"updateOrder"_s}},
        {"only the first subtotal after a change", {57, 24, 24}, {u"updateOrder"_s}},
        {"a change taken back", {57, 237, 24}, {}},
        {"taken back with nothing pending", {237}, {u"cancelOrder"_s, u"cancel"_s, u"request"_s}},
        {"payment", {238}, {u"updateOrder"_s}},
        {"the result was dropped", {239}, {u"cancelOrder"_s, u"cancel"_s, u"request"_s}},
        {"others", {0, 1, 25, 240}, {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        card->setOperationId(u"basket-1"_s);
        eventPlugin.calls.clear();
        eventPlugin.pendingUpdate = false;
        changeCheck();
        for (const int code : c.codes)
            eventPlugin.handleEvent(Event(code, {{u"document"_s, QVariant::fromValue(DocumentPtr(document))}}));
        EXPECT_EQ(eventPlugin.calls, c.calls);
    }
}

TEST_F(Events, ArriveBetweenInitAndDeinit)
{
    const auto notifier = Singleton<ActivityNotifier>::instance();
    notifier->notify(Event(EventCode::PositionChanged));
    EXPECT_FALSE(eventPlugin.pendingUpdate);
    ASSERT_TRUE(eventPlugin.init());
    notifier->notify(Event(EventCode::PositionChanged));
    EXPECT_TRUE(eventPlugin.pendingUpdate);
    ASSERT_TRUE(eventPlugin.deinit());
    notifier->notify(Event(EventCode::PositionRestored));
    EXPECT_TRUE(eventPlugin.pendingUpdate);
}

TEST_F(Events, AFailedCancellationIsTheHostsToKnow)
{
    EXPECT_CALL(*client, requestOnline).WillOnce(Throw(refusal));
    EXPECT_THROW(eventPlugin.handleEvent(Event(EventCode::LoyaltyResultDropped,
                                               {{u"document"_s, QVariant::fromValue(DocumentPtr(document))}})),
                 BasicException);
    EXPECT_EQ(card->getOperationId(), u"basket-1");
    EXPECT_TRUE(eventPlugin.calls.isEmpty());
}

} // namespace kvo
