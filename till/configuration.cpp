// Joins the settings of all owners, and explains to the people at the till what is wrong with a file.
#include "configuration.h"

#include "queuesender.h"

#include <core/basicexception.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

QList<Setting> tillSettings()
{
    return {
        {.key = u"Till:pluginFolder"_s,
         .meaning =
             u"Folder in which `libKvo.so` is. Default: `../lib/kvo`, or else `../lib`, beside the folder of the "
             u"program."_s,
         .example = u"/usr/lib/kvo"_s},
        {.key = u"Till:goods"_s,
         .defaultValue = u"goods.json"_s,
         .meaning = u"The catalogue of goods, JSON in the form of `till/goods.json`, relative to `Host:dataFolder`."_s,
         .example = u"/etc/kvo/goods.json"_s},
        {.key = u"Till:theme"_s,
         .kind = Setting::Kind::Choice,
         .defaultValue = u"light"_s,
         .meaning = u"The colours of kvo-window."_s,
         .choices = {u"light"_s, u"dark"_s}},
        {.key = u"Till:cashierCode"_s,
         .defaultValue = u"1"_s,
         .meaning = u"Who works at the till; the code goes onto the records of points earned."_s,
         .example = u"17"_s},
        {.key = u"Till:cashierName"_s,
         .meaning = u"The cashier's name, for the receipt and the journal."_s,
         .example = u"Иванова А. П."_s},
    };
}

QString likelyText(const SettingFault &fault)
{
    return fault.expected.isEmpty() ? QString() : u"; вероятно, имелось в виду %1"_s.arg(fault.expected);
}

QString reasonText(const SettingFault &fault)
{
    switch (fault.kind) {
    case SettingFault::Kind::UnknownSection:
        return fault.entry.section.isEmpty() ? u"запись стоит до первого раздела"_s
                                             : u"нет такого раздела"_s + likelyText(fault);
    case SettingFault::Kind::UnknownKey:
        return u"нет такой настройки"_s + likelyText(fault);
    case SettingFault::Kind::DecimalComma:
        return u"дробная часть отделяется точкой, укажите %1"_s.arg(fault.expected);
    case SettingFault::Kind::NotANumber:
        return u"\"%1\" не является числом, укажите число %2"_s.arg(fault.entry.value, fault.expected).trimmed();
    case SettingFault::Kind::OutOfRange:
        return u"%1 вне допустимых пределов %2"_s.arg(fault.entry.value, fault.expected);
    case SettingFault::Kind::NotAChoice:
        return u"значение \"%1\" не поддерживается, возможны %2"_s.arg(fault.entry.value, fault.expected);
    case SettingFault::Kind::WrongForm:
        return u"укажите значение в виде %1"_s.arg(fault.expected);
    case SettingFault::Kind::Incomplete:
        break;
    }
    return u"в тексте нет %1"_s.arg(fault.expected);
}

/// A folder that is named in the file has to be there: a till that looks elsewhere, or nowhere, sells without loyalty.
void checkPluginFolder(const Config &config, QStringList &mistakes)
{
    for (const Config::Entry &entry : config.entries()) {
        if (entry.key() == "Till:pluginFolder"_L1 && !QFileInfo(entry.value).isDir())
            mistakes.append(
                u"строка %1, Till:pluginFolder: нет папки %2"_s.arg(QString::number(entry.line), entry.value));
    }
}

QString tableText(QString text)
{
    return text.replace(u'|', u"\\|"_s);
}

QString codeText(const QString &text)
{
    return text.isEmpty() ? QString() : u'`' + tableText(text) + u'`';
}

/// A table for each section; `reader` says who reads the entries.
QString sectionTables(const QList<Setting> &settings, const QString &reader)
{
    QString tables;
    QString section;
    for (const Setting &setting : settings) {
        if (setting.section() != section) {
            section = setting.section();
            tables +=
                u"\n## [%1]\n\n%2\n\n| key | default | range | example | meaning |\n|---|---|---|---|---|\n"_s.arg(
                    section, reader);
        }
        const QString range = setting.placeholder.isEmpty() ? rangeOf(setting) : u"contains "_s + setting.placeholder;
        tables += u"| `%1` | %2 | %3 | %4 | %5 |\n"_s.arg(setting.key, codeText(setting.defaultValue), tableText(range),
                                                          codeText(setting.example), tableText(setting.meaning));
    }
    return tables;
}

} // namespace

QList<Setting> allSettings()
{
    return hostSettings() + tillSettings() + loyaltySettings();
}

QSharedPointer<Config> readConfiguration(const QString &fileName)
{
    auto config = QSharedPointer<Config>::create(fileName);
    QStringList mistakes;
    for (const SettingFault &fault : settingFaults(*config, allSettings()))
        mistakes.append(
            u"строка %1, %2: %3"_s.arg(QString::number(fault.entry.line), fault.entry.key(), reasonText(fault)));
    checkPluginFolder(*config, mistakes);
    if (!mistakes.isEmpty())
        throw BasicException(
            u"Касса не запущена: ошибки в файле настроек %1. Исправьте их и запустите снова.\n  %2"_s.arg(
                fileName, mistakes.join(u"\n  "_s)));
    return config;
}

bool othersCanReadPasswords(const Config &config)
{
    const QList<Config::Entry> &entries = config.entries();
    const bool secret = std::any_of(entries.cbegin(), entries.cend(), [](const Config::Entry &entry) {
        return entry.name == "password"_L1 && !entry.value.isEmpty();
    });
    return secret && QFileInfo(config.fileName()).permission(QFile::ReadOther);
}

QString settingsReference()
{
    return QStringLiteral(R"(# Settings

The configuration is an INI file: the key `Kvo:host` is the entry `host` of the section `[Kvo]`. Sections and keys are
case-sensitive. A value is the text after `=`, taken literally; one pair of double quotes around it is removed. The
decimal separator is a point. When a key is given twice, the last line counts. Lines that begin with `;` or `#` are
comments. Changes take effect at the next start.

kvo-till refuses to start (exit status 2) when the file has an unknown section or key or a value out of its range;
`kvo-till doctor` checks the file and everything it points to. The plugin takes its settings as they are.
`till/kvo-till.ini.example` is a complete sample. This page is the output of `kvo-till settings`.
)") + sectionTables(hostSettings(), u"The host framework (PosHost) reads these."_s) +
           sectionTables(tillSettings(), u"kvo-till and kvo-window read these."_s) +
           sectionTables(
               loyaltySettings(),
               u"The plugin reads these, at start; those of the code at each confirmation. The till sends queued "
               "requests with the same ones."_s);
}

QString configuredDataFolder(const Config &config)
{
    return QDir(config.getString(u"Host:dataFolder"_s, QDir::currentPath())).absolutePath();
}

QString configuredGoodsFile(const Config &config)
{
    return QDir(configuredDataFolder(config)).absoluteFilePath(config.getString(u"Till:goods"_s, u"goods.json"_s));
}

QString defaultPluginFolder()
{
    const QString libraries = QCoreApplication::applicationDirPath() + u"/../lib"_s;
    const QString installed = libraries + u"/kvo"_s;
    return QFileInfo(installed).isDir() ? installed : libraries;
}

} // namespace till
