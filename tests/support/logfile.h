// Collects what is logged while the object lives, through the host's own log file.
#pragma once

#include "fakeconfig.h"
#include "file.h"

#include <core/logsetup.h>

#include <QtCore/QTemporaryDir>

class LogFile
{
public:
    LogFile() { setUpLogging(*Singleton<Config>::instance()); }

    /// All that was logged since the last call.
    QString take()
    {
        const QByteArray text = readFile(m_file).sliced(m_read);
        m_read += text.size();
        return QString::fromUtf8(text);
    }

private:
    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath(QStringLiteral("test.log"));
    FakeConfig m_config{{{QStringLiteral("Log:file"), m_file}, {QStringLiteral("Log:level"), QStringLiteral("DEBUG")}}};
    qint64 m_read = 0;
};
