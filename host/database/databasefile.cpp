// Makes the database's folder and file with the rights that credentials and phone numbers need, durably.
#include "databasefile.h"

#include "databaseerror.h"

#include <core/privatefile.h>

#include <sys/stat.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cerrno>
#include <system_error>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr mode_t fileMode = 0600;
constexpr mode_t othersRights = 0077;

} // namespace

DatabaseFile::DatabaseFile(QStringView what, const QString &fileName)
    : m_name(QFileInfo(fileName).absoluteFilePath()), m_title(u"%1 «%2»"_s.arg(what, m_name))
{}

void DatabaseFile::prepare()
{
    const QString folder = QFileInfo(m_name).path();
    if (const std::error_code problem = makePrivateFolder(folder))
        throw databaseerror::make(m_title, u"не удалось создать папку «%1»"_s.arg(folder),
                                  qt_error_string(problem.value()));
    makeFile();
    struct stat status = {};
    if (::stat(QFile::encodeName(m_name).constData(), &status) != 0)
        throw databaseerror::make(m_title, u"файл недоступен"_s, qt_error_string(errno));
    m_device = status.st_dev;
    m_inode = status.st_ino;
}

bool DatabaseFile::isSingleByte() const
{
    return QFileInfo(m_name).size() == 1 && !QFileInfo::exists(m_name + u"-journal"_s);
}

bool DatabaseFile::isReplaced() const
{
    struct stat status = {};
    return ::stat(QFile::encodeName(m_name).constData(), &status) != 0 || status.st_dev != m_device ||
           status.st_ino != m_inode;
}

void DatabaseFile::makeFile() const
{
    // mknod() and not open(), see the note on the class.
    if (::mknod(QFile::encodeName(m_name).constData(), S_IFREG | fileMode, 0) != 0) {
        if (errno == EEXIST)
            return;
        throw databaseerror::make(m_title, u"не удалось создать файл, проверьте права на папку"_s,
                                  qt_error_string(errno));
    }
    giveToOwnerOf(QFileInfo(m_name).path(), m_name);
    if (const std::error_code problem = syncFolder(QFileInfo(m_name).path()))
        throw databaseerror::make(m_title, u"не удалось записать папку на диск"_s, qt_error_string(problem.value()));
}

void DatabaseFile::tighten() const
{
    for (const QString &suffix : {u""_s, u"-wal"_s, u"-shm"_s}) {
        const QByteArray path = QFile::encodeName(m_name + suffix);
        struct stat status = {};
        if (::stat(path.constData(), &status) != 0 || !S_ISREG(status.st_mode) || (status.st_mode & othersRights) == 0)
            continue;
        if (::chmod(path.constData(), status.st_mode & ~othersRights & ALLPERMS) != 0)
            databaseerror::logger()->warn(u"Файл «%1» доступен другим пользователям, права не изменены: %2"_s.arg(
                m_name + suffix, qt_error_string(errno)));
    }
}
