// Whole sales. What is expected of each check stands in its scenario; at the end the books of both sides must agree.
#include "salefixture.h"

namespace {

QByteArray sale(const QByteArray &steps, const QByteArray &expect, const QByteArray &answers = "{}")
{
    return check(R"({"card": "7770000000001"}, )" + steps, expect, answers);
}

struct Case
{
    const char *name;
    QByteArray scenario;
    QJsonObject fault = {}; ///< Of the service, in the simulator's words.
    friend void PrintTo(const Case &sold, std::ostream *stream) { *stream << sold.name; }
};

struct Sale : SaleTest, testing::WithParamInterface<Case>
{
};

TEST_P(Sale, EndsWithEqualBooks)
{
    if (!GetParam().fault.isEmpty())
        addFault(GetParam().fault);
    runTill(GetParam().scenario);
    EXPECT_EQ(requestsOf(u"updateOrder"_s), GetParam().scenario.contains("update") ? 1 : 0);
    drain();
    expectEqualBooks(1);
}

const Case cases[]{
    {"PhoneWithPointsAndCode", "phone-spend.json"},
    {"CardWithLabelsAndUpdate", "card-update.json"},
    {"Voided", "void.json"},
    {"Parked", "parked.json"},
    {"UnknownCard",
     check(R"({"card": "1234"}, {"add": {"barcode": "3", "name": "A", "price": 1}}, {"remove": 3}, "close")",
           R"({"outcome": "closed", "card": "", "total": "227.50", "messages": ["1234"]})")},
    {"WrongCodesThenACodeForAnotherAttempt", sale(R"("price", "spend", "close")",
                                                  R"({"outcome": "closed", "spent": "113.75",
              "messages": ["код", "Неверный код", "Неверный код", "Повторить", "код"]})",
                                                  R"({"codes": ["no", "no", "no"], "dialogs": ["retry"]})")},
    {"CardRemovedAtClose",
     sale(R"("price", "close")", R"({"outcome": "closed", "card": "", "total": "227.50", "earned": 0, "queued": 0,
                                     "messages": ["заказа.\nПовторить или удалить"]})",
          R"({"dialogs": ["remove"]})"),
     {{u"method"_s, u"createOrder"_s}, {u"kind"_s, u"status"_s}}},
    {"CardRemovedAfterTheOrderWasCreatedUnseen",
     sale(R"("price", "spend", "close")", R"({"outcome": "closed", "card": "", "total": "227.50", "queued": 0})",
          R"({"dialogs": ["remove"]})"),
     {{u"method"_s, u"createOrder"_s}, {u"kind"_s, u"close"_s}}},
    {"CardTakenOffAfterSpending",
     sale(R"("price", "spend", "nocard", "close")", R"({"outcome": "closed", "card": "", "total": "227.50"})")},
    {"PointsComeOffWithAChange",
     sale(R"("price", "spend", {"remove": 1}, "price", "spend", "price", "close")",
          R"({"outcome": "closed", "spent": 0, "messages": ["код", "возвращены", "возвращены"]})")},
    {"AnswerToCancellationLostAtRepricing",
     sale(R"("price", "spend", {"change": {"line": 2, "quantity": 1}}, "spend", "close")",
          R"({"outcome": "closed", "sum": "136.50", "spent": "68.25", "queued": 0})", R"({"dialogs": ["retry"]})"),
     {{u"method"_s, u"cancelOrder"_s}, {u"kind"_s, u"close"_s}}},
    {"PricingFailsThenClosingPrices",
     sale(R"("price", "close")", R"({"outcome": "closed", "spent": 0, "total": "227.50", "queued": 0,
                                     "messages": ["недоступен"]})"),
     {{u"method"_s, u"calculateOrder"_s}, {u"kind"_s, u"status"_s}}},
};

INSTANTIATE_TEST_SUITE_P(Shop, Sale, testing::ValuesIn(cases), testing::PrintToStringParamName());

TEST_F(SaleTest, SaysWhatDiffersFromTheScenario)
{
    const QByteArray scenario = check(R"("price")", R"({"sum": 1, "queued": 3, "messages": ["x"]})");
    EXPECT_THAT((runTill(scenario, 1) + runTill(scenario, 1)).toStdString(),
                AllOf(HasSubstr("/checks/0/expect/sum: ожидалось \"1.00\", получено \"227.50\""),
                      HasSubstr("queued: ожидалось \"3\", получено \"0\""), HasSubstr("получено \"На чеке нет карты\""),
                      HasSubstr("Расхождений: 3\n"), HasSubstr("continue: ожидалось \"нет открытого чека\"")));
}

TEST_F(SaleTest, AQuestionThatNobodyAnswersDecidesNothing)
{
    addFault({{u"method"_s, u"createOrder"_s}, {u"kind"_s, u"status"_s}});
    runTill(sale(R"("price", "close")", "{}"), 1);
    EXPECT_TRUE(askTill({u"run"_s}).contains(u"Покупатель  "_s)) << "goes on with the card";
    drain();
    expectEqualBooks(1);
}

TEST_F(SaleTest, IsDeliveredAfterTheServiceIsBack)
{
    runTill("offline-begin.json");
    stopService();
    runTill("offline-close.json", 0, {u"--drain-seconds"_s, u"0"_s});
    startService();
    drain();
    expectEqualBooks(1);
}

} // namespace
