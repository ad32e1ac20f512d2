// A day from a CSV file, sold by two tills at once; file, journals and the service's ledger agree afterwards.
#include "salefixture.h"

namespace {

constexpr char day[] =
    "InvoiceNo,StockCode,Description,Quantity,InvoiceDate,UnitPrice,CustomerID\n"
    "1,A,\"Cup, blue\",6,2010-12-01 08:26:00,2.55,17850.0\n1,B,\"Plate\n7\"\"\",1,2010-12-01 08:26:00,100.00,17850.0\n"
    "2,A,Cup,1,2010-12-01 08:28:00,2.55,\nC3,A,Cup,-1,2010-12-01 08:30:00,2.55,17850.0\n"
    "4,C,Pot,many,2010-12-01 08:31:00,9.00,Smith\n4,C,Pot,1,2010-12-01 08:31:00,9.00,Smith\n";

TEST_F(SaleTest, ReplaysADayWithTwoTillsAndEqualBooks)
{
    const QString file = folder.filePath(u"day.csv"_s);
    writeFile(file, day);
    const QString customers = folder.filePath(u"customers.json"_s);
    askTill({u"replay"_s, file, u"--make-customers"_s, customers});
    stopService();
    startService({u"--customers"_s, customers});
    const QStringList twoTills{u"replay"_s, file, u"--tills"_s, u"2"_s, u"--ledger"_s, ledger};
    // 57.65 is half of the first receipt, 4.50 half of the last one: customers have 100 points each.
    EXPECT_THAT(askTill(twoTills).toStdString(),
                AllOf(HasSubstr("line 7: bad, left out: quantity \"many\""), HasSubstr("line 6: cancelled, invoice C3"),
                      HasSubstr("sold 3 of 3 receipts for 126.85 of 126.85, 62.15 of it in points"),
                      HasSubstr("all equal"), testing::Not(testing::ContainsRegex("NOT SOLD|requests wait"))));
    // The second time goes on with what is there: the books of both days are compared. The cashier tries again twice.
    addFault({{u"method"_s, u"createOrder"_s}, {u"kind"_s, u"status"_s}, {u"times"_s, 2}});
    EXPECT_THAT(askTill({u"replay"_s, file, u"--ledger"_s, ledger}, {}, 1).toStdString(),
                AllOf(HasSubstr("1: Ошибка"), HasSubstr("4 orders"), HasSubstr("all equal")));
}

} // namespace
