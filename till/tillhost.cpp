// Puts the host in place in the order in which its parts need each other, and takes it away again.
#include "tillhost.h"

#include <core/basicexception.h>
#include <core/logsetup.h>
#include <core/session.h>
#include <core/singleton.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

using namespace Qt::Literals::StringLiterals;

namespace till {

TillHost::TillHost(const QString &configFile, Access access) : m_config(QSharedPointer<Config>::create(configFile))
{
    Singleton<Config>::replace(m_config);
    setUpLogging(*m_config);
    m_dataFolder = QDir(m_config->getString(u"Host:dataFolder"_s, QDir::currentPath())).absolutePath();
    if (access == Access::Work)
        lockDataFolder();
    m_queue = QSharedPointer<EndingQueue>::create();
    Singleton<DBQueueBroker>::replace(m_queue);
    Singleton<Session>::instance()->setUser(QSharedPointer<User>::create(
        m_config->getString(u"Till:cashierCode"_s, u"1"_s), m_config->getString(u"Till:cashierName"_s, QString())));
}

TillHost::~TillHost()
{
    // Databases are closed here and not with the process's last static objects, when Qt is gone.
    Singleton<DBQueueBroker>::replace(nullptr);
    m_queue.clear();
}

void TillHost::lockDataFolder()
{
    const auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    if (!QDir(m_dataFolder).exists() && !QDir().mkdir(m_dataFolder, ownerOnly))
        throw BasicException(u"Папка данных %1 не создана; проверьте ключ Host:dataFolder"_s.arg(m_dataFolder));
    m_lock.emplace(QDir(m_dataFolder).filePath(u"till.lock"_s));
    m_lock->setStaleLockTime(0); // A lock is stale when its process is gone, however long it is held.
    if (m_lock->tryLock(0))
        return;
    qint64 process = 0;
    QString machine;
    QString program;
    if (m_lock->error() == QLockFile::LockFailedError && m_lock->getLockInfo(&process, &machine, &program)) {
        throw BasicException(u"Папка данных %1 занята: с ней работает %2, процесс %3"_s.arg(m_dataFolder, program,
                                                                                            QString::number(process)));
    }
    throw BasicException(u"Нет доступа к папке данных %1; проверьте ключ Host:dataFolder"_s.arg(m_dataFolder));
}

QString TillHost::journalFile() const
{
    return QDir(m_dataFolder).absoluteFilePath(m_config->getString(u"Till:journal"_s, u"journal.jsonl"_s));
}

QString TillHost::pluginFolder() const
{
    return m_config->getString(u"Till:pluginFolder"_s, QCoreApplication::applicationDirPath() + u"/../lib"_s);
}

} // namespace till
