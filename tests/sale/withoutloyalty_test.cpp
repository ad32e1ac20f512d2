// The till sells whatever is wrong with loyalty: what is broken, what the cashier and `status` say, what is still sold.
#include "salefixture.h"
#include "tests/support/golden.h"

#include <QtCore/QLibraryInfo>

namespace {

const QByteArray plain = check(R"("close")", R"({"outcome": "closed", "total": "227.50"})");
const QByteArray priced = R"({"card": "7770000000001"}, "price")";

constexpr char isOff[] = "не работают"; // and no card is accepted

struct Broken;

struct Breakage
{
    const char *name;
    std::function<void(Broken &)> breakIt;
    const char *status;          ///< Part of what `status` says.
    const char *message = isOff; ///< Part of what the cashier is told about the card; null: it is accepted.
};

struct Broken : SaleTest, testing::WithParamInterface<Breakage>
{
    QString data(const char *name) { return folder.filePath(u"data/"_s + QString::fromUtf8(name)); }

    void damage(const char *name) { writeFile(data(name), QByteArray(8192, 'x')); }
};

TEST_P(Broken, LeavesATillThatSells)
{
    const auto &[name, breakIt, status, message] = GetParam();
    breakIt(*this);
    const QString output = runTill(plain);
    EXPECT_EQ(output.contains(u"Бонусы не работают"_s), message == isOff) << output.toStdString();
    const QByteArray told = message ? R"("card": "", "messages": [")" + QByteArray(message) + R"(", "карты"])"
                                    : R"("card": "7770000000001", "messages": [])";
    runTill(check(priced + R"(, "close")", R"({"outcome": "closed", "total": "227.50", )" + told + "}"));
    EXPECT_THAT(askTill({u"status"_s}).toStdString(), HasSubstr(status));
}

const Breakage breakages[]{
    {"NoPlugin", [](Broken &shop) { shop.movePluginFolder(); }, "Till:pluginFolder"},
    {"PluginForSomethingElse",
     [](Broken &shop) {
         const QString other = QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/sqldrivers/libqsqlite.so"_s;
         ASSERT_TRUE(QFile::copy(other, shop.folder.filePath(u"libKvo.so"_s)));
         shop.movePluginFolder();
     },
     R"(libKvo.so: модуль "org.qt-project.Qt.QSqlDriverFactoryInterface", класс "QSQLiteDriverPlugin", а)"},
    {"DamagedQueue", [](Broken &shop) { shop.damage("queue.db"); }, "Бонусы не работают"},
    {"NoServerForTheQueue",
     [](Broken &shop) { shop.configure("[Queue]\ndriver = QPSQL\nhost = 127.0.0.1\nport = 1\ndatabase = kvo\n"); },
     "Бонусы не работают"},
    {"DamagedCheckStore", [](Broken &shop) { shop.damage("checks.db"); }, "Бонусы работают", nullptr},
    {"QueueOnAFullDisk",
     [](Broken &shop) {
         QDir().mkpath(shop.folder.filePath(u"data"_s));
         ASSERT_TRUE(QFile::link(u"/dev/full"_s, shop.data("queue.db")));
     },
     "нет места на диске"},
    {"ServiceDown", [](Broken &shop) { shop.stopService(); }, "Бонусы работают", "Нет связи"},
    {"NoNetworkAtStart", [](Broken &shop) { shop.configure("host = http://loyalty.invalid\ntimeout = 2000\n"); },
     "Бонусы работают", "Нет связи"},
};

INSTANTIATE_TEST_SUITE_P(By, Broken, testing::ValuesIn(breakages),
                         [](const auto &instance) { return std::string(instance.param.name); });

TEST_F(SaleTest, SetsACheckWithACardAsideUntilThePluginIsBack)
{
    const QByteArray configuration = readFile(ini);
    runTill(check(priced));
    const QString status = askTill({u"status"_s});
    movePluginFolder();
    EXPECT_THAT(runTill(plain).toStdString(), HasSubstr("Чек отложен"));
    writeFile(ini, configuration + "[Queue]\npassword = p\n");
    addFault({{u"method"_s, u"calculateOrder"_s}, {u"kind"_s, u"status"_s}});
    const QString sold = askTill({u"sell"_s}, "take 1\nremove 2\nrestore\nprice\n1\nspend\n\n2\ncard "
                                              "7770000000001\nhelp\nsubtotal\npark\ntake 1\nclose\nx\n");
    EXPECT_EQ(readFile(folder.filePath(u"till.log"_s)).count("chmod o-r"), 1) << "the password came into the file now";
    EXPECT_TRUE(sold.contains(QRegularExpression(u"осталось (300|29\\d) с"_s)));
    expectText(status + sold + askTill({u"journal"_s}), u"sale/aside.txt"_s);
    expectEqualBooks(2);
}

TEST_F(SaleTest, GoesOnWithAClockThatWasPutBackAYear)
{
    runTill(check(priced));
    qputenv("LD_PRELOAD", KVO_LAST_YEAR);
    qputenv("ASAN_OPTIONS", "verify_asan_link_order=0");
    runTill(R"({"checks": [{"continue": true, "steps": ["close"],
        "expect": {"outcome": "closed", "card": "7770000000001", "queued": 0}}]})");
    qunsetenv("LD_PRELOAD");
    expectEqualBooks(1);
}

} // namespace
