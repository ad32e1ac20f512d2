// Collects what is logged while the object lives, through the host's own log file.
#pragma once

#include "fakeconfig.h"

#include <core/logsetup.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

class LogFile
{
public:
    LogFile() { setUpLogging(*Singleton<Config>::instance()); }

    /// All that was logged since the last call.
    QString take()
    {
        QFile file(m_folder.filePath(QStringLiteral("test.log")));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        file.seek(m_read);
        const QByteArray text = file.readAll();
        m_read += text.size();
        return QString::fromUtf8(text);
    }

private:
    QTemporaryDir m_folder;
    FakeConfig m_config{{{QStringLiteral("Log:file"), m_folder.filePath(QStringLiteral("test.log"))},
                         {QStringLiteral("Log:level"), QStringLiteral("DEBUG")}}};
    qint64 m_read = 0;
};
