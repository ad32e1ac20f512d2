// Proves that the queue and the check store keep their promises when the power fails. They do random work, the power
// fails before each operation on a file, and what it leaves is judged; now and then the work goes on from there. On the
// same terms their durability is undermined, and they must be seen to lose something. Exit status 1: a promise was
// broken, or the proof has proved nothing.
// Usage: powercut [CUTS [SEED]]; so many cuts (3000) each of queue and check store, a tenth of it for each control. A
// seed repeats an earlier run.
#include "powercutchecks.h"
#include "powercutdisk.h"
#include "powercutqueue.h"

#include <core/logsetup.h>

#include <support/file.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>

#include <iostream>

namespace {

constexpr int livesOfATill = 30;
constexpr int longestLife = 250; // operations on files

/// Makes these the only files in the folder. Of the log's index, which is never synced, anything may be there.
void put(const PowerCutDisk::Contents &contents, const QString &folder, bool withIndex)
{
    QDir directory(folder);
    for (const QString &old : directory.entryList(QDir::Files))
        directory.remove(old);
    for (const auto &[name, bytes] : contents) {
        const QString file = directory.filePath(QFileInfo(QString::fromStdString(name)).fileName());
        writeFile(file, QByteArray::fromStdString(bytes));
        if (withIndex && file.endsWith(u".db"))
            writeFile(file + u"-shm"_s, QByteArray(40'000, '\x5a'));
    }
}

/// Works until the power fails. False: what is left is beyond use.
template <class Work>
bool live(Work &work, PowerCutDisk &disk, const QString &folder, PowerCutTally &tally)
{
    std::vector<std::pair<PowerCutDisk::Contents, typename Work::Ledger>> cuts;
    const bool isDense = work.chance(0.05); // cut before each operation
    int operations = work.upTo(isDense ? longestLife / 4 : longestLife) + 1;
    {
        PowerCutVfs vfs(disk);
        vfs.afterDatabaseWrite = [&] { work.afterDatabaseWrite(); };
        vfs.beforeOperation = [&] {
            --operations;
            if (operations == 0 || (operations > 0 && (isDense || work.chance(0.1))))
                cuts.emplace_back(disk.cut(), work.ledger());
        };
        while (operations > 0) {
            work.open();
            if (disk.isEmpty())
                throw std::runtime_error("Qt's SQLite driver does not use the SQLite library of this program");
            while (operations > 0 && !work.chance(0.03))
                work.act();
            work.close();
        }
    }
    const QTemporaryDir copy;
    for (const auto &[left, ledger] : cuts) {
        put(left, copy.path(), work.chance(0.3));
        ++tally.cuts;
        try {
            work.judge(copy.path(), ledger);
        } catch (const std::exception &error) {
            ++tally.broken[error.what()];
            return false;
        }
    }
    work.goBack();
    disk.restart(cuts.back().first);
    put(cuts.back().first, folder, false);
    return true;
}

template <class Work>
PowerCutTally run(const char *name, Sabotage sabotage, int cuts, std::uint64_t seed)
{
    PowerCutTally tally;
    std::mt19937_64 seeds(seed);
    while (tally.cuts < cuts) {
        const QTemporaryDir folder;
        PowerCutDisk disk(seeds(), sabotage == Sabotage::SyncsIgnored);
        Work work(folder.path(), seeds(), sabotage, tally);
        for (int i = 0; i < livesOfATill && tally.cuts < cuts; ++i)
            if (!live(work, disk, folder.path(), tally))
                break;
        tally.torn += disk.torn();
    }
    std::cout << name << ": " << tally.cuts << " power cuts, " << tally.torn << " blocks torn";
    for (const auto &[what, count] : tally.seen)
        std::cout << ", " << what << ' ' << count;
    std::cout << "\n  broken promises:";
    for (const auto &[what, count] : tally.broken)
        std::cout << ' ' << what << ' ' << count;
    std::cout << std::endl;
    return tally;
}

template <class Work>
bool prove(const std::string &name, int cuts, std::uint64_t seed)
{
    const PowerCutTally tally = run<Work>(name.c_str(), Sabotage::None, cuts, seed);
    const auto isZero = [](const auto &entry) { return entry.second == 0; };
    const bool isGood = std::ranges::all_of(tally.broken, isZero);
    const bool isConvincing = tally.torn > 0 && std::ranges::none_of(tally.seen, isZero);
    const auto isNoticed = [&](const char *control, Sabotage sabotage) {
        return !std::ranges::all_of(run<Work>(control, sabotage, std::max(cuts / 10, 100), seed).broken, isZero);
    };
    const bool controlsFail = isNoticed("  control, a disk that ignores syncs", Sabotage::SyncsIgnored) &&
                              isNoticed("  control, synchronous NORMAL", Sabotage::SynchronousNormal);
    std::cout << (isGood ? "" : "FAILED: a promise was broken by the " + name + '\n')
              << (isConvincing ? "" : "FAILED: not all moments were hit, use more cuts\n")
              << (controlsFail ? "" : "FAILED: a control has lost nothing, the proof does not bite\n");
    return isGood && isConvincing && controlsFail;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int cuts = arguments.value(1, u"3000"_s).toInt();
    bool isNumber = false;
    const std::uint64_t seed = arguments.value(2, QString::number(std::random_device()())).toULongLong(&isNumber);
    if (cuts < 1 || !isNumber) {
        std::cerr << "powercut [CUTS [SEED]]: CUTS must be a number above 0, SEED a number\n";
        return 2;
    }
    std::cout << "seed " << seed << std::endl;
    // What is durable is played; the real files need not be, and should be quick.
    if (!qEnvironmentVariableIsSet("TMPDIR") && QFileInfo(u"/dev/shm"_s).isWritable())
        qputenv("TMPDIR", "/dev/shm");
    const FakeConfig config({{u"Log:level"_s, u"OFF"_s}}); // each cut would be an error line
    setUpLogging(*Singleton<Config>::instance());
    const bool queueHolds = prove<PowerCutQueue>("queue", cuts, seed);
    return prove<PowerCutChecks>("check store", cuts, seed) && queueHolds ? 0 : 1;
}
