// Every part of every answer spoilt in every way, through the loaded plugin: whatever the service says, the check can
// be saved, restored and ended, and the points that the service takes are those on the receipt.
#include "tests/support/checkbuilder.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/file.h"
#include "tests/support/refusal.h"
#include "tests/support/restexchange.h"
#include "tests/support/test.h"
#include "till/checksession.h"
#include "till/endingqueue.h"
#include "till/loyaltyplugin.h"
#include "till/queuesender.h"
#include "till/receipt.h"

#include <QtCore/QRegularExpression>

using namespace std::chrono_literals;

namespace {

/// `value` as JSON, with each part of it in turn missing or replaced.
QByteArrayList spoilt(const QJsonValue &value)
{
    static const QByteArray longText = '"' + QByteArray(1'000'000, 'x') + '"';
    QByteArrayList texts{"null",  R"("12")", R"("")", longText, "12", "-5",     "0.006",      "1e16",
                         "1e308", "1e999",   "true",  "[]",     "{}", "[true]", R"({"a": 1})"};
    const auto text = [](const auto &container) { return QJsonDocument(container).toJson(QJsonDocument::Compact); };
    for (const QJsonObject object = value.toObject(); const QString &key : object.keys()) {
        QJsonObject others = object;
        const QByteArrayList parts = spoilt(others.take(key));
        texts.append(text(others));
        for (const QByteArray &part : parts)
            texts.append("{\"" + key.toUtf8() + "\": " + part + (others.isEmpty() ? "" : ",") + text(others).mid(1));
    }
    if (QJsonArray others = value.toArray(); !others.isEmpty()) {
        for (const QByteArrayList parts = spoilt(others.takeAt(0)); const QByteArray &part : parts)
            texts.append('[' + part + (others.isEmpty() ? "" : ",") + text(others).mid(1));
    }
    return texts;
}

const QByteArray order = R"("result": {"earnPoints": 3, "redeemPoints": [{"lineId": 1, "points": 9.5},
                                                                         {"lineId": 2, "points": 2}]})";
const QHash<QString, QByteArray> goodAnswers{
    {u"searchCustomer"_s, R"("data": {"CustAccount": "C", "LastName": "L", "FirstName": "F", "MiddleName": "M",
        "BirthDate": "1990-05-17 00:00:00", "Gender": 1, "Email": "E", "Phone": "+7", "CardNumber": "777"})"},
    {u"cardInfo"_s, R"("data": {"Tiers": [{"Name": "T", "Discount": 5}]})"},
    {u"loyaltyBalanceInfo"_s, R"("data": {"AmountQty": 150.5})"},
    {u"calculateOrder"_s, order},
    {u"createOrder"_s, order},
    {u"updateOrder"_s, order},
    {u"cancelOrder"_s, R"("result": {})"},
};

QByteArray goodAnswer(const QString &method)
{
    return R"({"success": true, "error": {"errorCode": 0, "description": ""}, )" + goodAnswers.value(method) + '}';
}

/// Gives one method's answer spoilt, and keeps what it has taken for each order.
struct Service : RestExchange
{
    http::Response response() const override
    {
        const QString method = calls.last().section(u'?', 0, 0);
        const QJsonDocument said = QJsonDocument::fromJson(method == spoiltMethod ? text : goodAnswer(method));
        carryOut(method, bodies.last(), said.isNull() ? QJsonDocument::fromJson(goodAnswer(method)) : said);
        return {200, said.isNull() ? QNetworkReply::UnknownContentError : QNetworkReply::NoError, tr::Tr(u"?"_s), said};
    }

    void carryOut(const QString &method, const QJsonValue &body, const QJsonDocument &said) const
    {
        const QString basket = body[u"basket"].toString();
        if (method == "cancelOrder"_L1)
            taken.remove(basket);
        if (method != "createOrder"_L1 || body[u"orderLines"][0][u"noDiscountAllowed"].toBool())
            return;
        taken[basket] = 0;
        for (const QJsonValue line : said[u"result"][u"redeemPoints"].toArray())
            taken[basket] += std::max(0., line[u"points"].toDouble());
    }

    QString spoiltMethod;
    QByteArray text;
    mutable QHash<QString, double> taken; ///< By order.
};

struct SpoiltAnswer : testing::TestWithParam<QString>
{
    SpoiltAnswer() { Singleton<DBQueueBroker>::replace(queue); }
    ~SpoiltAnswer() override { Singleton<DBQueueBroker>::replace({}); }

    till::CheckResult sell(bool closing)
    {
        auto session = std::make_unique<till::CheckSession>(plugin.system(), *queue);
        session->open();
        session->addGoods(builder::line(10000));
        session->addGoods(builder::line(5000));
        const std::function<void()> steps[]{[&] { session->addCard(ECardNumberType::Phone, u"+7"_s); },
                                            [&] { session->price(); }, [&] { session->changeGoods(1, 2, {}); },
                                            [&] { session->subtotal(); }, [&] { session->spend(); }};
        for (const auto &step : steps)
            refusalOf(step); // for the cashier
        session.reset();
        Singleton<CheckStore>::replace({});
        session = std::make_unique<till::CheckSession>(plugin.system(), *queue);
        EXPECT_FALSE(session->resume());
        EXPECT_TRUE(session->isOpen()) << "not restored";
        std::optional<till::CheckResult> result;
        if (closing)
            refusalOf([&] { result = session->close(); });
        return result ? *result : session->voidCheck();
    }

    void deliver()
    {
        QueueDrain drain;
        drain.setHandler(till::loyaltyQueueOwner, [this](const QJsonObject &event) {
            service.carryOut(event[u"url"].toString().section(u'/', -1), event[u"payload"], {});
        });
        drain.start();
        EXPECT_TRUE(drain.waitUntilDrained(30s));
    }

    QTemporaryDir folder{quickFolder()};
    FakeConfig config{{{u"Host:dataFolder"_s, folder.path()}}};
    Service service;
    QSharedPointer<till::EndingQueue> queue = QSharedPointer<till::EndingQueue>::create();
    till::LoyaltyPlugin plugin{QStringLiteral(KVO_PLUGIN_FOLDER)};
};

TEST_P(SpoiltAnswer, LeavesASoundCheck)
{
    static const QRegularExpression senseless(u"\\d-\\.|-0\\.00|e\\+|\\.\\d+e|inf|nan"_s);
    service.spoiltMethod = GetParam();
    for (const QByteArray &text : spoilt(QJsonDocument::fromJson(goodAnswer(GetParam())).object())) {
        for (const bool closing : {true, false}) {
            SCOPED_TRACE((closing ? "closed: " : "voided: ") + text.left(300).toStdString());
            service.text = text;
            service.taken.clear();
            service.calls.clear();
            till::CheckResult result = sell(closing);
            result.tier.clear(); // A name, which may look like a number.
            EXPECT_FALSE(service.calls.contains(u"searchCustomer?Brand=&Phone="_s)) << "may find anybody";
            deliver();
            for (const auto &[basket, points] : service.taken.asKeyValueRange())
                EXPECT_NEAR(basket == result.basket ? result.spent().toRubles() : 0, points, 0.005);
            EXPECT_TRUE(result.spent() >= Money() && result.earned >= Money() && result.total() >= Money());
            EXPECT_FALSE(receiptText(result, {}).contains(senseless)) << receiptText(result, {}).toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(To, SpoiltAnswer, testing::ValuesIn(goodAnswers.keys()),
                         [](const auto &instance) { return instance.param.toStdString(); });

} // namespace
