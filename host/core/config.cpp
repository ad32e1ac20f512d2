// Reads the host's configuration file. Does not use QSettings, whose INI dialect interprets commas, backslashes and
// "%"; passwords may contain them.
#include <core/basicexception.h>
#include <core/config.h>

#include <log4qt/logmanager.h>

#include <QtCore/QFile>
#include <QtCore/QStringDecoder>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

QString decoded(const QByteArray &line, bool &ok)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(line);
    ok = !decoder.hasError();
    return text.trimmed();
}

QString unquoted(const QString &value)
{
    const bool quoted = value.size() >= 2 && value.startsWith(u'"') && value.endsWith(u'"');
    return quoted ? value.mid(1, value.size() - 2) : value;
}

// The number that `read` finds in the value of `key`; if there is none, the default, with a warning.
template <class Number, class Read>
Number numberFrom(const QHash<QString, QString> &values, const QString &key, Number defaultValue, Read read)
{
    const auto text = values.constFind(key);
    bool ok = text == values.cend();
    const Number number = ok ? defaultValue : read(*text, ok);
    if (ok)
        return number;
    Log4Qt::LogManager::logger(u"poshost"_s)
        ->warn(u"Настройка %1: \"%2\" не является числом нужного вида, взято значение по умолчанию %3"_s.arg(
            key, *text, QString::number(defaultValue)));
    return defaultValue;
}

} // namespace

Config::Config(const QString &fileName) : m_fileName(fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        throw BasicException(u"Файл настроек %1 не читается: %2"_s.arg(fileName, file.errorString()));
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw BasicException(u"Файл настроек %1 не читается: %2"_s.arg(fileName, file.errorString()));
    if (content.startsWith("\xEF\xBB\xBF"))
        content.remove(0, 3);

    Entry entry;
    for (const QByteArray &line : content.split('\n')) {
        ++entry.line;
        bool ok = false;
        const QString text = decoded(line, ok);
        if (!ok || !readLine(text, entry)) {
            const QString reason = ok ? u"ожидается [раздел], имя = значение или комментарий"_s : u"текст не в UTF-8"_s;
            throw BasicException(
                u"Файл настроек %1, строка %2: %3"_s.arg(fileName, QString::number(entry.line), reason));
        }
    }
}

bool Config::readLine(const QString &line, Entry &entry)
{
    if (line.isEmpty() || line.startsWith(u';') || line.startsWith(u'#'))
        return true;
    if (line.startsWith(u'[')) {
        entry.section = line.mid(1, line.size() - 2).trimmed();
        return line.endsWith(u']') && !entry.section.isEmpty();
    }
    const qsizetype separator = line.indexOf(u'=');
    entry.name = line.left(separator).trimmed();
    if (separator == -1 || entry.name.isEmpty())
        return false;
    entry.value = unquoted(line.mid(separator + 1).trimmed());
    m_values.insert(entry.key(), entry.value);
    m_entries.append(entry);
    return true;
}

QString Config::getString(const QString &key, const QString &defaultValue) const
{
    return m_values.value(key, defaultValue);
}

int Config::getInt(const QString &key, int defaultValue) const
{
    return numberFrom(m_values, key, defaultValue, [](const QString &number, bool &ok) { return number.toInt(&ok); });
}

double Config::getDouble(const QString &key, double defaultValue) const
{
    return numberFrom(m_values, key, defaultValue, [](const QString &number, bool &ok) {
        const double value = number.toDouble(&ok);
        ok = ok && std::isfinite(value);
        return value;
    });
}
