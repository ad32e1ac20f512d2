// libKvo.so as a host loads it: its metadata, its symbols, and what stays of it after it is unloaded. That it shares
// the host's objects is seen in tests/sale.
#include "tests/support/fakeconfig.h"
#include "tests/support/test.h"

#include <document/saledocument.h>
#include <loyalty/basicloyaltysystem.h>

#include <QtCore/QPluginLoader>
#include <QtCore/QProcess>

#include <algorithm>

namespace {

struct LoadedPlugin : testing::Test
{
    ~LoadedPlugin() override { loader.unload(); }

    FakeConfig config{{}};
    QPluginLoader loader{QStringLiteral(LIBKVO_FILE)};
};

TEST_F(LoadedPlugin, SaysWhatItIs)
{
    EXPECT_EQ(loader.metaData().value("IID"_L1), u"Kvo"_s);
    EXPECT_EQ(loader.metaData().value("className"_L1), u"Plugin"_s);
    QObject *plugin = loader.instance();
    ASSERT_TRUE(plugin) << loader.errorString().toStdString();
    EXPECT_STREQ(plugin->metaObject()->className(), "kvo::Plugin");
    EXPECT_NE(plugin->metaObject()->indexOfMethod("handleEvent(Event)"), -1);
    auto *loyalty = qobject_cast<BasicLoyaltySystem *>(plugin);
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

TEST_F(LoadedPlugin, MayBeUnloadedWhileItsValuesLiveOn)
{
    auto *plugin = qobject_cast<BasicLoyaltySystem *>(loader.instance());
    ASSERT_TRUE(plugin);
    const auto document = QSharedPointer<SaleDocument>::create();
    plugin->setDocument(document);
    plugin->setPluginData(u"bonusRecords"_s, QVariant::fromValue(QList<DocumentBonusRecord>(2)));
    ASSERT_TRUE(loader.unload());
    EXPECT_EQ(document->getPluginData(document->pluginDataKeys().value(0)).size(), 1);
}

} // namespace
