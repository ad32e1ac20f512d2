// Builds the log's appenders from the configuration, with nothing but Log4Qt's public interface.
#include <core/basicexception.h>
#include <core/config.h>
#include <core/logsetup.h>
#include <core/plaintext.h>
#include <core/privatefile.h>
#include <core/setting.h>

#include <log4qt/consoleappender.h>
#include <log4qt/logmanager.h>
#include <log4qt/rollingfileappender.h>
#include <log4qt/ttcclayout.h>
#include <sys/stat.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QScopeGuard>

#include <algorithm>
#include <mutex>
#include <tuple>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype longestLine = 4000;

constexpr auto ownerOnlyFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

// Log lines quote the service and the scanner; a message stays one line whatever they send.
class OneLineLayout : public Log4Qt::TTCCLayout
{
public:
    OneLineLayout() : TTCCLayout(ISO8601) {}

    QString format(const Log4Qt::LoggingEvent &event) override
    {
        return plainText(TTCCLayout::format(event), longestLine) + u'\n';
    }
};

// Log4Qt itself creates files with the process's default mode.
class PrivateFileAppender : public Log4Qt::RollingFileAppender
{
public:
    PrivateFileAppender(const Log4Qt::LayoutSharedPtr &layout, const QString &fileName)
        : RollingFileAppender(layout, fileName, true), m_fileName(fileName)
    {}

    void activateOptions() override
    {
        RollingFileAppender::activateOptions();
        m_inode = inode();
    }

    void doAppend(const Log4Qt::LoggingEvent &event) override
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_isAppending, true))
            return; // Log4Qt reports its own trouble through all appenders.
        const auto done = qScopeGuard([this] { m_isAppending = false; });
        const ino_t found = inode();
        // Another process may have rotated the file, or moved it away.
        if ((found == 0 || found != m_inode) && !makePrivateFolder(QFileInfo(m_fileName).absolutePath()))
            RollingFileAppender::activateOptions();
        RollingFileAppender::doAppend(event);
        const ino_t now = inode();
        if (now == std::exchange(m_inode, now))
            return;
        // A new file was begun.
        static_cast<void>(::chmod(m_path.constData(), S_IRUSR | S_IWUSR));
        giveToOwnerOf(QFileInfo(m_fileName).absolutePath(), m_fileName);
    }

private:
    ino_t inode() const
    {
        struct stat file = {};
        return ::stat(m_path.constData(), &file) == 0 ? file.st_ino : 0;
    }

    QString m_fileName;
    QByteArray m_path = QFile::encodeName(m_fileName);
    std::recursive_mutex m_mutex; // any thread may log
    bool m_isAppending = false;
    ino_t m_inode = 0;
};

void warn(const QString &text)
{
    Log4Qt::LogManager::logger(u"poshost"_s)->warn(text);
}

int configuredNumber(const Config &config, const QString &key)
{
    const QList<Setting> settings = hostSettings();
    const auto setting = std::ranges::find(settings, key, &Setting::key);
    const int defaultValue = setting->defaultValue.toInt();
    const int number = config.getInt(key, defaultValue);
    if (number >= setting->lowest && number <= setting->highest)
        return number;
    warn(u"Настройка %1: допустимы значения от %2 до %3, взято %4"_s.arg(key, QString::number(setting->lowest, 'f', 0),
                                                                         QString::number(setting->highest, 'f', 0),
                                                                         setting->defaultValue));
    return defaultValue;
}

Log4Qt::Level configuredLevel(const Config &config)
{
    const QString text = config.getString(u"Log:level"_s, u"INFO"_s);
    bool ok = false;
    const Log4Qt::Level level = Log4Qt::Level::fromString(text.toUpper(), &ok);
    if (ok && level != Log4Qt::Level::NULL_INT)
        return level;
    warn(u"Настройка Log:level: нет уровня \"%1\", взят INFO"_s.arg(text));
    return Log4Qt::Level::INFO_INT;
}

// At best the log libraries report on stderr that a file cannot be opened. This throws, and sets the mode beforehand.
void preparePrivateFile(const QString &fileName)
{
    // A failure surfaces when the file is opened.
    std::ignore = makePrivateFolder(QFileInfo(fileName).absolutePath());
    QFile file(fileName);
    const bool isNew = !file.exists();
    if (!isNew && !QFileInfo(fileName).isFile()) // A device is everybody's, a pipe would wait for its reader.
        throw BasicException(u"Файл журнала %1 (настройка Log:file) не обычный файл"_s.arg(fileName));
    if (!file.open(QIODevice::Append, ownerOnlyFile) || !file.setPermissions(ownerOnlyFile))
        throw BasicException(
            u"Файл журнала %1 (настройка Log:file) не открывается: %2"_s.arg(fileName, file.errorString()));
    if (isNew)
        giveToOwnerOf(QFileInfo(fileName).absolutePath(), fileName);
}

Log4Qt::AppenderSharedPtr fileAppender(const Config &config, const QString &fileName,
                                       const Log4Qt::LayoutSharedPtr &layout)
{
    preparePrivateFile(fileName);
    auto *appender = new PrivateFileAppender(layout, fileName);
    const Log4Qt::AppenderSharedPtr owner(appender);
    appender->setMaximumFileSize(configuredNumber(config, u"Log:maxFileSize"_s));
    appender->setMaxBackupIndex(configuredNumber(config, u"Log:maxFiles"_s));
    appender->activateOptions();
    return owner;
}

Log4Qt::AppenderSharedPtr consoleAppender(const Log4Qt::LayoutSharedPtr &layout)
{
    auto *appender = new Log4Qt::ConsoleAppender(layout, Log4Qt::ConsoleAppender::STDERR_TARGET);
    const Log4Qt::AppenderSharedPtr owner(appender);
    appender->setThreshold(Log4Qt::Level::WARN_INT);
    appender->activateOptions();
    return owner;
}

// Until a program sets up its log, warnings go to the standard error output.
[[maybe_unused]] const bool isSetUp = []() noexcept {
    try {
        setUpLogging(Config());
        return true;
    } catch (const std::exception &) {
        return false;
    }
}();

} // namespace

void setUpLogging(const Config &config)
{
    // This comes first: Log4Qt's layouts and appenders need its manager.
    Log4Qt::Logger *root = Log4Qt::LogManager::rootLogger();
    const Log4Qt::LayoutSharedPtr layout(new OneLineLayout);
    layout->activateOptions();
    const QString fileName = config.getString(u"Log:file"_s, {});
    const auto appender = fileName.isEmpty() ? consoleAppender(layout) : fileAppender(config, fileName, layout);
    const Log4Qt::Level level = configuredLevel(config);

    root->removeAllAppenders();
    root->addAppender(appender);
    root->setLevel(level);
}
