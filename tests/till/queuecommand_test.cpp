// What `kvo-till queue` tells people and machines.
#include "tests/support/fakeconfig.h"
#include "tests/support/golden.h"
#include "tests/support/json.h"
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
    QDateTime now = QDateTime::currentDateTime();
    const auto answer = [&now](const till::QueueRequest &request) {
        const till::QueueAnswer said = till::answerTo(request, now);
        return said.text + (said.isFine ? QString() : u"(status 1)\n"_s);
    };
    QString text = answer({}) + answer({.action = Action::Status}); // never used
    EXPECT_THROW(answer({.action = Action::RetryAll}), BasicException);
    DBQueueBroker().push(u"kvo"_s, json(event), {});
    const QDateTime stored = QueueAdmin().entry(1).stored;
    for (const int seconds : {-1, 59, 60, 3599, 3600, 86399, 86400, 7200}) {
        now = stored.addSecs(seconds);
        text += answer({});
    }
    for (const till::QueueRequest &request :
         {till::QueueRequest{.action = Action::Show, .id = 1},
          {.action = Action::Show, .id = 1, .json = true},
          {.action = Action::Status, .maxWaiting = 1, .maxAgeMinutes = 120, .json = true},
          {.action = Action::Status, .maxWaiting = 1, .maxAgeMinutes = 120},
          {.action = Action::Status, .maxWaiting = 0, .maxAgeMinutes = 119},
          {.action = Action::Status, .maxWaiting = 0, .json = true},
          {.action = Action::Discard, .id = 1, .reason = u"чек отменён"_s},
          {},
          {.json = true},
          {.action = Action::Restore, .id = 1, .json = true},
          {.state = u"discarded"_s},
          {.state = u"waiting"_s},
          {.action = Action::RetryAll},
          {.action = Action::Retry, .id = 1}})
        text += answer(request);
    expectText(text, u"till/queue.txt"_s);
    EXPECT_THROW(answer({.action = Action::Discard, .id = 1}), BasicException);
    EXPECT_EQ(till::progressBar(0, 0) + till::progressBar(9, 6), u"[##########....................] 3/9"_s);
}
