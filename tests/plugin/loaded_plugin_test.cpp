// libKvo.so as a host loads it: its metadata, its symbols, and the objects that it shares with the host.
#include "tests/support/checkbuilder.h"
#include "tests/support/fakeconfig.h"
#include "tests/support/restexchange.h"

#include <core/activitynotifier.h>
#include <loyalty/basicloyaltysystem.h>

#include <gtest/gtest.h>

#include <QtCore/QPluginLoader>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

class LoadedPlugin : public testing::Test
{
protected:
    LoadedPlugin() : loader(QString::fromUtf8(LIBKVO_FILE)) {}
    ~LoadedPlugin() override { loader.unload(); }

    BasicLoyaltySystem *system() { return qobject_cast<BasicLoyaltySystem *>(loader.instance()); }

    QTemporaryDir folder;
    FakeConfig config{{{u"Kvo:brand"_s, u"B"_s}, {u"Host:dataFolder"_s, folder.path()}}};
    QPluginLoader loader;
};

} // namespace

TEST_F(LoadedPlugin, SaysWhatItIs)
{
    EXPECT_EQ(loader.metaData().value("IID"_L1), u"Kvo"_s);
    EXPECT_EQ(loader.metaData().value("className"_L1), u"Plugin"_s);
    QObject *plugin = loader.instance();
    ASSERT_TRUE(plugin) << loader.errorString().toStdString();
    EXPECT_STREQ(plugin->metaObject()->className(), "kvo::Plugin");
    EXPECT_NE(plugin->metaObject()->indexOfMethod("handleEvent(Event)"), -1);
    BasicLoyaltySystem *loyalty = system();
    ASSERT_TRUE(loyalty);
    EXPECT_EQ(plugin->qt_metacast("LoyaltySystem"), loyalty);
    EXPECT_EQ(plugin->qt_metacast("org.poshost.AbstractPlugin"), static_cast<BasicPlugin *>(loyalty));
    EXPECT_EQ(plugin->qt_metacast("BaseActivityListener"), plugin);
    EXPECT_EQ(loyalty->getLoyaltySystemCode(), 26);
    EXPECT_FALSE(loyalty->checkOption(LoyaltySystemOption::RequestPointsForSpend));

    // How a host knows the types of events and of plugin data.
    for (const char *type : {"Event", "DocumentBonusRecord", "BonusImpactPtrList"})
        EXPECT_TRUE(QMetaType::fromName(type).isValid()) << type;
    const QVariantList records = QVariant::fromValue(QList<DocumentBonusRecord>(1)).toList();
    EXPECT_TRUE(records.value(0).toMap().contains(u"cardNumber"_s));
}

TEST_F(LoadedPlugin, ExportsItsEntryPointsAndNothingElse)
{
    QProcess nm;
    nm.start(u"nm"_s, {u"-D"_s, u"--defined-only"_s, u"-j"_s, QString::fromUtf8(LIBKVO_FILE)});
    ASSERT_TRUE(nm.waitForFinished() && nm.exitCode() == 0);
    QList<QByteArray> symbols = nm.readAllStandardOutput().trimmed().split('\n');
    std::sort(symbols.begin(), symbols.end());
    EXPECT_EQ(symbols, (QList<QByteArray>{"qt_plugin_instance", "qt_plugin_query_metadata_v2"}));
}

TEST_F(LoadedPlugin, SharesSingletonsAndMocksWithTheHost)
{
    BasicLoyaltySystem *plugin = system();
    ASSERT_TRUE(plugin);
    RestExchange exchange;
    exchange.answer = RestExchange::response(200, R"({"success": true, "data": {"CardNumber": "2000"}})");

    const auto found = plugin->getCardNumber({static_cast<int>(ECardNumberType::Phone), u"+7900"_s});

    // The brand comes from this process' Config, the exchange went to this process' mock.
    EXPECT_EQ(found.cardNumber, u"2000");
    EXPECT_TRUE(exchange.sentUrl.query().startsWith(u"Brand=B&"));

    // The plugin subscribes to this process' notifier: pricing again after the event reaches the mock.
    ASSERT_TRUE(plugin->init());
    const auto document = builder::check({});
    const auto card = builder::card(u"2000"_s, plugin->getLoyaltySystemCode());
    card->setOperationId(u"basket-1"_s);
    document->addCard(card);
    plugin->setDocument(document);
    Singleton<ActivityNotifier>::instance()->notify(Event(
        EventCode::PaymentStarted, {{u"document"_s, QVariant::fromValue(QSharedPointer<AbstractDocument>(document))}}));
    EXPECT_TRUE(exchange.sentUrl.path().endsWith(u"/updateOrder"_s));
    EXPECT_TRUE(plugin->deinit());
    plugin->setDocument({});
}

TEST_F(LoadedPlugin, MayBeUnloadedWhileItsValuesLiveOn)
{
    BasicLoyaltySystem *plugin = system();
    ASSERT_TRUE(plugin);
    const auto document = QSharedPointer<SaleDocument>::create();
    plugin->setDocument(document);
    plugin->setPluginData(u"bonusRecords"_s, QVariant::fromValue(QList<DocumentBonusRecord>(2)));
    ASSERT_TRUE(loader.unload());
    EXPECT_EQ(document->getPluginData(document->pluginDataKeys().value(0)).size(), 1);
}
