// A day from a CSV file, sold by two tills at once; file, journals and the service's ledger agree afterwards.
#include "salefixture.h"
#include "tests/support/golden.h"

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
    QString text = askTill(twoTills);
    // The second time goes on with what is there: the books of both days are compared. The cashier tries again twice
    // with each check, which is too little for the first one.
    addFault({{u"method"_s, u"createOrder"_s}, {u"kind"_s, u"status"_s}, {u"times"_s, 4}});
    text += askTill({u"replay"_s, file, u"--ledger"_s, ledger}, {}, 1);
    EXPECT_TRUE(askTerminal(u"replay '%1'"_s.arg(file)).contains(u"\r[##############################] 3/3  "_s));
    movePluginFolder();
    expectText(text + askTill(twoTills, {}, 2), u"sale/replay.txt"_s);
}

} // namespace
