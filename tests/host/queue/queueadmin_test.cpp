// What people see of the queue and what they can do about refused events.
#include "queuefixture.h"

#include <queue/eventmask.h>
#include <queue/queueadmin.h>

#include <QtCore/QJsonDocument>

class QueueAdminTest : public QueueTest
{
protected:
    QueueAdminTest()
    {
        push(u"a1 a2 b1"_s);
        refused = {u"a1"_s};
        drain();
        push(u"c1"_s);
    }
};

TEST_F(QueueAdminTest, ListTellsWhatEachEventIsAndWhyItIsThere)
{
    const QList<QueueAdmin::Entry> entries = QueueAdmin().list();
    ASSERT_EQ(entries.size(), 3);
    EXPECT_EQ(entries[0].operation, u"a1"_s);
    EXPECT_EQ(entries[0].order, u"a"_s);
    EXPECT_EQ(entries[0].owner, u"kvo"_s);
    EXPECT_EQ(entries[0].state, QueueAdmin::State::SetAside);
    EXPECT_EQ(entries[0].attempts, 1);
    EXPECT_EQ(entries[0].lastError, u"заказ не найден"_s);
    EXPECT_EQ(entries[0].refused.toMSecsSinceEpoch(), now.time_since_epoch().count());
    EXPECT_EQ(entries[1].state, QueueAdmin::State::Waiting);
    EXPECT_EQ(entries[2].operation, u"c1"_s);
}

TEST_F(QueueAdminTest, RetriedEventIsSentBeforeTheRestOfItsOrder)
{
    refused.clear();
    QueueAdmin admin;
    admin.retry(admin.list().constFirst().id);
    EXPECT_EQ(drain(), u"a1 c1 a2"_s);
    EXPECT_EQ(admin.retryAll(), 0);
}

TEST_F(QueueAdminTest, DiscardedEventIsKeptWithItsReasonAndFreesItsOrder)
{
    QueueAdmin admin;
    const qint64 id = admin.list().constFirst().id;
    admin.discard(id, u"заказ отменён вручную"_s);
    EXPECT_EQ(drain(), u"a2 c1"_s);
    EXPECT_EQ(admin.entry(id).state, QueueAdmin::State::Discarded);
    EXPECT_EQ(admin.entry(id).discardReason, u"заказ отменён вручную"_s);
    EXPECT_EQ(nameOf(admin.event(id)), u"a1"_s);
    EXPECT_EQ(broker.status().setAside, 0);
    EXPECT_EQ(admin.retryAll(), 0);
}

TEST_F(QueueAdminTest, OperationsThatMakeNoSenseAreRefused)
{
    QueueAdmin admin;
    const qint64 aside = admin.list().constFirst().id;
    const qint64 waiting = admin.list().constLast().id;
    EXPECT_THROW(admin.retry(waiting), BasicException);
    EXPECT_THROW(admin.discard(aside, u"  "_s), BasicException);
    EXPECT_THROW(admin.discard(4711, u"x"_s), BasicException);
    EXPECT_THROW(admin.event(4711), BasicException);
    whileSending = [&] { EXPECT_THROW(admin.discard(waiting, u"x"_s), BasicException); };
    EXPECT_EQ(drain(), u"c1"_s);
}

TEST_F(QueueAdminTest, QueueThatDoesNotExistIsNotMade)
{
    QFile::rename(folder.filePath(u"data"_s), folder.filePath(u"elsewhere"_s));
    EXPECT_THROW(QueueAdmin(), BasicException);
    EXPECT_FALSE(QFile::exists(file));
}

TEST(EventMaskTest, HidesCredentialsAndPhonesAndNothingElse)
{
    const QByteArray event = R"({"headers":{"authorization":"Basic abc","X-Id":"1"},"op":4,"payload":{
        "basket":"550e8400-e29b-41d4-a716-446655440000","Phone":"916 123-45-67","n":79161234567,
        "list":[{"text":"клиент 8 (916) 123-45-67, карта 2000000000017"}]},"url":"http://h/x?p=%2B79161234567"})";
    const QByteArray shown = R"({"headers":{"authorization":"***","X-Id":"1"},"op":4,"payload":{
        "basket":"550e8400-e29b-41d4-a716-446655440000","Phone":"*** ***-45-67","n":"*******4567",
        "list":[{"text":"клиент * (***) ***-45-67, карта 2000000000017"}]},"url":"http://h/x?p=%2B*******4567"})";
    EXPECT_EQ(QJsonDocument(eventmask::masked(QJsonDocument::fromJson(event).object())).toJson().toStdString(),
              QJsonDocument::fromJson(shown).toJson().toStdString());
}
