// The memory of a real till over a day's sales.
#include "comparisons.h"

#include <checks/checkstore.h>

#include <nlohmann/json.hpp>

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

void writeFiles(const std::string &folder, const std::string &url)
{
    using Json = nlohmann::json;
    std::ofstream(folder + "/till.ini") << "[Host]\ndataFolder = " << folder << "/data\n[Kvo]\nhost = " << url
                                        << "\nbrand = KVO\nonlineStore = SHOP-1\nterminal = TILL-1\n";
    Json goods = Json::array();
    for (int line = 0; line < 20; ++line)
        goods.push_back({{"barcode", std::to_string(4600000000000 + line)}, {"name", "Товар"}, {"price", "49.90"}});
    const Json sale{{"goods", goods}, {"steps", {{{"card", "7770000000001"}}, "price", "spend", "close"}}};
    std::ofstream(folder + "/scenario.json") << Json{{"checks", Json(firstSales, sale)}};
}

/// The same small file again and again: memory that was used to read a large one could hide what the sales need.
QStringList commandLine(const QTemporaryDir &folder)
{
    QStringList line{u"run"_s, u"--config"_s, folder.filePath(u"till.ini"_s)};
    for (int sales = 0; sales < allSales; sales += firstSales)
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

} // namespace

double tillMemory(const QString &url)
{
    // Sales wait for the disk; what is on it does not matter here.
    const QTemporaryDir inMemory(u"/dev/shm/kvo-bench-XXXXXX"_s);
    const QTemporaryDir onDisk;
    const QTemporaryDir &folder = inMemory.isValid() ? inMemory : onDisk;
    writeFiles(folder.path().toStdString(), url.toStdString());
    QProcess till;
    till.setStandardOutputFile(folder.filePath(u"receipts.txt"_s));
    till.start(QString::fromUtf8(KVO_TILL_FILE), commandLine(folder));
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
