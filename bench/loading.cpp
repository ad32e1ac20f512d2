// Loading the plugin. It stays mapped once it is loaded, so each measurement has a process of its own.
#include "comparisons.h"
#include "tests/support/fakeconfig.h"

#include <loyalty/basicloyaltysystem.h>

#include <dlfcn.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>
#include <QtCore/QPluginLoader>
#include <QtCore/QProcess>

#include <iostream>

using namespace Qt::Literals::StringLiterals;

namespace bench {

namespace {

void loadPlugin()
{
    QPluginLoader loader(QString::fromUtf8(LIBKVO_FILE));
    auto *const system = qobject_cast<BasicLoyaltySystem *>(loader.instance());
    require(system && system->init() && system->deinit(), "libKvo.so does not start");
}

void loadOnly()
{
    require(QPluginLoader(QString::fromUtf8(LIBKVO_FILE)).load(), "libKvo.so cannot be loaded");
}

// As Qt opens plugins.
void openLibrary()
{
    require(::dlopen(LIBKVO_FILE, RTLD_LAZY), "libKvo.so cannot be opened");
}

double inNewProcess(const QString &side)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {u"--load-once"_s, side});
    require(process.waitForFinished() && process.exitCode() == 0, "the process that loads libKvo.so has failed");
    return process.readAllStandardOutput().toDouble();
}

} // namespace

void loadOnce(const std::string &side)
{
    const FakeConfig config({{u"Kvo:host"_s, u"http://127.0.0.1"_s}});
    // What Qt finds out once per process, whoever asks first: a till with a window has done so before it loads us.
    std::ignore = QCoreApplication::libraryPaths();
    std::ignore = QLocale().name();
    std::cout << secondsOf(side == "ours" ? loadPlugin : side == "loader" ? loadOnly : openLibrary) << '\n';
}

void loadVsDlopen(Pairs &pairs)
{
    pairs.run([] { return inNewProcess(u"ours"_s); }, [] { return inNewProcess(u"beside"_s); });
}

void loaderVsDlopen(Pairs &pairs)
{
    pairs.run([] { return inNewProcess(u"loader"_s); }, [] { return inNewProcess(u"beside"_s); });
}

} // namespace bench
