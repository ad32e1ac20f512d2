// A day from a CSV file, sold by two tills at once; file, journals and the service's ledger agree afterwards.
#include "salefixture.h"

using testing::AllOf;
using testing::HasSubstr;

namespace {

constexpr char header[] = "InvoiceNo,StockCode,Description,Quantity,InvoiceDate,UnitPrice,CustomerID\n";
constexpr char day[] = "1,A,\"Cup, blue\",6,2010-12-01 08:26:00,2.55,17850.0\n"
                       "1,B,\"Plate\n7\"\"\",1,2010-12-01 08:26:00,100.00,17850.0\n"
                       "2,A,Cup,1,2010-12-01 08:28:00,2.55,\n"
                       "C3,A,Cup,-1,2010-12-01 08:30:00,2.55,17850.0\n"
                       "4,C,Pot,many,2010-12-01 08:31:00,9.00,Smith\n"
                       "4,C,Pot,1,2010-12-01 08:31:00,9.00,Smith\n";

class Replay : public SaleTest
{
protected:
    Replay() { writeFile(file, QByteArray(header) + day); }

    /// Replays the file and expects `status`.
    std::string replay(const QStringList &options, int status)
    {
        QProcess till;
        till.setProcessChannelMode(QProcess::MergedChannels);
        till.start(QStringLiteral(KVO_TILL),
                   QStringList{u"replay"_s, file, u"--config"_s, folder.filePath(u"till.ini"_s)} + options);
        EXPECT_TRUE(till.waitForFinished());
        const std::string output = till.readAll().toStdString();
        EXPECT_EQ(till.exitCode(), status) << output;
        return output;
    }

    void addCustomers()
    {
        const QString customers = folder.filePath(u"customers.json"_s);
        replay({u"--make-customers"_s, customers}, 0);
        stopService();
        startService({u"--customers"_s, customers});
    }

    const QString file = folder.filePath(u"day.csv"_s);
    const QStringList twoTills{u"--tills"_s, u"2"_s, u"--ledger"_s, folder.filePath(u"service.db"_s)};
};

TEST_F(Replay, SellsADayWithTwoTillsAndEqualBooks)
{
    addCustomers();
    // 57.65 is half of the first receipt, 4.50 half of the last one: customers have 100 points each.
    EXPECT_THAT(replay(twoTills, 0),
                AllOf(HasSubstr("line 7: bad, left out: quantity \"many\""), HasSubstr("line 6: cancelled, invoice C3"),
                      HasSubstr("sold 3 of 3 receipts for 126.85 of 126.85, 62.15 of it in points"),
                      HasSubstr("all equal")));
    // The second time goes on with what is there: the books of both days are compared.
    EXPECT_THAT(replay(twoTills, 0), AllOf(HasSubstr("4 orders"), HasSubstr("all equal")));
}

TEST_F(Replay, ListsWhatWentWrong)
{
    EXPECT_THAT(replay(twoTills, 1), AllOf(HasSubstr("sold 3 of 3"), HasSubstr("\n1: "), HasSubstr("\n4: ")))
        << "unknown customers";
    addCustomers();
    replay(twoTills, 0);
    QFile::remove(folder.filePath(u"data/till-1/checks.db"_s));
    QFile::remove(folder.filePath(u"data/till-2/checks.db"_s));
    EXPECT_THAT(replay(twoTills, 1),
                AllOf(HasSubstr("DIFFERENT: posted, but no closed check claims it"), HasSubstr("2 different")));
}

} // namespace
