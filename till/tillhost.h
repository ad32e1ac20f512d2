// What a till puts in place before it works: configuration, log, data folder, queue, cashier.
#pragma once

#include "endingqueue.h"

#include <core/config.h>

#include <QtCore/QFile>

namespace till {

/// The process-wide objects of the host, in place while the object lives. One per process.
class TillHost
{
public:
    enum class Access { Work, Look };

    /// Reads the INI file. To work, it takes the data folder for this process, and makes it if it is missing: two tills
    /// on one store of checks and one queue would undo each other's work. For a look the folder has to be there. Throws
    /// BasicException that says what is wrong.
    TillHost(const QString &configFile, Access access);
    ~TillHost();
    Q_DISABLE_COPY_MOVE(TillHost)

    EndingQueue &queue() const { return *m_queue; }
    const QString &dataFolder() const { return m_dataFolder; }
    QString pluginFolder() const;
    /// The catalogue of goods.
    QString goodsFile() const;

private:
    void lockDataFolder();

    QSharedPointer<Config> m_config;
    QString m_dataFolder;
    QFile m_lock; ///< Locked as long as it is open.
    QSharedPointer<EndingQueue> m_queue;
};

} // namespace till
