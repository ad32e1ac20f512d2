#include <core/privatefile.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cerrno>
#include <tuple>

namespace {

std::error_code lastError()
{
    return {errno, std::system_category()};
}

} // namespace

std::error_code makePrivateFolder(const QString &folder)
{
    const QFileInfo info(folder);
    if (info.exists())
        return info.isDir() ? std::error_code() : std::make_error_code(std::errc::not_a_directory);
    const QString parent = info.path();
    if (parent == folder)
        return std::make_error_code(std::errc::no_such_file_or_directory);
    if (const std::error_code problem = makePrivateFolder(parent))
        return problem;
    if (::mkdir(QFile::encodeName(folder).constData(), S_IRWXU) != 0 && errno != EEXIST)
        return lastError();
    giveToOwnerOf(parent, folder);
    return syncFolder(parent);
}

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
        ::stat(QFile::encodeName(other).constData(), &owned) == 0 &&
        (S_ISDIR(file.st_mode) || (S_ISREG(file.st_mode) && file.st_nlink == 1)))
        std::ignore = ::fchownat(descriptor, "", owned.st_uid, owned.st_gid, AT_EMPTY_PATH);
    if (descriptor >= 0)
        ::close(descriptor);
}

std::error_code syncFolder(const QString &folder)
{
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return lastError();
    const std::error_code problem = ::fsync(descriptor) == 0 ? std::error_code() : lastError();
    ::close(descriptor);
    return problem;
}
