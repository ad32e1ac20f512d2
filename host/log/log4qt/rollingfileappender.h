// Writes log lines to a file, and starts a new one when it has grown, keeping a number of older ones.
#pragma once

#include <log4qt/appenderskeleton.h>

namespace Log4Qt {

/// The older files of "till.log" are "till.1.log", "till.2.log" and so on. All have mode 0600.
class LOG4QT_EXPORT RollingFileAppender : public AppenderSkeleton
{
public:
    /// `append` keeps the file's content; otherwise the file is emptied first.
    RollingFileAppender(const LayoutSharedPtr &layout, const QString &fileName, bool append);

    /// How many older files are kept; by default 1.
    void setMaxBackupIndex(int maxBackupIndex) { m_maxBackupIndex = maxBackupIndex; }

    /// In bytes; by default 10 MiB.
    void setMaximumFileSize(qint64 maximumFileSize) { m_maximumFileSize = maximumFileSize; }

    void activateOptions() override;

private:
    QString m_fileName;
    bool m_append;
    int m_maxBackupIndex = 1;
    qint64 m_maximumFileSize = qint64{10} * 1024 * 1024;
};

} // namespace Log4Qt
