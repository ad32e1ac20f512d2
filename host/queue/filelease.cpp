// Leases as open file description locks.
#include "filelease.h"

#include "queueerror.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <cerrno>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr mode_t ownerOnly = 0600;

struct flock byteLock(qint64 position)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = position;
    lock.l_len = 1;
    return lock;
}

// A file that root has made (for instance with a command line tool) must not keep the till's own user out. SQLite does
// the same with its files.
bool giveToOwnerOf(int descriptor, const QString &databaseName)
{
    struct stat database = {};
    if (::geteuid() != 0 || ::stat(QFile::encodeName(databaseName).constData(), &database) != 0)
        return true;
    return ::fchown(descriptor, database.st_uid, database.st_gid) == 0;
}

BasicException lockError(const QString &fileName)
{
    return queueerror::make(fileName, u"не удалось заблокировать файл, проверьте права на папку"_s,
                            qt_error_string(errno));
}

} // namespace

FileLease::FileLease(const QString &databaseName) : m_fileName(databaseName + u"-lease"_s)
{
    m_descriptor = ::open(QFile::encodeName(m_fileName).constData(), O_RDWR | O_CREAT | O_CLOEXEC, ownerOnly);
    if (m_descriptor < 0)
        throw lockError(m_fileName);
    struct flock lock = byteLock(id());
    if (!giveToOwnerOf(m_descriptor, databaseName) || ::fcntl(m_descriptor, F_OFD_SETLK, &lock) != 0) {
        const BasicException error = lockError(m_fileName);
        ::close(m_descriptor);
        throw error;
    }
}

FileLease::~FileLease()
{
    ::close(m_descriptor);
}

bool FileLease::isHeldByOther(qint64 lease, QueueConnection &) const
{
    struct flock lock = byteLock(lease);
    if (::fcntl(m_descriptor, F_OFD_GETLK, &lock) != 0)
        throw lockError(m_fileName);
    return lock.l_type != F_UNLCK;
}
