// A real kvo-till: its memory over a day's sales, and its syncs.
#include "comparisons.h"
#include "samples.h"

#include <checks/checkstore.h>

#include <nlohmann/json.hpp>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <fstream>
#include <iostream>

using namespace Qt::Literals::StringLiterals;

namespace bench {

namespace {

constexpr int allSales = 2000;
constexpr int firstSales = 200;

void writeFiles(const std::string &folder, const std::string &url, int sales)
{
    using Json = nlohmann::json;
    std::ofstream(folder + "/till.ini") << "[Host]\ndataFolder = " << folder << "/data\n[Kvo]\nhost = " << url
                                        << "\nbrand = KVO\nonlineStore = SHOP-1\nterminal = TILL-1\n";
    Json goods = Json::array();
    for (int line = 0; line < 20; ++line)
        goods.push_back({{"barcode", std::to_string(4600000000000 + line)}, {"name", "Товар"}, {"price", "49.90"}});
    const Json sale{{"goods", goods}, {"steps", {{{"card", "7770000000001"}}, "price", "spend", "close"}}};
    std::ofstream(folder + "/scenario.json") << Json{{"checks", Json(sales, sale)}};
}

/// The same small file again and again: memory that was used to read a large one could hide what the sales need.
QStringList commandLine(const QTemporaryDir &folder, int repetitions)
{
    QStringList line{u"run"_s, u"--config"_s, folder.filePath(u"till.ini"_s)};
    for (int i = 0; i < repetitions; ++i)
        line.append(folder.filePath(u"scenario.json"_s));
    return line;
}

/// 0 when the process has ended.
double peakKilobytes(qint64 process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string word;
    while (status >> word && word != "VmHWM:")
        ;
    double kilobytes = 0;
    status >> kilobytes;
    return kilobytes;
}

/// All syncs of a till that starts, makes so many sales and ends.
int countSyncs(const QTemporaryDir &folder, int sales)
{
    const QString trace = folder.filePath(u"syncs.txt"_s);
    QProcess till;
    till.setStandardOutputFile(QProcess::nullDevice());
    till.start(u"strace"_s, QStringList{u"-f"_s, u"-qq"_s, u"-e"_s, u"trace=fsync,fdatasync"_s, u"-o"_s, trace,
                                        QString::fromUtf8(KVO_TILL_FILE)} +
                                commandLine(folder, sales));
    require(till.waitForFinished(-1) && till.exitCode() == 0, "kvo-till has failed, or there is no strace");
    QFile file(trace);
    require(file.open(QFile::ReadOnly), "strace has written nothing");
    // A call that another thread interrupts has a second line, "<... fsync resumed>)".
    return static_cast<int>(file.readAll().count("sync("));
}

} // namespace

double syncsPerSale(const QString &url)
{
    constexpr int sales = 10;
    const QTemporaryDir folder(diskFolder());
    writeFiles(folder.path().toStdString(), url.toStdString(), 1);
    countSyncs(folder, 1); // makes the databases
    const int one = countSyncs(folder, 1);
    const int more = countSyncs(folder, 1 + sales);
    std::cerr << "syncs of kvo-till: " << one << " with one sale, " << more << " with " << 1 + sales << '\n';
    return static_cast<double>(more - one) / sales;
}

double tillMemory(const QString &url)
{
    // Sales wait for the disk; what is on it does not matter here.
    const QTemporaryDir inMemory(u"/dev/shm/kvo-bench-XXXXXX"_s);
    const QTemporaryDir onDisk;
    const QTemporaryDir &folder = inMemory.isValid() ? inMemory : onDisk;
    writeFiles(folder.path().toStdString(), url.toStdString(), firstSales);
    QProcess till;
    till.setStandardOutputFile(folder.filePath(u"receipts.txt"_s));
    till.start(QString::fromUtf8(KVO_TILL_FILE), commandLine(folder, allSales / firstSales));
    require(till.waitForStarted(), "kvo-till does not start");
    CheckStore books(folder.filePath(u"data"_s), CheckStore::Access::Look);
    bool isEarly = true;
    double first = 0;
    double last = 0;
    while (!till.waitForFinished(1)) {
        last = std::max(last, peakKilobytes(till.processId()));
        isEarly = isEarly && books.journal().size() <= firstSales;
        if (isEarly)
            first = last;
    }
    require(till.exitCode() == 0, "kvo-till has failed");
    require(books.journal().size() == allSales, "kvo-till has not made its sales");
    std::cerr << "peak memory of kvo-till: " << first << " kB after " << firstSales << " sales, " << last
              << " kB after " << allSales << '\n';
    return last / first;
}

} // namespace bench
