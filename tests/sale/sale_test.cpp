// Whole sales. What is expected of each check stands in its scenario; at the end the books of both sides must agree.
#include "salefixture.h"
#include "tests/support/golden.h"

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
    QString text = askTill({u"status"_s}, {}, 2); // before there is anything to look at
    text += askTill({u"journal"_s, u"--since"_s, u"yesterday"_s}, {}, 2);
    text += runTill(check(R"("price", {"hold": 1})", R"({"sum": 1, "queued": 3, "messages": ["x"]})"), 1);
    text += runTill(R"({"title": "T", "checks": [{"title": "U", "steps": []},
        {"continue": true, "steps": ["price"]},
        {"continue": true, "steps": ["price", "void"], "expect": {"messages": ["карты", "x"]}},
        {"continue": true, "steps": []}]})",
                    1);
    runTill(check({}));
    for (const QString &command : {u"run"_s, u"void"_s, u"void"_s, u"run"_s})
        text += askTill({command});
    expectText(text, u"sale/differences.txt"_s);
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
    EXPECT_TRUE(
        askTill({u"queue"_s, u"drain"_s, u"--json"_s, u"--seconds"_s, u"0"_s}, {}, 1).contains(u"\"waiting\":2"_s));
    askTill({u"queue"_s, u"status"_s, u"--max-waiting"_s, u"1"_s}, {}, 1);
    startService();
    EXPECT_TRUE(askTerminal(u"drain"_s).contains(u"\r[##############################] 2/2\r\n"_s));
    expectEqualBooks(1);
    EXPECT_EQ(askTill({u"journal"_s, u"--since"_s, u"2999-01-01"_s}), QString());
}

TEST_F(SaleTest, IsTypedAtATerminalUntilItIsInterrupted)
{
    configure("[Till]\ncashierName = Петрова\ngoods = " KVO_SCENARIOS "/../goods.json\n");
    QProcess terminal;
    terminal.start(u"script"_s,
                   {u"-qec"_s, u"'%1' sell --config '%2'"_s.arg(QStringLiteral(KVO_TILL), ini), u"/dev/null"_s});
    const auto type = [&terminal](const char *keys) {
        terminal.write(keys);
        QByteArray shown;
        while (!(shown.contains('\n') && shown.endsWith("касса> ")) && terminal.waitForReadyRead(30'000))
            shown += terminal.readAll();
        return shown.toStdString();
    };
    EXPECT_THAT(type(""), HasSubstr("Введите штрихкод"));
    EXPECT_THAT(runTill(check({}), 2).toStdString(), HasSubstr("занята: с ней работает процесс "));
    EXPECT_THAT(type("ca\t7770000000001\n"), HasSubstr("7770000000001\r\nЧек открыт"));
    type("2*4600000000028\n");
    EXPECT_THAT(type("\x10\n"),
                HasSubstr("2. Хлеб ржаной  2 x 45.50 = 91.00\r\n")); // the line before, from the history
    EXPECT_THAT(type("price\n"), HasSubstr("можно списать 91.00, будет начислено 9.10\r\n"));
    EXPECT_THAT(type("spend\n"), HasSubstr("(баллами 91.00)"));
    EXPECT_THAT(type("close\n"), HasSubstr("Кассир                             Петрова\r\n"));
    EXPECT_THAT(type("\x03"), HasSubstr("Продажа прервана"));
    terminal.waitForFinished(30'000);
    EXPECT_EQ(terminal.exitCode(), 130);
}

} // namespace
