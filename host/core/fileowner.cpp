#include <core/fileowner.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <tuple>

void giveToOwnerOfFolder(const QString &fileName)
{
    if (::geteuid() != 0)
        return;
    // The folder's owner may put another file, or a link to one, in this one's place at any moment. Such a descriptor
    // opens nothing, so that closing it drops no locks.
    const int descriptor = ::open(QFile::encodeName(fileName).constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    struct stat file = {};
    struct stat folder = {};
    const QByteArray path = QFile::encodeName(QFileInfo(fileName).absolutePath());
    if (descriptor >= 0 && ::fstat(descriptor, &file) == 0 && ::stat(path.constData(), &folder) == 0 &&
        S_ISREG(file.st_mode) && file.st_nlink == 1)
        std::ignore = ::fchownat(descriptor, "", folder.st_uid, folder.st_gid, AT_EMPTY_PATH);
    if (descriptor >= 0)
        ::close(descriptor);
}
