// What is sent when: order within an order, independence of orders, failures, refusals, probes, several drains.
#include "queuefixture.h"
#include "tests/support/logfile.h"

#include <queue/queueadmin.h>

using QueueDeliveryTest = QueueTest;

TEST_F(QueueDeliveryTest, ServiceThatIsDownGetsOneProbeAndNotTheWholeQueue)
{
    push(u"a1 b1 c1 d1 e1"_s);
    serviceDown = true;
    EXPECT_EQ(drain(), u"a1 b1"_s);
    now += 249ms;
    EXPECT_EQ(drain(), u""_s);
    now += 1ms;
    EXPECT_EQ(drain(), u"c1"_s);
    push(u"f1"_s);
    EXPECT_EQ(drain(), u"f1"_s) << "a new event is a probe of its own";
    push(u"g1"_s);
    serviceDown = false;
    EXPECT_EQ(drain(), u"g1 d1 e1 a1 b1"_s);
}

TEST_F(QueueDeliveryTest, FailuresBetweenSuccessesHoldNothingBack)
{
    push(u"a1 b1 c1 d1 e1"_s);
    unreachable = {u"a1"_s, u"c1"_s, u"e1"_s};
    EXPECT_EQ(drain(), u"a1 b1 c1 d1 e1"_s);
}

TEST_F(QueueDeliveryTest, BackOffsEndOnRequestAndWhenTheClockIsPutBack)
{
    push(u"a1 b1 c1"_s);
    serviceDown = true;
    EXPECT_EQ(drain(), u"a1 b1"_s);
    EXPECT_TRUE(delivery.hasDeliverable());
    delivery.endBackOffs();
    EXPECT_FALSE(QueueAdmin().list().constFirst().nextAttempt.isValid());
    EXPECT_EQ(drain(), u"c1"_s);
    serviceDown = false;
    now -= 24h;
    EXPECT_EQ(drain(), u"a1 b1 c1"_s);
    EXPECT_FALSE(delivery.hasDeliverable());
}

