// The cashier's window, driven with keys against the real plugin and the service's stand-in.
#include "iowatch.h"
#include "tests/sale/salefixture.h"
#include "tests/support/golden.h"
#include "tests/support/sql.h"
#include "tsan.h"
#include "windowdriver.h"

#include <net/linkstate.h>

#include <QtGui/QClipboard>
#include <QtGui/QPixmap>
#include <QtWidgets/QApplication>

namespace {

/// A shop whose till has a window.
struct WindowTest : SaleTest
{
    WindowTest()
    {
        Singleton<LinkState>::replace(nullptr); // of the test before
        writeFile(folder.filePath(u"data/goods.json"_s), readFile(QStringLiteral(KVO_SOURCES "/till/goods.json")));
    }

    static std::string text(const QString &shown) { return shown.toStdString(); }

    /// Starts the till, with the settings that are given besides the usual ones.
    void start(const QByteArray &settings = {})
    {
        configure(settings);
        iowatch::watch(folder.path().toStdString());
        shop = std::make_unique<WindowDriver>(ini);
        ASSERT_TRUE(shop->ready);
    }

    /// Puts the customer with 1500 points on the check, which the service then prices.
    void addCustomer()
    {
        ASSERT_TRUE(shop->press(Qt::Key_F3));
        Q_EMIT shop->till.changed(); // as after each look at the queue
        ASSERT_TRUE(shop->type(u"+79001234567"_s));
        ASSERT_TRUE(shop->press(Qt::Key_F4));
    }

    /// The code in the customer's last text message.
    QString code() const { return QString::fromUtf8(askService({u"outbox"_s, u"--last"_s, u"--code"_s})).trimmed(); }

    /// Looks whether the window fits a screen of 1024x768 at 125 %, and keeps a picture of it where it has a name and
    /// the environment names a folder.
    void picture(const QString &name)
    {
        const QSize least = shop->window.minimumSizeHint();
        EXPECT_TRUE(least.width() <= 1024 / 1.25 && least.height() <= 768 / 1.25)
            << least.width() << 'x' << least.height();
        QTest::qWait(1); // a last event or two before it is drawn
        const QPixmap shown = shop->window.grab();
        if (const QString out = qEnvironmentVariable("KVO_SCREENSHOTS"); !out.isEmpty() && !name.isEmpty()) {
            EXPECT_TRUE(shown.save(QDir(out).filePath(name + u".png"_s)));
        }
    }

