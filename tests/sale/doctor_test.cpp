// The doctor and the strict reading of the configuration, with the real till, the loaded plugin and the service's
// stand-in.
#include "salefixture.h"
#include "tests/support/golden.h"

TEST_F(SaleTest, DoctorTellsATillThatSellsFromOneThatDoesNot)
{
    QProcess doctor;
    doctor.start(QStringLiteral(KVO_TILL), {u"doctor"_s, u"--config"_s, ini, u"--sms"_s, u"+79001234567"_s});
    ASSERT_TRUE(doctor.waitForFinished());
    EXPECT_LE(doctor.exitCode(), 1); // A machine may always have something to warn about.
    EXPECT_EQ(doctor.readAllStandardError(), QByteArray());
    expectText(QString::fromUtf8(doctor.readAllStandardOutput()), u"sale/doctor.txt"_s);
    EXPECT_EQ(requestsOf(u"createOrder"_s) + requestsOf(u"calculateOrder"_s), 0);

    configure("hots = http://127.0.0.1\n");
    EXPECT_TRUE(
        askTill({u"doctor"_s, u"--json"_s}, {}, 2).contains(u"Kvo:hots: unknown key, did you mean Kvo:host?"_s));
    const QString refusal = runTill(R"({"checks": []})", 2);
    EXPECT_TRUE(refusal.contains(u"till.ini"_s) && refusal.contains(u"Kvo:hots"_s)) << refusal.toStdString();
    EXPECT_FALSE(QFile::exists(folder.filePath(u"data/checks.db"_s)));
}
