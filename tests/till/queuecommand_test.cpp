// What `kvo-till queue` tells people and machines.
#include "tests/support/fakeconfig.h"
#include "tests/support/json.h"
#include "tests/support/test.h"
#include "till/queuecommand.h"

#include <core/basicexception.h>
#include <queue/dbqueuebroker.h>

using Action = till::QueueRequest::Action;

TEST(QueueCommand, ListsShowsAndDiscardsWithoutSecrets)
{
    const QTemporaryDir folder;
    const FakeConfig config{{{u"Host:dataFolder"_s, folder.path()}}};
    const char *event = R"({"op": 4, "url": "http://127.0.0.1/api/postOrder",
        "headers": {"Authorization": "Basic c2VjcmV0"}, "payload": {"basket": "b-1", "phone": "+79001234567",
            "cardNumber": "7770000000001", "orderID": "7\u001b[2J\nX\u202e"}})";
    const QDateTime later = QDateTime::currentDateTime().addSecs(7210);
    const auto answer = [&later](const till::QueueRequest &request) { return till::answerTo(request, later).text; };
    EXPECT_EQ(answer({}) + answer({.action = Action::Status}), u"Очередь пуста\nОчередь пуста\n") << "never used";
    EXPECT_THROW(answer({.action = Action::RetryAll}), BasicException);
    DBQueueBroker().push(u"kvo"_s, json(event), {});

    EXPECT_EQ(answer({}), u"№  ВОЗРАСТ  ЗАКАЗ  ЧЕК  КАРТА          ОПЕРАЦИЯ   ПОПЫТОК  СОСТОЯНИЕ  ПРИЧИНА\n"
                          u"1  2 ч      b-1    7 X  *********0001  postOrder  0        ожидает\n");
    const QString shown = answer({.action = Action::Show, .id = 1, .json = true});
    EXPECT_EQ(QJsonDocument::fromJson(shown.toUtf8()).object().value("event"_L1)["payload"_L1]["basket"_L1], u"b-1"_s);
    EXPECT_FALSE(shown.contains(QChar(0x1b)) || shown.contains(QChar(0x202e))) << "JSON escapes";
    EXPECT_FALSE(shown.contains(u"c2VjcmV0"_s) || shown.contains(u"79001234"_s)) << shown.toStdString();

    EXPECT_THROW(answer({.action = Action::Discard, .id = 1}), BasicException);
    answer({.action = Action::Discard, .id = 1, .reason = u"чек отменён"_s});
    const QJsonValue entry = QJsonDocument::fromJson(answer({.json = true}).toUtf8())["entries"_L1][0];
    EXPECT_EQ(entry["state"_L1], u"discarded"_s);
    EXPECT_EQ(entry["discardReason"_L1], u"чек отменён"_s);
    EXPECT_TRUE(answer({}).contains(u"чек отменён"_s));
    answer({.action = Action::Restore, .id = 1});
    EXPECT_TRUE(answer({.state = u"discarded"_s}).startsWith(u"Таких запросов нет"_s));
    EXPECT_TRUE(answer({.state = u"waiting"_s}).contains(u"postOrder"_s));

    const std::pair<till::QueueRequest, QString> thresholds[] = {
        {{.action = Action::Status}, {}},
        {{.action = Action::Status, .maxWaiting = 1, .maxAgeMinutes = 121}, {}},
        {{.action = Action::Status, .maxWaiting = 0}, u"Внимание: ожидают отправки больше 0\n"_s},
        {{.action = Action::Status, .maxAgeMinutes = 119}, u"Внимание: самому раннему больше 119 мин\n"_s},
    };
    for (const auto &[request, warning] : thresholds) {
        EXPECT_TRUE(answer(request).endsWith(u"\nВозраст самого раннего: 2 ч\n"_s + warning)) << warning.toStdString();
        EXPECT_EQ(till::answerTo(request, later).isFine, warning.isEmpty()) << warning.toStdString();
    }
    EXPECT_EQ(till::progressBar(0, 0) + till::progressBar(9, 6), u"[##########....................] 3/9"_s);
}
