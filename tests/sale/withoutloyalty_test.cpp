// The till sells whatever has become of loyalty: what is broken, what the cashier and `status` say, what is still sold.
#include "salefixture.h"

#include <QtCore/QDir>
#include <QtCore/QLibraryInfo>

using testing::HasSubstr;

namespace {

class Broken;

struct Case
{
    const char *name;
    std::function<void(Broken &)> breakIt;
    const char *status;  ///< Part of what `status` says.
    bool isOff;          ///< Whether no card is accepted, and why is said.
    const char *message; ///< Part of what the cashier is told about the card; null: it is accepted.
};

class Broken : public SaleTest, public testing::WithParamInterface<Case>
{
public:
    using SaleTest::folder;
    using SaleTest::runTill;

    ~Broken() override
    {
        if (m_isStopped)
            startService();
    }

    void stopForGood()
    {
        stopService();
        m_isStopped = true;
    }

    QString data(const char *name) { return folder.filePath(u"data/"_s + QString::fromUtf8(name)); }

    void configure(const QByteArray &lines)
    {
        const QString file = folder.filePath(u"till.ini"_s);
        writeFile(file, readFile(file) + lines);
    }

    /// Puts bytes into a file that a till has left.
    void patch(const char *name, qsizetype offset, const QByteArray &bytes)
    {
        runTill(plain);
        QByteArray content = readFile(data(name));
        ASSERT_GT(content.size(), offset + bytes.size());
        writeFile(data(name), content.replace(offset, bytes.size(), bytes));
    }

    void damage(const char *name)
    {
        QDir().mkpath(folder.filePath(u"data"_s));
        writeFile(data(name), QByteArray(8192, 'x'));
    }

    QByteArray scenarioWithCard(const char *message)
    {
        QByteArray scenario = withCard;
        scenario.replace("CARD", message ? "" : "7770000000001");
        return scenario.replace("MESSAGES", message ? QByteArray("[\"") + message + "\", \"карты\"]" : "[]");
    }

    const QByteArray plain = R"({"checks": [{"goods": [{"barcode": "1", "name": "Хлеб", "price": "45.50"}],
        "steps": ["close"], "expect": {"outcome": "closed", "total": "45.50"}}]})";
    const QByteArray withCard = R"({"checks": [{"goods": [{"barcode": "1", "name": "Хлеб", "price": "45.50"}],
        "steps": [{"card": "7770000000001"}, "price", "close"], "expect": {"outcome": "closed", "total": "45.50",
        "card": "CARD", "messages": MESSAGES}}]})";

private:
    bool m_isStopped = false;
};

TEST_P(Broken, LeavesATillThatSells)
{
    const auto &[name, breakIt, status, isOff, message] = GetParam();
    breakIt(*this);
    const QString output = runTill(plain);
    EXPECT_EQ(output.contains(u"Бонусы не работают"_s), isOff) << output.toStdString();
    runTill(scenarioWithCard(message));
    EXPECT_THAT(askTill({u"status"_s}).toStdString(), HasSubstr(status));
}

const Case cases[]{
    {"NoPlugin",
     [](Broken &shop) { shop.configure("[Till]\npluginFolder = " + QFile::encodeName(shop.folder.path()) + '\n'); },
     "Till:pluginFolder", true, "не работают"},
    {"PluginForSomethingElse",
     [](Broken &shop) {
         const QString other = QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/sqldrivers/libqsqlite.so"_s;
         ASSERT_TRUE(QFile::copy(other, shop.folder.filePath(u"libKvo.so"_s)));
         shop.configure("[Till]\npluginFolder = " + QFile::encodeName(shop.folder.path()) + '\n');
     },
     "а нужен модуль", true, "не работают"},
    {"DamagedQueue", [](Broken &shop) { shop.damage("queue.db"); }, "Бонусы не работают", true, "не работают"},
    {"QueueOfANewerVersion", [](Broken &shop) { shop.patch("queue.db", 60, QByteArray("\0\0\x03\xe8", 4)); },
     "Бонусы не работают", true, "не работают"},
    {"QueueThatCanOnlyBeRead", [](Broken &shop) { shop.patch("queue.db", 18, "\x03"); }, "Бонусы не работают", true,
     "не работают"},
    {"NoServerForTheQueue",
     [](Broken &shop) { shop.configure("[Queue]\ndriver = QPSQL\nhost = 127.0.0.1\nport = 1\ndatabase = kvo\n"); },
     "Бонусы не работают", true, "не работают"},
    {"DamagedCheckStore", [](Broken &shop) { shop.damage("checks.db"); }, "Бонусы работают", false, nullptr},
    {"QueueOnAFullDisk",
     [](Broken &shop) {
         QDir().mkpath(shop.folder.filePath(u"data"_s));
         ASSERT_TRUE(QFile::link(u"/dev/full"_s, shop.data("queue.db")));
     },
     "нет места на диске", true, "не работают"},
    {"ServiceDown", [](Broken &shop) { shop.stopForGood(); }, "Бонусы работают", false, "Нет связи"},
    {"NoNetworkAtStart", [](Broken &shop) { shop.configure("host = http://loyalty.invalid\ntimeout = 2000\n"); },
     "Бонусы работают", false, "Нет связи"},
};

INSTANTIATE_TEST_SUITE_P(By, Broken, testing::ValuesIn(cases),
                         [](const auto &instance) { return std::string(instance.param.name); });

TEST_F(SaleTest, SetsACheckWithACardAsideUntilThePluginIsBack)
{
    const QByteArray goods = R"({"checks": [{"goods": [{"barcode": "1", "name": "Хлеб", "price": "45.50"}], "steps": )";
    const QString file = folder.filePath(u"till.ini"_s);
    const QByteArray configuration = readFile(file);
    runTill(goods + R"([{"card": "7770000000001"}, "price"]}]})");
    writeFile(file, configuration + "[Till]\npluginFolder = " + QFile::encodeName(folder.path()) + '\n');
    EXPECT_THAT(runTill(goods + R"(["close"], "expect": {"outcome": "closed"}}]})").toStdString(),
                HasSubstr("Чек отложен"));
    writeFile(file, configuration);
    EXPECT_THAT(askTill({u"sell"_s}, "take 1\nclose\n").toStdString(), HasSubstr("Начислено баллов"));
    expectEqualBooks(2);
}

TEST_F(SaleTest, GoesOnWithAClockThatWasPutBackAYear)
{
    runTill(R"({"checks": [{"goods": [{"barcode": "1", "name": "Хлеб", "price": "45.50"}],
        "steps": [{"card": "7770000000001"}, "price"]}]})");
    qputenv("LD_PRELOAD", KVO_LAST_YEAR);
    qputenv("ASAN_OPTIONS", "verify_asan_link_order=0");
    runTill(R"({"checks": [{"continue": true, "steps": ["close"],
        "expect": {"outcome": "closed", "card": "7770000000001", "queued": 0}}]})");
    qunsetenv("LD_PRELOAD");
    expectEqualBooks(1);
}

} // namespace