TEST_F(QueueDeliveryTest, BackOffsGrowWithTheAttemptsOfTheEventAndThePausesWithTheFailuresOfTheService)
{
    push(u"a1"_s);
    serviceDown = true;
    const QueueTime start = now;
    QList<qint64> attempts;
    for (; attempts.size() < 9; now += 50ms)
        if (!drain().isEmpty())
            attempts.append((now - start).count());
    // Half of 0.5, 1, 2, ... 32, 60 s each; the service's pause is never longer than the event's own.
    const QList<qint64> expected{0, 250, 750, 1750, 3750, 7750, 15'750, 31'750, 61'750};
    EXPECT_EQ(attempts, expected);
    EXPECT_EQ(QueueAdmin().list().constFirst().attempts, 9);
    EXPECT_EQ(QueueAdmin().list().constFirst().nextAttempt,
              QDateTime::fromMSecsSinceEpoch((start + 91'750ms).time_since_epoch().count()));
}

TEST_F(QueueDeliveryTest, OwnersTakeTurns)
{
    QStringList turns;
    QHash<QString, QueueHandler> handlers;
    for (const QString &owner : {u"kvo"_s, u"other"_s, u"third"_s})
        handlers[owner] = [&turns, owner](const QJsonObject &) { turns.append(owner); };
    QueueDelivery all(settings, handlers, {[this] { return now += 10ms; }, {}, {}}); // slow: one event at a time
    for (const QString &owner : handlers.keys() + QStringList{u"somebody"_s})
        push(u"a1 b1 c1"_s, owner);
    while (all.step())
        ;
    EXPECT_EQ(broker.status().waiting, 3) << "nobody has asked for the last owner's";
    ASSERT_EQ(turns.size(), 9);
    for (qsizetype turn = 1; turn < turns.size(); ++turn)
        EXPECT_NE(turns[turn], turns[turn - 1]) << turn;
}

TEST_F(QueueDeliveryTest, RefusedEventStopsItsOrderOnlyAndShowsThatTheServiceIsUp)
{
    push(u"a1 a2 b1 a3 c1"_s);
    refused = {u"a2"_s};
    unreachable = {u"b1"_s};
    EXPECT_EQ(drain(), u"a1 a2 b1 c1"_s);
    EXPECT_EQ(broker.status().blocked, 2);
    EXPECT_EQ(broker.status().waiting, 1);
    now += BackOff::longest;
    unreachable.clear();
    EXPECT_EQ(drain(), u"b1"_s);
    EXPECT_FALSE(delivery.hasDeliverable());
}

TEST_F(QueueDeliveryTest, TextsComeThroughTheDatabaseAsTheyWere)
{
    QJsonObject event = eventNamed(u"a1"_s);
    event.insert(u"text"_s, u"\\ \\\\ ' '' \" ? $1 %1 :x \0 \n Ж 😀"_s);
    QList<QJsonObject> arrived;
    QueueDelivery receiver(settings, {{u"kvo"_s, [&](const QJsonObject &received) {
                                           arrived.append(received);
                                           throw QueueRefusal(event.value(u"text").toString() + QString(2000, u'x'));
                                       }}});
    broker.push(u"kvo"_s, event, {});
    EXPECT_TRUE(receiver.step());
    EXPECT_EQ(arrived, QList<QJsonObject>{event});
    const QString error = QueueAdmin().list().constFirst().lastError;
    EXPECT_TRUE(error.startsWith(u"\\ \\\\ ' '' \" ? $1 %1 :x Ж 😀xxx"_s)) << "in one line";
    EXPECT_EQ(error.size(), 1000);
}

TEST_F(QueueDeliveryTest, ErrorsAreStoredWithoutSecrets)
{
    push(u"a1"_s);
    const std::pair<const char *, QString> cases[] = {
        {"+79161234567", u"+*******4567"_s},
        {"8 (916) 123-45-67.", u"* (***) ***-45-67."_s},
        {"79161234567890123", u"*************0123"_s},
        {"id 12345678901, 123456789012", u"id 12345678901, ********9012"_s}, // 11 digits, 12 digits
        {"1234567890123456789, 12345678901234567890", u"***************6789, 12345678901234567890"_s},
        {"http://u:p@h/x, http://token@h, a@b", u"http://u:***@h/x, http://token:***@h, a@b"_s},
        {"550e8400-e29b-41d4-a716-446655440000", u"550e8400-e29b-41d4-a716-446655440000"_s},
    };
    for (const auto &[text, stored] : cases) {
        now += 2min;
        EXPECT_TRUE(stepDuring([text = text] { throw std::runtime_error(text); }));
        EXPECT_EQ(QueueAdmin().list().constFirst().lastError, stored);
        EXPECT_EQ(broker.status().lastError, stored);
    }
}

TEST_F(QueueDeliveryTest, DamagedEventIsKeptAndTheLogTellsWhatHasBecomeOfEach)
{
    expectsDamage = true;
    LogFile log;
    configure({});
    push(u"a1 b1 c1 d1"_s);
    sql(u"UPDATE event SET event = '{' WHERE id = 2"_s);
    unreachable = {u"c1"_s};
    whileSending = [this] {
        for (const QString &table : {u"head"_s, u"event"_s})
            sql(u"DELETE FROM %1 WHERE id > 2 AND id = %2"_s.arg(table, QString::number(sent.size() + 1)));
    };
    EXPECT_EQ(drain(), u"a1 c1 d1"_s);
    EXPECT_EQ(broker.status().blocked, 1);
    const QString lines = log.take();
    for (const QString &line :
         {u"DEBUG poshost::queue - Доставлена запись 1 для «kvo», заказ «a», попытка 1\n"_s,
          u"ERROR poshost::queue - Отклонена и больше не отправляется запись 2 для «kvo», заказ «b», попытка 1: зап"_s,
          u"WARN poshost::queue - Не доставлена запись 3 для «kvo», заказ «c», попытка 1, будет повтор: connection"_s,
          u"WARN poshost::queue - Очередь запросов: из записей 3–3 кем-то изменены во время отправки: 1\n"_s,
          u"WARN poshost::queue - Очередь запросов: из записей 4–4 кем-то изменены во время отправки: 1\n"_s})
        EXPECT_TRUE(lines.contains(line)) << qPrintable(line + u" is not in:\n"_s + lines);
}

TEST_F(QueueDeliveryTest, AcceptedEventIsNotSentAgainWhenTheDatabaseFailsToForgetIt)
{
    push(u"a1 a2"_s);
    EXPECT_THROW(stepDuring(&refuseWrites), BasicException);
    EXPECT_EQ(drain(), u"a2"_s);
}

TEST_F(QueueDeliveryTest, RunGrowsUntilSomethingEndsItAndTheRestIsGivenBack)
{
    const std::pair<const char *, std::function<void()>> endings[] = {
        {"failure", [] { throw std::runtime_error("no answer"); }},
        {"refusal", [] { throw QueueRefusal(u"заказ не найден"_s); }},
        {"time", [this] { now += 10ms; }},
        {"clock put back", [this] { now -= 1h; }},
        {"stop", [this] { stopping = true; }},
    };
    for (const auto &[label, ending] : endings) {
        SCOPED_TRACE(label);
        sent.clear();
        stopping = false;
        whileSending = [this, &ending = ending] {
            if (sent.size() >= 4)
                ending();
        };
        push(u"a1 b1 c1 d1 e1 f1 g1"_s);
        for (const QString &expected : {u"a1"_s, u"a1 b1 c1"_s, u"a1 b1 c1 d1"_s, u"a1 b1 c1 d1 e1"_s}) {
            EXPECT_TRUE(delivery.step());
            EXPECT_EQ(sent.join(u' '), expected);
        }
        EXPECT_EQ(sql(u"SELECT COUNT(*) FROM event WHERE basket > 'e' AND attempts = 0"_s), 2);
        EXPECT_EQ(sql(u"SELECT COUNT(*) FROM claim"_s), 0);
        for (const QueueAdmin::Entry &entry : QueueAdmin().list())
            if (entry.state != QueueAdmin::State::Discarded)
                QueueAdmin().discard(entry.id, u"end of the case"_s);
    }
}

TEST_F(QueueDeliveryTest, ClaimThatWasStoredWithoutAnAnswerHoldsNothingUp)
{
    push(u"a1 b1"_s);
    EXPECT_TRUE(stepDuring(
        [this] { sql(u"INSERT INTO claim SELECT e.id, c.lease FROM event e, claim c WHERE e.basket = 'b'"_s); }));
    EXPECT_EQ(drain(), u"b1"_s);
}

TEST_F(QueueDeliveryTest, DrainsOnOneDatabaseNeverShareAnOrder)
{
    push(u"a1 a2 b1 b2"_s);
    whileSending = [this] {
        while (rival.step())
            ;
    };
    EXPECT_EQ(drain(), u"a1 a2"_s);
    EXPECT_EQ(sentByRival, (QStringList{u"b1"_s, u"b2"_s}));
}
