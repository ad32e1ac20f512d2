// What people see of the queue and what they can do about refused events.
#include "queuefixture.h"
#include "tests/support/json.h"

#include <queue/eventmask.h>
#include <queue/queueadmin.h>

struct QueueAdminTest : QueueTest
{
    QueueAdminTest()
    {
        push(u"a1 a2 b1"_s);
        refused = {u"a1"_s};
        drain();
        push(u"c1"_s);
    }
};

TEST_F(QueueAdminTest, StatusAndListTellWhatEachEventIsAndWhyItIsThere)
{
    QueueAdmin admin;
    const QueueStatus status = admin.status();
    EXPECT_EQ(status.waiting, 1);
    EXPECT_EQ(status.blocked, 2);
    EXPECT_EQ(status.lastSuccess.toMSecsSinceEpoch(), now.time_since_epoch().count());
    EXPECT_EQ(status.lastError, u"заказ не найден"_s);
    EXPECT_EQ(status.lastErrorTime, status.lastSuccess);
    EXPECT_EQ(status.oldest, admin.list().constFirst().stored);
    const auto named = json(R"({"payload": {"basket": "a", "cardNumber": "7770000000001", "orderID": "check-7"}})");
    const auto alone = json(R"({"payload": {"orderID": 8}})");
    for (const QJsonObject &event : {named, alone, QJsonObject(), eventNamed(u"a3"_s)})
        broker.push(u"kvo"_s, event, {});
    const QList<QueueAdmin::Entry> entries = admin.list();
    ASSERT_EQ(entries.size(), 7);
    const QueueAdmin::Entry &dead = entries[0];
    EXPECT_EQ(std::tuple(dead.operation, dead.order, dead.owner, dead.state, dead.attempts, dead.lastError),
              std::tuple(u"a1"_s, u"a"_s, u"kvo"_s, QueueAdmin::State::DeadLetter, 1, u"заказ не найден"_s));
    EXPECT_EQ(dead.refused.toMSecsSinceEpoch(), now.time_since_epoch().count());
    EXPECT_FALSE(dead.discarded.isValid());
    EXPECT_EQ(entries[1].state, QueueAdmin::State::Waiting);
    EXPECT_FALSE(entries[1].refused.isValid() || entries[1].nextAttempt.isValid());
    EXPECT_EQ(entries[2].operation, u"c1"_s);
    EXPECT_EQ(entries[3].card, u"*********0001"_s);
    EXPECT_EQ(entries[4].order, u""_s);
    EXPECT_EQ(entries[4].check, u"8"_s);
    EXPECT_EQ(entries[5].check, u""_s);
    EXPECT_EQ(admin.entry(entries[0].id).check, u"check-7"_s);

    const std::pair<QueueAdmin::Filter, qsizetype> filters[] = {
        {{}, 7},
        {{.limit = 2}, 2},
        {{.state = QueueAdmin::State::Waiting}, 6},
        {{.order = u"a"_s}, 4},
        {{.check = u"check-7"_s}, 4}, // the whole order is the check's
        {{.order = u"a"_s, .limit = 1}, 1},
        {{.state = QueueAdmin::State::DeadLetter, .order = u"c"_s}, 0},
    };
    for (const auto &[filter, count] : filters)
        EXPECT_EQ(admin.list(filter).size(), count) << &filter - &filters[0].first;
}

TEST_F(QueueAdminTest, WaitingEventIsSentNowEvenWhileTheServiceIsTakenToBeDown)
{
    QueueAdmin admin;
    push(u"d1 d2"_s);
    serviceDown = true;
    EXPECT_EQ(drain(), u"c1 d1"_s);
    EXPECT_EQ(drain(), u""_s);
    admin.retry(admin.list({.order = u"d"_s}).constFirst().id);
    EXPECT_THROW(admin.retry(admin.list({.order = u"d"_s}).constLast().id), BasicException) << "behind d1";
    serviceDown = false;
    EXPECT_EQ(drain(), u"d1 d2"_s) << "c1 is still in its back-off";
}

