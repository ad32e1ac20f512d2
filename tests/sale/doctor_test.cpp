// The doctor and the strict reading of the configuration, with the real till, the loaded plugin and the service's
// stand-in.
#include "salefixture.h"

class DoctorSaleTest : public SaleTest
{
protected:
    /// Runs the doctor and expects `status`; a machine may always have something to warn about.
    std::string doctor(int status, const QStringList &options = {})
    {
        QProcess process;
        process.start(QStringLiteral(KVO_TILL),
                      QStringList{u"doctor"_s, u"--config"_s, folder.filePath(u"till.ini"_s)} + options);
        EXPECT_TRUE(process.waitForFinished());
        const std::string report = process.readAllStandardOutput().toStdString();
        EXPECT_EQ(std::max(1, process.exitCode()), std::max(1, status)) << report;
        EXPECT_EQ(process.readAllStandardError(), QByteArray());
        return report;
    }
};

TEST_F(DoctorSaleTest, TellsATillThatSellsFromOneThatDoesNot)
{
    const std::string report = doctor(0, {u"--sms"_s, u"+79001234567"_s});
    for (const char *line : {"ok       plugin: ", "ok       loyalty API: ", "ok       message API: ",
                             "ok       kept connections: ", "ok       text message: ", "ok       open check: none"})
        EXPECT_THAT(report, testing::HasSubstr(line));
    EXPECT_EQ(requestsOf(u"createOrder"_s) + requestsOf(u"calculateOrder"_s), 0);

    configure("hots = http://127.0.0.1\n");
    EXPECT_THAT(doctor(2, {u"--json"_s}), testing::HasSubstr("Kvo:hots: unknown key, did you mean Kvo:host?"));
    const QString refusal = runTill(R"({"checks": []})", 2);
    EXPECT_TRUE(refusal.contains(u"till.ini"_s) && refusal.contains(u"Kvo:hots"_s)) << refusal.toStdString();
    EXPECT_FALSE(QFile::exists(folder.filePath(u"data/checks.db"_s)));
}
