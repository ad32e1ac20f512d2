// Proves that the queue keeps its promises when the power fails: random work, random cuts, and on the same terms two
// tills whose durability is undermined, which must be seen to lose events. Exit status 1: a promise was broken, or the
// proof has proved nothing.
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
using Report = PowerCutTill::Report;

constexpr int cutsPerQueue = 30;
constexpr std::array<const char *, PowerCutTill::phaseCount> phases = {"opening",  "push",       "replay",
                                                                       "deletion", "checkpoint", "closing"};

Report run(Sabotage sabotage, int cuts, std::uint64_t seed)
{
    Report report;
    std::mt19937_64 seeds(seed);
    while (report.cuts + report.unexpected < cuts) {
        PowerCutTill till(seeds(), sabotage, report);
        for (int i = 0; i < cutsPerQueue && report.cuts < cuts && till.liveUntilPowerCut(); ++i)
            ;
    }
    return report;
}

void print(const char *name, const Report &report)
{
    std::cout << name << ": " << report.cuts << " power cuts (";
    for (int phase = 0; phase < PowerCutTill::phaseCount; ++phase)
        std::cout << (phase > 0 ? ", " : "") << phases[phase] << ' ' << report.cutsByPhase[phase];
    std::cout << "), blocks dropped " << report.dropped << ", torn " << report.torn << "\n  events pushed "
              << report.pushed << ", delivered " << report.delivered << ", of these again " << report.again
              << "\n  lost " << report.lost << ", databases corrupt " << report.corrupt << ", overtaken "
              << report.overtaken << ", unknown " << report.unknown << ", again after a durable deletion "
              << report.undeleted << ", failures with the power on " << report.unexpected << '\n';
}

bool isKept(const Report &report)
{
    return report.lost + report.corrupt + report.overtaken + report.unknown + report.undeleted + report.unexpected == 0;
}

// Otherwise the interesting moments were missed.
bool isConvincing(const Report &report)
{
    constexpr PowerCutTill::Phase needed[] = {PowerCutTill::Pushing, PowerCutTill::Replaying, PowerCutTill::Deleting,
                                              PowerCutTill::Checkpointing};
    return report.again > 0 && report.torn > 0 &&
           std::ranges::all_of(needed, [&report](PowerCutTill::Phase phase) { return report.cutsByPhase[phase] > 0; });
}

bool prove(int cuts, std::uint64_t seed)
{
    const int controlCuts = std::max(cuts / 10, 50);
    const Report queue = run(Sabotage::None, cuts, seed);
    print("queue", queue);
    const Report ignored = run(Sabotage::SyncsIgnored, controlCuts, seed);
    print("control, a disk that ignores syncs", ignored);
    const Report normal = run(Sabotage::SynchronousNormal, controlCuts, seed);
    print("control, synchronous NORMAL", normal);
    const bool controlsFail = ignored.lost > 0 && normal.lost > 0;
    std::cout << (isKept(queue) ? "" : "FAILED: the queue has broken a promise\n")
              << (isConvincing(queue) ? "" : "FAILED: not all moments were hit, use more cuts\n")
              << (controlsFail ? "" : "FAILED: a control has lost nothing, the proof does not bite\n");
    return isKept(queue) && isConvincing(queue) && controlsFail;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({u"cuts"_s, u"How many power cuts; a tenth of it for each control"_s, u"number"_s, u"3000"_s});
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
