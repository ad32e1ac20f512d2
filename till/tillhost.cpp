// Puts the host in place in the order in which its parts need each other, and takes it away again.
#include "tillhost.h"

#include "configuration.h"

#include <checks/checkstore.h>
#include <core/basicexception.h>
#include <core/logsetup.h>
#include <core/privatefile.h>
#include <core/session.h>
#include <core/singleton.h>

#include <fcntl.h>
#include <log4qt/logmanager.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <cerrno>
#include <system_error>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

struct flock wholeFile()
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

TillHost::TillHost(const QString &configFile, Access access) : m_config(readConfiguration(configFile))
{
    Singleton<Config>::replace(m_config);
    m_dataFolder = configuredDataFolder(*m_config);
    // Made for a look, a mistyped folder would pass for one in which all is delivered.
    if (access == Access::Look && !QFileInfo(m_dataFolder).isDir())
        throw BasicException(u"Папки данных %1 нет; проверьте ключ Host:dataFolder"_s.arg(m_dataFolder));
    setUpLogging(*m_config);
    if (othersCanReadPasswords(*m_config))
        Log4Qt::LogManager::logger(u"till"_s)->warn(
            u"Файл настроек %1 с паролем может прочитать любой пользователь, уберите это право: chmod o-r"_s.arg(
                configFile));
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
    Singleton<CheckStore>::replace(nullptr);
    Singleton<DBQueueBroker>::replace(nullptr);
}

void TillHost::lockDataFolder()
{
    if (const std::error_code problem = makePrivateFolder(m_dataFolder))
        throw BasicException(u"Папка данных %1 не создана (%2); проверьте ключ Host:dataFolder"_s.arg(
            m_dataFolder, qt_error_string(problem.value())));
    m_lock.setFileName(QDir(m_dataFolder).filePath(u"till.lock"_s));
    if (!m_lock.open(QFile::ReadWrite, QFile::ReadOwner | QFile::WriteOwner))
        throw BasicException(u"Нет доступа к папке данных %1 (%2); проверьте ключ Host:dataFolder"_s.arg(
            m_dataFolder, m_lock.errorString()));
    giveToOwnerOf(m_dataFolder, m_lock.fileName());
    // The kernel lets go of such a lock whenever and however its process ends. What a file says about its process would
    // be wrong after a kill in the middle of writing it.
    struct flock lock = wholeFile();
    if (::fcntl(m_lock.handle(), F_SETLK, &lock) == 0)
        return;
    const QString reason = qt_error_string(errno);
    lock = wholeFile();
    if (::fcntl(m_lock.handle(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK)
        throw BasicException(
            u"Папка данных %1 занята: с ней работает процесс %2"_s.arg(m_dataFolder, QString::number(lock.l_pid)));
    throw BasicException(u"Папка данных %1 не может быть занята: %2"_s.arg(m_dataFolder, reason));
}

QString TillHost::goodsFile() const
{
    return configuredGoodsFile(*m_config);
}

QString TillHost::pluginFolder() const
{
    return m_config->getString(u"Till:pluginFolder"_s, defaultPluginFolder());
}

} // namespace till
