// Rotating log files that only their owner can read.
#include <fcntl.h>
#include <log4qt/rollingfileappender.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <cstdio>

namespace Log4Qt {

namespace {

void tell(const char *fileName, const char *problem)
{
    static_cast<void>(std::fprintf(stderr, "log file %s: %s\n", fileName, problem));
}

// Creates the file before the logging library opens it, so that others can never read it.
void makePrivate(const std::string &fileName)
{
    const int file = ::open(fileName.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file == -1)
        return; // the library fails for the same reason and reports it
    if (::fchmod(file, S_IRUSR | S_IWUSR) != 0)
        tell(fileName.c_str(), "the mode cannot be set to 0600");
    ::close(file);
}

} // namespace

RollingFileAppender::RollingFileAppender(const LayoutSharedPtr &layout, const QString &fileName, bool append)
    : AppenderSkeleton(layout), m_fileName(fileName), m_append(append)
{}

void RollingFileAppender::activateOptions()
{
    if (!m_append)
        QFile::remove(m_fileName);
    spdlog::file_event_handlers handlers;
    handlers.before_open = makePrivate;
    try {
        setSink(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
            QFile::encodeName(m_fileName).toStdString(), static_cast<std::size_t>(m_maximumFileSize),
            static_cast<std::size_t>(m_maxBackupIndex), false, handlers));
    } catch (const spdlog::spdlog_ex &error) {
        tell(qUtf8Printable(m_fileName), error.what());
    }
}

} // namespace Log4Qt
