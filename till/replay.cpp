// Runs a replay: reads the day, starts the tills, reports, and has the books compared.
#include "commands.h"
#include "configuration.h"
#include "console.h"
#include "journal.h"
#include "replayreport.h"
#include "replaytills.h"

#include <core/basicexception.h>
#include <core/privatefile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QStandardPaths>

#include <system_error>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

QHash<QString, QString> columnNames(const QStringList &columns)
{
    QHash<QString, QString> names;
    for (const QString &column : columns) {
        const QString name = column.section(u'=', 1).trimmed();
        if (name.isEmpty())
            throw BasicException(u"--map %1: COLUMN=NAME is expected, such as invoice=InvoiceNo"_s.arg(column));
        names.insert(column.section(u'=', 0, 0).trimmed(), name);
    }
    return names;
}

/// Readable by the owner only: there are names or passwords in it.
void writeFile(const QString &fileName, const QByteArray &content)
{
    const QFileInfo target(fileName);
    if (target.exists() && !target.isFile()) // QSaveFile would put a file in the place of a device
        throw BasicException(u"%1: not a regular file; name another"_s.arg(fileName));
    QSaveFile file(fileName);
    if (!file.open(QFile::WriteOnly) || !file.setPermissions(ownerOnly) || file.write(content) != content.size() ||
        !file.commit())
        throw BasicException(u"%1: %2"_s.arg(fileName, file.errorString()));
}

/// Makes the till's folder with a configuration of its own: the given one, with another place for the data and the log.
QString configureTill(const QString &configFile, const QString &folder)
{
    if (const std::error_code problem = makePrivateFolder(folder))
        throw BasicException(u"%1: the folder cannot be made (%2); check Host:dataFolder"_s.arg(
            folder, qt_error_string(problem.value())));
    QFile original(configFile);
    if (!original.open(QFile::ReadOnly))
        throw BasicException(u"%1: %2"_s.arg(configFile, original.errorString()));
    const QByteArray encoded = QFile::encodeName(folder);
    QString fileName = QDir(folder).filePath(u"till.ini"_s);
    writeFile(fileName,
              original.readAll() + "\n[Host]\ndataFolder = " + encoded + "\n[Log]\nfile = " + encoded + "/till.log\n");
    return fileName;
}

QList<QStringList> tillArguments(const Options &options, const QString &dataFolder)
{
    QList<QStringList> list;
    for (int number = 1; number <= options.replay.tills; ++number) {
        const QString folder = QDir(dataFolder).filePath(u"till-%1"_s.arg(number));
        QStringList arguments{u"replay"_s,          options.replay.csvFile,
                              u"--config"_s,        configureTill(options.configFile, folder),
                              u"--drain-seconds"_s, QString::number(options.drainTime.count()),
                              u"--worker"_s};
        for (const QString &column : options.replay.columns)
            arguments += {u"--map"_s, column};
        list.append(arguments);
    }
    return list;
}

/// Of the tills of this replay and of earlier ones, and of what was sold without a replay.
QByteArray joinedJournals(const QString &dataFolder)
{
    QStringList folders{dataFolder};
    for (const QString &name : QDir(dataFolder).entryList({u"till-*"_s}, QDir::Dirs))
        folders.append(QDir(dataFolder).filePath(name));
    QString text;
    for (const QString &folder : folders)
        text += journalText(CheckStore(folder, CheckStore::Access::Look).journal(), true);
    return text.toUtf8();
}

bool agreesWithLedger(const QString &dataFolder, const QString &ledger)
{
    const QString name = u"loyalty-sim"_s;
    QString program = QStandardPaths::findExecutable(name, {QCoreApplication::applicationDirPath()});
    if (program.isEmpty())
        program = QStandardPaths::findExecutable(name);
    QProcess comparison;
    comparison.setProcessChannelMode(QProcess::ForwardedChannels);
    comparison.start(program, {u"compare"_s, u"--differences"_s, u"--database"_s, ledger, u"--journal"_s, u"-"_s});
    if (!comparison.waitForStarted())
        throw BasicException(
            u"%1 cannot be started (%2); install it beside kvo-till"_s.arg(name, comparison.errorString()));
    comparison.write(joinedJournals(dataFolder));
    comparison.closeWriteChannel();
    comparison.waitForFinished(-1);
    return comparison.exitStatus() == QProcess::NormalExit && comparison.exitCode() == 0;
}

ExitStatus replayDay(const Day &day, const Options &options)
{
    const QString folder = configuredDataFolder(*readConfiguration(options.configFile));
    if (const QString &ledger = options.replay.ledger; !ledger.isEmpty() && !QFileInfo(ledger).isFile())
        throw BasicException(u"--ledger %1: there is no such file; name the database of loyalty-sim"_s.arg(ledger));
    ReplayTills tills(day);
    tills.run(tillArguments(options, folder));
    console::print(soldText(day, tills));
    if (tills.replayed().isEmpty())
        return static_cast<ExitStatus>(tills.exitStatus());
    console::print(timesText(tills.replayed()));
    bool isGood = tills.exitStatus() == 0 && isFlawless(tills);
    if (options.replay.ledger.isEmpty())
        console::printLine(u"Not compared with the service's books; --ledger DATABASE does that"_s);
    else
        isGood = agreesWithLedger(folder, options.replay.ledger) && isGood;
    return isGood ? Succeeded : Differed;
}

} // namespace

ExitStatus replay(const Options &options)
{
    const Day day = readDay(options.replay.csvFile, columnNames(options.replay.columns));
    if (options.replay.isWorker)
        return replayReceipts(day, options.configFile, options.drainTime) ? Succeeded : Differed;
    console::print(leftOutText(day));
    if (!options.replay.customersFile.isEmpty()) {
        writeFile(options.replay.customersFile, customersJson(day));
        return Succeeded;
    }
    return replayDay(day, options);
}

} // namespace till