    std::unique_ptr<WindowDriver> shop;
};

struct Tour : WindowTest, testing::WithParamInterface<const char *>
{
};

TEST_P(Tour, SellsByPhoneWithPointsAndCode)
{
    const QString theme = QString::fromLatin1(GetParam());
    start("[Till]\ntheme = " + QByteArray(GetParam()) + '\n');
    for (const char *entry : {"2*4600000000059", "0,345*сыр", "4600000000042", "1.25*4600000000097", "4600000000301"})
        ASSERT_TRUE(shop->type(QString::fromUtf8(entry)));
    addCustomer();
    EXPECT_EQ(QApplication::palette().window(), till::Theme{theme == u"dark"}.colour(u"ground"));
    EXPECT_THAT(text(qApp->styleSheet()), testing::MatchesRegex("[^@]+")) << "all names stand for colours";
    picture(u"sale-"_s + theme);
    ASSERT_TRUE(shop->press({Qt::Key_F5, Qt::Key_Escape}));
    ASSERT_TRUE(shop->type(u"wrong"_s));
    const QString first = code();
    ASSERT_TRUE(shop->press(Qt::Key_F8));
    ASSERT_TRUE(WindowDriver::waitFor([&] { return code() != first; }));
    picture(u"code-"_s + theme);
    ASSERT_TRUE(shop->type(code()));
    ASSERT_TRUE(shop->press(Qt::Key_F12));
    picture(u"receipt-"_s + theme);
    ASSERT_TRUE(shop->press({Qt::Key_Return, Qt::Key_F11}));
    picture(u"journal-"_s + theme);
    shop->hit(Qt::Key_Backtab); // to the search
    ASSERT_TRUE(shop->type(u"Сидоров"_s));
    shop->hit(Qt::Key_A, Qt::ControlModifier);
    ASSERT_TRUE(shop->type(u"петров"_s));
    const QString receipt = shop->page();
    EXPECT_THAT(text(receipt), HasSubstr("Сыр Российский")) << "printed again from the journal";
    ASSERT_TRUE(shop->press(Qt::Key_F5));
    EXPECT_EQ(QApplication::clipboard()->text(), receipt);
    ASSERT_TRUE(shop->press({Qt::Key_F6, Qt::Key_Return, Qt::Key_F11}));
    const iowatch::Calls calls = iowatch::calls();
    EXPECT_THAT(calls.ofMainThread, testing::IsEmpty()) << "the window's thread has waited for a disk or a service";
    EXPECT_EQ(calls.ofOthers.size(), 9);
    const QDir data(folder.filePath(u"data"_s), u"receipt-*.txt"_s);
    const QFileInfo saved(data.filePath(data.entryList().value(0)));
    EXPECT_EQ(QString::fromUtf8(readFile(saved.filePath())), receipt);
    EXPECT_GT(iowatch::calls().ofMainThread.count("open64"), 0) << "which is noticed";
    EXPECT_FALSE(saved.permission(QFile::ReadGroup) || saved.permission(QFile::ReadOther));
    expectText(shop->story(), u"window/tour.txt"_s);
    shop.reset();
    drain();
    expectEqualBooks(1);
}

INSTANTIATE_TEST_SUITE_P(Themes, Tour, testing::Values("light", "dark"), [](const auto &theme) { return theme.param; });

TEST_F(WindowTest, LooksAfterTheQueue)
{
    start();
    const auto openRefused = [this] {
        ASSERT_TRUE(shop->type(u"4600000000059"_s));
        addCustomer();
        addFault({{u"method"_s, u"postOrder"_s}, {u"kind"_s, u"status"_s}, {u"status"_s, 200}});
        ASSERT_TRUE(shop->press(Qt::Key_F12));
        ASSERT_TRUE(WindowDriver::waitFor([this] { return shop->till.view().queue.value().blocked > 0; }));
        ASSERT_TRUE(shop->press(Qt::Key_L, Qt::ControlModifier));
        EXPECT_THAT(text(shop->rows().join(u'\n')), AllOf(HasSubstr("postOrder|отклонён|"), HasSubstr("bindOrderId")));
    };
    openRefused();
    ASSERT_TRUE(shop->press(Qt::Key_Return)); // send again
    EXPECT_TRUE(WindowDriver::waitFor(
        [this] { return shop->press(Qt::Key_L, Qt::ControlModifier) && shop->rows().isEmpty(); }));
    shop->hit(Qt::Key_Escape);

    openRefused();
    ASSERT_TRUE(shop->press(Qt::Key_F5)); // discard
    ASSERT_TRUE(shop->type({}));
    ASSERT_TRUE(shop->type(u"по просьбе поддержки"_s));
    EXPECT_THAT(text(shop->rows().value(0)), HasSubstr("снят|1|по просьбе поддержки"));
    ASSERT_TRUE(WindowDriver::waitFor([this] { return requestsOf(u"bindOrderId"_s) == 2; }));
    ASSERT_TRUE(shop->press(Qt::Key_Return)); // send again
    EXPECT_EQ(shop->window.findChild<QLabel *>(u"message"_s)->palette().windowText(), till::Theme{}.colour(u"onAccent"))
        << "discarded: not sent";
}

TEST_F(WindowTest, FitsTheScreenWhateverTheCustomerIsCalled)
{
    start();
    EXPECT_EQ(shop->window.size(), QSize(1024, 768).boundedTo(shop->window.screen()->availableSize()));
    shop->window.resize(819, 600);
    for (const QString &name : {QString(200, u'Ш'), u"Шш "_s.repeated(66)}) {
        runSql(ledger, u"UPDATE customers SET last_name = '%1'"_s.arg(name));
        ASSERT_TRUE(shop->type(u"4600000000059"_s));
        addCustomer();
        ASSERT_TRUE(shop->press(Qt::Key_F5));
        picture({});
        EXPECT_THAT(text(shop->shown().remove(QChar(0x200B))), HasSubstr(text(name.left(8))));
        ASSERT_TRUE(shop->press({Qt::Key_F10, Qt::Key_F10, Qt::Key_F12, Qt::Key_Return})); // no points, no card
        EXPECT_EQ(shop->window.height(), 600);
    }
    ASSERT_TRUE(shop->type(u"4600000000059"_s));
    addCustomer();
    ASSERT_TRUE(shop->press({Qt::Key_F2, Qt::Key_F10})); // keep
    EXPECT_TRUE(shop->till.view().hasCard());
    ASSERT_TRUE(shop->press({Qt::Key_F2, Qt::Key_F5})); // take off
    EXPECT_FALSE(shop->till.view().hasCard());
}

TEST_F(WindowTest, IsWalkedThroughWithTheTabKey)
{
    start();
    for (int line = 0; line < 12; ++line)
        ASSERT_TRUE(shop->type(u"ол"_s) && shop->press(Qt::Key_Return));
    const QWidget *entry = shop->window.focusWidget();
    QSet<const QWidget *> stops;
    do {
        stops.insert(shop->window.focusWidget());
        shop->hit(Qt::Key_Tab);
    } while (shop->window.focusWidget() != entry && stops.size() < 30);
    for (const auto *button : shop->window.findChildren<QAbstractButton *>())
        EXPECT_EQ(stops.contains(button), button->isVisible() && button->isEnabled()) << text(button->text());
    const auto *lines = shop->window.findChildren<QTableView *>().constLast();
    EXPECT_TRUE(lines->viewport()->rect().contains(lines->visualRect(lines->model()->index(11, 0))));
}

TEST_F(WindowTest, AsksWhenTheServiceIsDownAtClosing)
{
    start();
    ASSERT_TRUE(shop->type(u"4600000000059"_s));
    addCustomer();
    stopService();
    ASSERT_TRUE(shop->press(Qt::Key_F12) && shop->isAsked());
    picture(u"question-light"_s);
    ASSERT_TRUE(shop->press(Qt::Key_F5));                     // retry
    ASSERT_TRUE(shop->isAsked() && shop->press(Qt::Key_F10)); // remove
    ASSERT_TRUE(shop->press(Qt::Key_Return));
    picture(u"offline-light"_s);
    expectText(shop->story(), u"window/offline.txt"_s);
    startService();
}

TEST_F(WindowTest, ParksACheckTakesItBackAndVoidsIt)
{
    start("[Queue]\ndatabase = /dev/null/none\n");
    ASSERT_TRUE(shop->type(u"4600000000059"_s));
    ASSERT_TRUE(shop->press({Qt::Key_F9, Qt::Key_F9}));
    ASSERT_TRUE(shop->type(u"4600000000011"_s)); // another customer meanwhile, scanned over the list
    ASSERT_TRUE(shop->press({Qt::Key_F12, Qt::Key_Return, Qt::Key_F9, Qt::Key_Return}));
    for (const Qt::Key no : {Qt::Key_F10, Qt::Key_Return, Qt::Key_Escape})
        ASSERT_TRUE(shop->press({Qt::Key_F10, no}));
    ASSERT_TRUE(shop->press(Qt::Key_F10) && shop->type(u"4600000000042"_s)); // no answer
    ASSERT_TRUE(shop->press(Qt::Key_F5));
    expectText(shop->story(), u"window/parked.txt"_s);
}

TEST_F(WindowTest, LivesAndTakesGoodsWhileAnExchangeHangs)
{
    start();
    ASSERT_TRUE(shop->type(u"масл"_s) && shop->press(Qt::Key_PageDown));
    shop->hit(Qt::Key_Return);
    // Chosen already; the only line goes and comes back.
    ASSERT_TRUE(shop->press({Qt::Key_Return, Qt::Key_F7, Qt::Key_F8, Qt::Key_F3}));
    shop->scan(u"+79001234567"_s);
    ASSERT_TRUE(shop->type(u"4600000000059"_s) && shop->press(Qt::Key_F6)); // Given up.
    addFault({{u"method"_s, u"calculateOrder"_s}, {u"kind"_s, u"delay"_s}, {u"milliseconds"_s, 1500}});
    shop->hit(Qt::Key_F4);
    ASSERT_TRUE(WindowDriver::waitFor([this] { return shop->shown().contains(u"Рассчитываем чек: ждём"_s); }));
    EXPECT_EQ(shop->window.findChild<QLabel *>(u"message"_s)->palette().window(), till::Theme{}.colour(u"accent"));
    shop->hit(Qt::Key_F12); // Not now.
    EXPECT_FALSE(shop->window.close()) << "the check thread could not end";
    shop->scan(u"9999999999999"_s);
    ASSERT_TRUE(shop->type(u"4600000000011"_s));
    EXPECT_THAT(text(shop->shown()), HasSubstr("Товар не найден: 9999999999999"));
    EXPECT_EQ(shop->till.view().check.lines.size(), 2);
    ASSERT_TRUE(shop->press({Qt::Key_F12, Qt::Key_Return})); // Not yet; seen.
    EXPECT_FALSE(shop->till.view().check.isPriced);
    shop->scan(u"9999999999999"_s);
    ASSERT_TRUE(shop->type(u"4600000000011"_s) && shop->press(Qt::Key_Escape)); // Dropped.
    ASSERT_TRUE(shop->type(u"4600000000042"_s) && shop->press({Qt::Key_Up, Qt::Key_Up, Qt::Key_Up, Qt::Key_F6}));
    ASSERT_TRUE(shop->type(u"1,5"_s) && shop->press(Qt::Key_F6) && shop->type(u"=40,50"_s));
    ASSERT_TRUE(shop->press({Qt::Key_Down, Qt::Key_F7, Qt::Key_F7, Qt::Key_F8}) && shop->type(u"Ж"_s.repeated(250)));
    expectText(shop->story(), u"window/lines.txt"_s);
}

TEST_F(WindowTest, GoesOnAfterAKillAndLetsNobodyElseIn)
{
    const QString scenario = folder.filePath(u"hold.json"_s);
    writeFile(scenario, check(R"({"hold": 100})"));
    QProcess other;
    other.setProcessChannelMode(QProcess::MergedChannels);
    other.start(QStringLiteral(KVO_TILL), {u"run"_s, u"--config"_s, ini, scenario});
    for (QByteArray said; !said.contains("Касса ждёт"); said += other.readAll())
        ASSERT_TRUE(other.waitForReadyRead(30'000)) << said.toStdString();
    start();
    EXPECT_THAT(text(shop->till.view().fault), HasSubstr(std::to_string(other.processId())));
    EXPECT_EQ(shop->page(), shop->till.view().fault);
    shop.reset();
    other.kill();
    ASSERT_TRUE(other.waitForFinished());
    QFile::remove(folder.filePath(u"data/goods.json"_s));
    start();
    EXPECT_EQ(shop->till.view().check.lines.size(), 2);
    EXPECT_THAT(text(shop->shown()), testing::AllOf(HasSubstr("Товаров нет"), HasSubstr("Чек восстановлен")));
}

} // namespace

int main(int argc, char *argv[])
{
    testing::InitGoogleMock(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const WatchedApplication application(argc, argv);
    QLocale::setDefault(QLocale::Russian);
    return RUN_ALL_TESTS();
}
