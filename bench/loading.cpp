// Loading the plugin. It stays mapped once it is loaded, so each measurement has a process of its own.
#include "comparisons.h"
#include "tests/support/fakeconfig.h"

#include <loyalty/basicloyaltysystem.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>
#include <QtCore/QPluginLoader>
#include <QtCore/QProcess>

#include <iostream>

using namespace Qt::Literals::StringLiterals;

namespace bench {

namespace {

void loadPlugin(const char *file)
{
    QPluginLoader loader(QString::fromUtf8(file));
    auto *const system = qobject_cast<BasicLoyaltySystem *>(loader.instance());
    require(system && system->init() && system->deinit(), "the plugin does not start");
}

double inNewProcess(const QString &side)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {u"--load-once"_s, side});
    require(process.waitForFinished() && process.exitCode() == 0, "the process that loads the plugin has failed");
    return process.readAllStandardOutput().toDouble();
}

} // namespace

void loadOnce(const std::string &side)
{
    const FakeConfig config({{u"Kvo:host"_s, u"http://127.0.0.1"_s}});
    // What Qt finds out once per process, whoever asks first: a till with a window has done so before it loads us.
    std::ignore = QCoreApplication::libraryPaths();
    std::ignore = QLocale().name();
    const char *const file = side == "ours" ? LIBKVO_FILE : EMPTY_PLUGIN_FILE;
    std::cout << secondsOf([file] { loadPlugin(file); }) << '\n';
}

void loadVsEmptyPlugin(Pairs &pairs)
{
    pairs.run([] { return inNewProcess(u"ours"_s); }, [] { return inNewProcess(u"beside"_s); });
}

} // namespace bench
