// Checks the configuration, the log, the goods, the plugin and the data folder.
#include "doctorhost.h"

#include "catalogue.h"
#include "configuration.h"
#include "loyaltyplugin.h"

#include <core/basicexception.h>
#include <core/singleton.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QPluginLoader>
#include <QtCore/QStorageInfo>
#include <QtCore/QTemporaryFile>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace till::doctor {

const QString configurationCheck = u"configuration file"_s;

namespace {

QString setting(const QString &key, const QString &defaultValue = {})
{
    return Singleton<Config>::instance()->getString(key, defaultValue);
}

Finding checkFile(const QString &fileName)
{
    QFile file(fileName);
    if (!file.exists())
        return {Verdict::Failure, u"%1 does not exist"_s.arg(fileName),
                u"Name the right file with --config, or copy kvo-till.ini.example there"_s};
    if (!file.open(QFile::ReadOnly) || (file.read(1).isEmpty() && file.error() != QFile::NoError))
        return {Verdict::Failure, u"%1 cannot be read: %2"_s.arg(fileName, file.errorString()),
                u"Let the user of the till read it, for instance with chown root:kvo and chmod 0640"_s};
    try {
        const auto config = QSharedPointer<Config>::create(fileName);
        Singleton<Config>::replace(config);
        return {Verdict::Ok, u"%1 has %2 entries"_s.arg(fileName, QString::number(config->entries().size()))};
    } catch (const BasicException &error) {
        return {Verdict::Failure, u"%1 is not a configuration"_s.arg(fileName),
                u"Every line is [section], name = value, or a comment that begins with ; or #"_s, error.text().ru()};
    }
}

Finding checkAccess()
{
    if (othersCanReadPasswords(*Singleton<Config>::instance()))
        return {Verdict::Warning, u"every user of this machine can read the file and the password in it"_s,
                u"Take that right away with chmod o-r"_s};
    return {Verdict::Ok, u"nobody else reads a password there"_s};
}

QString problemOf(const SettingFault &fault)
{
    const QString place = u"line %1, %2: "_s.arg(QString::number(fault.entry.line), fault.entry.key());
    const QString likely = fault.expected.isEmpty() ? QString() : u", did you mean %1?"_s.arg(fault.expected);
    switch (fault.kind) {
    case SettingFault::Kind::UnknownSection:
        return place + (fault.entry.section.isEmpty() ? u"stands before the first section"_s : u"unknown section"_s) +
               likely;
    case SettingFault::Kind::UnknownKey:
        return place + u"unknown key"_s + likely;
    case SettingFault::Kind::DecimalComma:
        return place + u"use a point: %1"_s.arg(fault.expected);
    case SettingFault::Kind::NotANumber:
        return place + u"\"%1\" is not a number %2"_s.arg(fault.entry.value, fault.expected).trimmed();
    case SettingFault::Kind::OutOfRange:
        return place + u"%1 is not in the range %2"_s.arg(fault.entry.value, fault.expected);
    case SettingFault::Kind::NotAChoice:
        return place + u"\"%1\" is none of %2"_s.arg(fault.entry.value, fault.expected);
    case SettingFault::Kind::WrongForm:
        return place + u"not of the form %1"_s.arg(fault.expected);
    case SettingFault::Kind::Incomplete:
        break;
    }
    return place + u"%1 is missing in the text"_s.arg(fault.expected);
}

QString repeatedKeys()
{
    QStringList repeated;
    QHash<QString, int> lines;
    for (const Config::Entry &entry : Singleton<Config>::instance()->entries()) {
        if (const int earlier = std::exchange(lines[entry.key()], entry.line); earlier != 0)
            repeated.append(u"line %1 sets %2 again, after line %3"_s.arg(QString::number(entry.line), entry.key(),
                                                                          QString::number(earlier)));
    }
    return repeated.join(u"; "_s);
}

Finding checkEntries(bool keys)
{
    QStringList problems;
    for (const SettingFault &fault : settingFaults(*Singleton<Config>::instance(), allSettings())) {
        const bool unknown =
            fault.kind == SettingFault::Kind::UnknownSection || fault.kind == SettingFault::Kind::UnknownKey;
        if (unknown == keys)
            problems.append(problemOf(fault));
    }
    if (const QString repeated = repeatedKeys(); keys && problems.isEmpty() && !repeated.isEmpty())
        return {Verdict::Warning, repeated, u"Remove the earlier lines: the last one counts"_s};
    if (problems.isEmpty())
        return {Verdict::Ok, keys ? u"all are known"_s : u"all are of the right kind and in range"_s};
    return {Verdict::Failure, problems.join(u"; "_s), u"Correct or remove them, see kvo-till settings"_s};
}

QString nearestExisting(QString path)
{
    while (!QFileInfo::exists(path))
        path = QFileInfo(path).absolutePath();
    return path;
}

Finding checkLog()
{
    const QString file = setting(u"Log:file"_s);
    if (file.isEmpty())
        return {Verdict::Ok, u"no file; warnings go to the standard error output"_s};
    if (QFileInfo::exists(file) && !QFileInfo(file).isFile())
        return {Verdict::Failure, u"%1 is not a regular file"_s.arg(file), u"Name a file in Log:file"_s};
    if (QFile log(file); log.exists() && !log.open(QFile::Append))
        return {Verdict::Failure, u"%1 cannot be written: %2"_s.arg(file, log.errorString()),
                u"Give it to the user of the till"_s};
    return checkFolder(QFileInfo(file).absolutePath(), u"Log:file"_s);
}

Finding checkDataFolder()
{
    Finding finding = checkFolder(dataFolder(), u"Host:dataFolder"_s);
    if (const QFileInfo lock(dataFolder() + u"/till.lock"_s); lock.exists() && !lock.isWritable())
        return {Verdict::Failure, u"%1 cannot be written"_s.arg(lock.filePath()), u"Give it to the user of the till"_s};
    const auto others = QFile::ReadGroup | QFile::ReadOther | QFile::ExeGroup | QFile::ExeOther;
    if (finding.verdict == Verdict::Ok && (QFileInfo(dataFolder()).permissions() & others))
        return {Verdict::Warning, u"%1 is open to other users; it holds telephone and card numbers"_s.arg(dataFolder()),
                u"Close it with chmod 0700"_s};
    return finding;
}

Finding checkSpace(qint64 wanted)
{
    const qint64 free = QStorageInfo(nearestExisting(dataFolder())).bytesAvailable();
    const QString found =
        u"%1 MiB are free, %2 are wanted"_s.arg(QString::number(free >> 20), QString::number(wanted >> 20));
    if (free >= wanted)
        return {Verdict::Ok, found};
    return {Verdict::Warning, found, u"Make room: without it nothing is queued, and no card is accepted"_s};
}

Finding checkGoods()
{
    const QString file = configuredGoodsFile(*Singleton<Config>::instance());
    const QString remedy = u"Name a file of the form of till/goods.json in Till:goods"_s;
    if (!QFileInfo::exists(file))
        return {Verdict::Warning, u"%1 does not exist; only scenarios can be sold"_s.arg(file), remedy};
    try {
        return {Verdict::Ok, u"%1 has %2 articles"_s.arg(file, QString::number(Catalogue(file).goods().size()))};
    } catch (const BasicException &error) {
        return {Verdict::Failure, u"%1 is not a catalogue of goods"_s.arg(file), remedy, error.text().ru()};
    }
}

Finding checkPlugin()
{
    const QString folder = setting(u"Till:pluginFolder"_s, defaultPluginFolder());
    QPluginLoader loader;
    try {
        loader.setFileName(LoyaltyPlugin::inspect(folder));
    } catch (const BasicException &error) {
        return {Verdict::Failure, u"no loyalty plugin that can be used in \"%1\""_s.arg(folder),
                u"Install the plugin and name its folder in Till:pluginFolder"_s, error.text().ru()};
    }
    const QString file = loader.fileName();
    if (!loader.load())
        return {Verdict::Failure, u"%1 cannot be loaded: %2"_s.arg(file, loader.errorString()),
                u"Install what it needs; ldd shows what is missing"_s};
    if (!qobject_cast<BasicLoyaltySystem *>(loader.instance()))
        return {Verdict::Failure, u"%1 has no loyalty system that this till can use"_s.arg(file),
                u"Install plugin and till of the same version"_s};
    const QString version = loader.metaData().value("MetaData"_L1).toObject().value("version"_L1).toString();
    return {Verdict::Ok, u"%1 loads, version %2"_s.arg(file, version)};
}

} // namespace

