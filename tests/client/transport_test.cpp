// URLs and the judgement of answers: what is an error, what is only logged, what may be sent again.
#include "client/interface.h"
#include "tests/support/json.h"
#include "tests/support/logfile.h"
#include "tests/support/mockrestclient.h"
#include "tests/support/printqt.h"

#include <core/basicexception.h>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

http::Response answer(int status, const char *body, QNetworkReply::NetworkError error = QNetworkReply::NoError)
{
    return {status, error, tr::Tr(u"нет ответа"_s), QJsonDocument::fromJson(body)};
}

enum class Outcome { Good, Logged, Failed, Rejected };

struct Judgement
{
    const char *name;
    int status;
    const char *body;
    Outcome now;
    Outcome fromQueue;
    QString text = {};
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
};

void PrintTo(const Judgement &judgement, std::ostream *out)
{
    *out << judgement.name;
}

const Judgement judgements[] = {
    {"success", 200, R"({"success": true, "data": {}})", Outcome::Good, Outcome::Good},
    {"nothing to judge", 500, R"({"data": 1})", Outcome::Good, Outcome::Good},
    {"no JSON", 200, "", Outcome::Good, Outcome::Good},
    {"error code zero", 200, R"({"error": {"errorCode": 0}})", Outcome::Good, Outcome::Good},
    {"error code as text", 200, R"({"error": {"errorCode": "7"}})", Outcome::Good, Outcome::Good},
    {"error is a text", 200, R"({"error": "text"})", Outcome::Good, Outcome::Good},
    {"error code", 200, R"({"success": true, "error": {"errorCode": 5, "description": "x"}})", Outcome::Rejected,
     Outcome::Rejected, u"x"_s},
    {"refused 200", 200, R"({"success": false, "message": "m"})", Outcome::Rejected, Outcome::Logged, u"m"_s},
    {"refused 400", 400, R"({"success": false, "message": "m"})", Outcome::Rejected, Outcome::Logged, u"m"_s},
    {"refused 404", 404, R"({"success": false, "message": "m"})", Outcome::Rejected, Outcome::Rejected, u"m"_s},
    {"refused 500", 500, R"({"success": false, "message": "m"})", Outcome::Failed, Outcome::Logged, u"m"_s},
    {"refused 503", 503, R"({"success": false, "message": "m"})", Outcome::Failed, Outcome::Failed, u"m"_s},
    {"wrong password", 401, R"({"success": false, "message": "m"})", Outcome::Failed, Outcome::Failed, u"m"_s},
    {"refused without a text", 404, R"({"success": false})", Outcome::Rejected, Outcome::Rejected, u"нет ответа"_s},
    {"success as text", 404, R"({"success": "true"})", Outcome::Rejected, Outcome::Rejected, u"нет ответа"_s},
    {"refusal wins over error", 404,
     R"({"success": false, "message": "m", "error": {"errorCode": 5, "description": "x"}})", Outcome::Rejected,
     Outcome::Rejected, u"m"_s},
    {"no connection", 0, "", Outcome::Failed, Outcome::Failed, u"нет ответа"_s, QNetworkReply::ConnectionRefusedError},
    {"cut after the status", 200, "", Outcome::Failed, Outcome::Failed, u"нет ответа"_s,
     QNetworkReply::RemoteHostClosedError},
};

class CheckForError : public testing::TestWithParam<Judgement>
{
protected:
    Outcome judge(bool logOnly)
    {
        const auto &judgement = GetParam();
        try {
            Interface(utils::ForMock())
                .checkForError(answer(judgement.status, judgement.body, judgement.error), logOnly);
        } catch (const RejectionException &error) {
            EXPECT_EQ(error.text().ru(), judgement.text);
            return Outcome::Rejected;
        } catch (const BasicException &error) {
            EXPECT_EQ(error.text().ru(), judgement.text);
            return Outcome::Failed;
        }
        const QString logged = log.take();
        EXPECT_TRUE(logged.isEmpty() || logged.contains(judgement.text)) << logged.toStdString();
        return logged.isEmpty() ? Outcome::Good : Outcome::Logged;
    }

    LogFile log;
};

} // namespace

TEST_P(CheckForError, JudgesTheAnswer)
{
    EXPECT_EQ(judge(false), GetParam().now);
    EXPECT_EQ(judge(true), GetParam().fromQueue);
}

INSTANTIATE_TEST_SUITE_P(Answers, CheckForError, testing::ValuesIn(judgements), [](const auto &test) {
    return QString::fromUtf8(test.param.name).replace(u' ', u'_').toStdString();
});

TEST(Transport, BuildsUrlsFromHostAndPath)
{
    const struct
    {
        const char *host, *path, *method, *url;
    } cases[] = {
        {"http://h", "/api/v1", "cardInfo", "http://h/api/v1/cardInfo"},
        {"http://h:81/other?x=1", "/api/v1/", "cardInfo", "http://h:81/api/v1/cardInfo"},
        {"https://h", "/api/v1", "/cardInfo", "https://h/cardInfo"},
        {"http://h", "/путь", "a b", "http://h/%D0%BF%D1%83%D1%82%D1%8C/a%20b"},
    };
    for (const auto &c : cases) {
        const FakeConfig config({{u"Kvo:host"_s, QString::fromUtf8(c.host)},
                                 {u"Kvo:path"_s, QString::fromUtf8(c.path)},
                                 {u"Kvo:verificationPath"_s, u"/sms"_s}});
        const Interface client;
        EXPECT_EQ(client.getUrl(QString::fromUtf8(c.method)).toString(QUrl::FullyEncoded), QString::fromUtf8(c.url));
        EXPECT_EQ(client.getVerificationUrl(u"send"_s).path(), u"/sms/send");
    }
}

TEST(Transport, SendsAQueuedEventAsItWasStored)
{
    const FakeConfig config({{u"Kvo:timeout"_s, 1234}});
    RestExchange exchange;
    exchange.answer = answer(400, R"({"success": false, "message": "m"})");
    const Request order{QNetworkAccessManager::PostOperation,
                        QUrl(u"http://h/postOrder"_s),
                        {{u"A"_s, u"b"_s}},
                        QJsonDocument(json(R"({"basket": "1"})"))};
    EXPECT_CALL(*exchange.client, setTimeout(1234));

    Interface().requestFromQueue(order.toQueueEvent());

    EXPECT_EQ(exchange.sentOp, order.op);
    EXPECT_EQ(exchange.sentUrl, order.url);
    EXPECT_EQ(exchange.sentBody, order.payload.object());
    EXPECT_EQ(exchange.sentHeaders, order.headers);
}

TEST(Transport, ReadsTheResultOfAnImmediateCall)
{
    RestExchange exchange;
    const Interface client(utils::ForMock{});
    exchange.answer = answer(200, R"({"success": true, "result": {"earnPoints": 2.5}})");
    EXPECT_EQ(client.requestOnline({}).earnPoints(), 2.5);
    exchange.answer = answer(200, R"({"success": true})");
    EXPECT_TRUE(client.requestOnline({}).result.isEmpty());
    exchange.answer = answer(400, R"({"success": false, "message": "m"})");
    EXPECT_THROW(client.requestOnline({}), RejectionException);
}

TEST(Transport, MakesUuidsWithoutBraces)
{
    const Interface client(utils::ForMock{});
    const QString uuid = client.createUuid();
    static const QRegularExpression form(u"^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$"_s);
    EXPECT_TRUE(form.match(uuid).hasMatch()) << uuid.toStdString();
    EXPECT_NE(client.createUuid(), uuid);
}

} // namespace kvo