TEST_F(QueueAdminTest, DiscardedEventIsKeptWithItsReasonFreesItsOrderAndCanBeTakenBack)
{
    QueueAdmin admin;
    const qint64 id = admin.list().constFirst().id;
    admin.discard(id, u"отменён вручную, карта 7770000000001"_s);
    EXPECT_EQ(broker.status().blocked, 0);
    EXPECT_EQ(broker.status().waiting, 2);
    EXPECT_EQ(admin.entry(id).state, QueueAdmin::State::Discarded);
    EXPECT_LE(std::abs(admin.entry(id).discarded.secsTo(QDateTime::currentDateTime())), 60);
    EXPECT_EQ(admin.entry(id).discardReason, u"отменён вручную, карта *********0001"_s);
    EXPECT_EQ(nameOf(admin.entry(id).event), u"a1"_s);
    EXPECT_EQ(admin.retryAll(), 0);
    admin.restore(id);
    EXPECT_EQ(admin.entry(id).state, QueueAdmin::State::DeadLetter);
    EXPECT_EQ(admin.entry(id).attempts, 1);
    EXPECT_EQ(broker.status().blocked, 2);
    admin.discard(id, u"x"_s);
    EXPECT_EQ(drain(), u"a2 c1"_s);
    admin.restore(id);
    EXPECT_EQ(drain(), u""_s);
    refused.clear();
    EXPECT_EQ(admin.retryAll(), 1);
    EXPECT_EQ(drain(), u"a1"_s);
}

TEST_F(QueueAdminTest, OperationsKeepTheOrderAndTheCountsOfAnOrderWithSeveralDeadLetters)
{
    QueueAdmin admin;
    const QList<QueueAdmin::Entry> order = admin.list({.order = u"a"_s});
    admin.discard(order[0].id, u"x"_s);
    refused = {u"a2"_s};
    EXPECT_EQ(drain(), u"a2 c1"_s);
    push(u"a3"_s);
    admin.restore(order[0].id);
    EXPECT_EQ(broker.status().blocked, 3);
    EXPECT_THROW(admin.retry(order[1].id), BasicException) << "behind another dead letter";
    admin.retry(order[0].id);
    EXPECT_EQ(admin.entry(order[0].id).attempts, 0);
    EXPECT_FALSE(admin.entry(order[0].id).refused.isValid());
    EXPECT_EQ(broker.status().waiting, 1);
    refused = {u"a1"_s};
    EXPECT_EQ(drain(), u"a1"_s);
    EXPECT_EQ(admin.retryAll(), 2);
    refused.clear();
    EXPECT_EQ(drain(), u"a1 a2 a3"_s);
}

TEST_F(QueueAdminTest, OperationsThatMakeNoSenseAreRefused)
{
    QueueAdmin admin;
    const qint64 dead = admin.list().constFirst().id;
    const qint64 waiting = admin.list().constLast().id;
    EXPECT_THROW(admin.restore(waiting), BasicException);
    EXPECT_THROW(admin.discard(dead, u"  "_s), BasicException);
    EXPECT_THROW(admin.discard(4711, u"x"_s), BasicException);
    EXPECT_THROW(admin.entry(4711), BasicException);
    admin.discard(dead, u"x"_s);
    EXPECT_THROW(admin.retry(dead), BasicException);
    whileSending = [&] {
        const QueueAdmin::Entry sending = admin.list({.state = QueueAdmin::State::Sending}).constFirst();
        EXPECT_THROW(admin.discard(sending.id, u"x"_s), BasicException);
        EXPECT_THROW(admin.retry(sending.id), BasicException);
        if (sending.order == u"a") {
            EXPECT_THROW(admin.restore(dead), BasicException) << "it would overtake what is being sent";
        }
    };
    EXPECT_EQ(drain(), u"a2 c1"_s);
}

TEST(EventMaskTest, HidesCredentialsPhonesAndCardsAndNothingElse)
{
    const QByteArray event =
        R"({"headers":{"authorization":"Basic abc","Set-Cookie":"a=b","X-Id":"1"},"op":4,"payload":{
        "basket":"550e8400-e29b-41d4-a716-446655440000","Phone":"916 123-45-67","n":79161234567,
        "cardNumber":"7770000000001","barcode":"4601234567893",
        "cards":["12345"],"list":[{"text":"клиент 8 (916) 123-45-67"},true,null]},"url":"http://till:p@ss@h/x?p=%2B79161234567"})";
    const QByteArray shown = R"({"headers":{"authorization":"***","Set-Cookie":"***","X-Id":"1"},"op":4,"payload":{
        "basket":"550e8400-e29b-41d4-a716-446655440000","Phone":"*** ***-45-67","n":"*******4567",
        "cardNumber":"*********0001","barcode":"4601234567893",
        "cards":["*2345"],"list":[{"text":"клиент * (***) ***-45-67"},true,null]},"url":"http://till:***@h/x?p=%2B*******4567"})";
    EXPECT_EQ(QJsonDocument(eventmask::masked(QJsonDocument::fromJson(event).object())).toJson().toStdString(),
              QJsonDocument::fromJson(shown).toJson().toStdString());
}
