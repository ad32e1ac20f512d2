#include <core/fileowner.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <tuple>

void giveToOwnerOf(const QString &other, const QString &fileName)
{
    if (::geteuid() != 0)
        return;
    // That owner may put another file, or a link to one, in this one's place at any moment. O_PATH does not open the
    // file itself, so closing the descriptor releases no locks.
    const int descriptor = ::open(QFile::encodeName(fileName).constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    struct stat file = {};
    struct stat owned = {};
    if (descriptor >= 0 && ::fstat(descriptor, &file) == 0 &&
        ::stat(QFile::encodeName(other).constData(), &owned) == 0 && S_ISREG(file.st_mode) && file.st_nlink == 1)
        std::ignore = ::fchownat(descriptor, "", owned.st_uid, owned.st_gid, AT_EMPTY_PATH);
    if (descriptor >= 0)
        ::close(descriptor);
}
