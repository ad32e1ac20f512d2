// Proves that the queue and the check store keep their promises when the power fails: random work, random cuts, and on
// the same terms two tills whose durability is undermined, which must be seen to lose something. Exit status 1: a
// promise was broken, or the proof has proved nothing.
#include "powercutchecks.h"
#include "powercuttill.h"

#include <core/logsetup.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <iostream>

using namespace Qt::Literals::StringLiterals;

namespace {

using Sabotage = PowerCutTill::Sabotage;
constexpr int cutsPerQueue = 30;

bool judge(const char *what, bool isGood, bool isConvincing, bool controlsFail)
{
    std::cout << (isGood ? "" : "FAILED: a promise was broken by ") << (isGood ? "" : what)
              << (isConvincing ? "" : "\nFAILED: not all moments were hit, use more cuts\n")
              << (controlsFail ? "" : "\nFAILED: a control has lost nothing, the proof does not bite\n");
    return isGood && isConvincing && controlsFail;
}

PowerCutCounts run(const char *name, Sabotage sabotage, int cuts, std::uint64_t seed)
{
    PowerCutCounts counts;
    std::mt19937_64 seeds(seed);
    while (counts.cuts + counts.unexpected < cuts) {
        PowerCutTill till(seeds(), sabotage, counts);
        for (int i = 0; i < cutsPerQueue && counts.cuts < cuts && till.liveUntilPowerCut(); ++i)
            ;
    }
    std::cout << name << ": " << counts.cuts << " power cuts, blocks torn " << counts.torn << ", events pushed "
              << counts.pushed << ", delivered " << counts.delivered << ", of these again " << counts.again
              << "\n  lost " << counts.lost << ", databases corrupt " << counts.corrupt << ", overtaken "
              << counts.overtaken << ", unknown " << counts.unknown << ", again after a durable deletion "
              << counts.undeleted << ", failures with the power on " << counts.unexpected << '\n';
    return counts;
}

bool proveQueue(int cuts, int controlCuts, std::uint64_t seed)
{
    const PowerCutCounts queue = run("queue", Sabotage::None, cuts, seed);
    const bool isConvincing = queue.again > 0 && queue.torn > 0; // otherwise the interesting moments were missed
    const bool controlsFail =
        run("control, a disk that ignores syncs", Sabotage::SyncsIgnored, controlCuts, seed).lost > 0 &&
        run("control, synchronous NORMAL", Sabotage::SynchronousNormal, controlCuts, seed).lost > 0;
    return judge("the queue", queue.areGood(), isConvincing, controlsFail);
}

PowerCutCheckCounts runChecks(const char *name, Sabotage sabotage, int cuts, std::uint64_t seed)
{
    PowerCutCheckCounts counts;
    std::mt19937_64 seeds(seed);
    while (counts.cuts + counts.unexpected < cuts) {
        PowerCutChecks checks(seeds(), sabotage, counts);
        for (int i = 0; i < cutsPerQueue && counts.cuts < cuts && checks.liveUntilPowerCut(); ++i)
            ;
    }
    std::cout << name << ": " << counts.cuts << " power cuts, blocks torn " << counts.torn << ", steps acknowledged "
              << counts.saved << ", of these endings " << counts.finished
              << ", cuts that left the step in progress done " << counts.inHand << "\n  lost " << counts.lost
              << ", halved " << counts.halved << ", databases corrupt " << counts.corrupt
              << ", failures with the power on " << counts.unexpected << '\n';
    return counts;
}

bool proveChecks(int cuts, int controlCuts, std::uint64_t seed)
{
    const PowerCutCheckCounts checks = runChecks("checks", Sabotage::None, cuts, seed);
    const bool isConvincing = checks.finished > 0 && checks.inHand > 0 && checks.torn > 0;
    const bool controlsFail =
        runChecks("control, a disk that ignores syncs", Sabotage::SyncsIgnored, controlCuts, seed).lost > 0 &&
        runChecks("control, synchronous NORMAL", Sabotage::SynchronousNormal, controlCuts, seed).lost > 0;
    return judge("the check store", checks.areGood(), isConvincing, controlsFail);
}

bool prove(int cuts, std::uint64_t seed)
{
    const int controlCuts = std::max(cuts / 10, 50);
    const bool queueHolds = proveQueue(cuts, controlCuts, seed);
    return proveChecks(cuts, controlCuts, seed) && queueHolds;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({u"cuts"_s, u"How many power cuts each of queue and check store; a tenth of it for each control"_s,
                      u"number"_s, u"3000"_s});
    parser.addOption({u"seed"_s, u"Repeats an earlier run"_s, u"number"_s, QString::number(std::random_device()())});
    parser.process(application);
    bool cutsAreNumber = false;
    bool seedIsNumber = false;
    const int cuts = parser.value(u"cuts"_s).toInt(&cutsAreNumber);
    const std::uint64_t seed = parser.value(u"seed"_s).toULongLong(&seedIsNumber);
    if (!cutsAreNumber || !seedIsNumber || cuts < 1) {
        std::cerr << "--cuts: expected a number above 0; --seed: expected a number\n";
        return 2;
    }
    std::cout << "seed " << seed << std::endl;
    // What is durable is played; the real files need not be, and should be quick.
    if (!qEnvironmentVariableIsSet("TMPDIR") && QFileInfo(u"/dev/shm"_s).isWritable())
        qputenv("TMPDIR", "/dev/shm");
    const FakeConfig config({{u"Log:level"_s, u"OFF"_s}}); // each cut would be an error line
    setUpLogging(*Singleton<Config>::instance());
    try {
        return prove(cuts, seed) ? 0 : 1;
    } catch (const std::exception &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