Finding checkFolder(const QString &folder, const QString &key)
{
    const QString remedy = u"Correct %1, or let the user of the till write there"_s.arg(key);
    if (const QFileInfo above(nearestExisting(folder)); above != QFileInfo(folder)) {
        if (!above.isDir() || !above.isWritable())
            return {Verdict::Failure, u"%1 does not exist and cannot be made in %2"_s.arg(folder, above.filePath()),
                    remedy};
        return {Verdict::Warning, u"%1 does not exist yet, the till makes it"_s.arg(folder),
                u"Correct %1 if it is not the folder that you mean"_s.arg(key)};
    }
    QTemporaryFile file(folder + u"/doctor"_s);
    if (!file.open() || file.write("x") != 1 || !file.flush())
        return {Verdict::Failure, u"no file can be written in %1: %2"_s.arg(folder, file.errorString()),
                file.errorString() == qt_error_string(ENOSPC) ? u"Make room on its disk"_s : remedy};
    return {Verdict::Ok, u"%1 can be written"_s.arg(folder)};
}

QString dataFolder()
{
    return configuredDataFolder(*Singleton<Config>::instance());
}

QList<Check> hostChecks(const QString &configFile, qint64 spaceWanted)
{
    const QString data = u"data folder"_s;
    return {
        {configurationCheck, {}, [=] { return checkFile(configFile); }},
        {u"access to it"_s, configurationCheck, checkAccess},
        {u"keys"_s, configurationCheck, [] { return checkEntries(true); }},
        {u"values"_s, configurationCheck, [] { return checkEntries(false); }},
        {u"log"_s, configurationCheck, checkLog},
        {u"goods"_s, configurationCheck, checkGoods},
        {u"plugin"_s, configurationCheck, checkPlugin},
        {data, configurationCheck, checkDataFolder},
        {u"disk space"_s, data, [=] { return checkSpace(spaceWanted); }},
    };
}

} // namespace till::doctor
