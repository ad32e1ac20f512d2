// Appends to the journal so that a kill at any instant leaves each check in it once or not yet.
#include "journal.h"

#include <core/basicexception.h>

#include <fcntl.h>
#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

#include <cerrno>
#include <cstring>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr int ownerOnly = 0600;

[[noreturn]] void fail(const QString &fileName)
{
    const QString reason = QString::fromLocal8Bit(std::strerror(errno));
    throw BasicException(u"Журнал %1: %2"_s.arg(fileName, reason));
}

/// An open file or folder; closed at the end of the block.
class Descriptor
{
public:
    Descriptor(const QString &fileName, int flags)
        : m_fileName(fileName),
          m_descriptor(::open(QFile::encodeName(fileName).constData(), flags | O_CLOEXEC, ownerOnly))
    {
        if (m_descriptor < 0)
            fail(fileName);
    }
    ~Descriptor() { ::close(m_descriptor); }
    Q_DISABLE_COPY_MOVE(Descriptor)

    int get() const { return m_descriptor; }

    void sync() const
    {
        if (::fsync(m_descriptor) != 0)
            fail(m_fileName);
    }

    void write(QByteArray data) const
    {
        while (!data.isEmpty()) {
            const ssize_t written = ::write(m_descriptor, data.constData(), static_cast<size_t>(data.size()));
            if (written < 0 && errno != EINTR)
                fail(m_fileName);
            data.remove(0, qMax<ssize_t>(written, 0));
        }
    }

private:
    QString m_fileName;
    int m_descriptor;
};

/// The end of a journal: its last complete line, and where that line ends.
struct Tail
{
    QByteArray lastLine;
    qint64 end = 0;
};

/// The bytes from `offset` to the end of the file.
QByteArray readFrom(const QString &fileName, const Descriptor &file, qint64 offset, qint64 size)
{
    QByteArray bytes(size - offset, Qt::Uninitialized);
    for (qint64 done = 0; done < bytes.size();) {
        const ssize_t count = ::pread(file.get(), bytes.data() + done, static_cast<size_t>(bytes.size() - done),
                                      static_cast<off_t>(offset + done));
        if (count == 0 || (count < 0 && errno != EINTR))
            fail(fileName);
        done += qMax<ssize_t>(count, 0);
    }
    return bytes;
}

Tail readTail(const QString &fileName, const Descriptor &file)
{
    const qint64 size = ::lseek(file.get(), 0, SEEK_END);
    if (size < 0)
        fail(fileName);
    for (qint64 window = 1 << 16;; window *= 4) {
        const qint64 offset = qMax<qint64>(0, size - window);
        const QByteArray bytes = readFrom(fileName, file, offset, size);
        const qsizetype end = bytes.lastIndexOf('\n') + 1;
        const qsizetype start = end > 1 ? bytes.lastIndexOf('\n', end - 2) + 1 : 0;
        if (start > 0 || offset == 0)
            return {bytes.mid(start, end - start), offset + end};
    }
}

} // namespace

Journal::Journal(const QString &fileName) : m_fileName(fileName)
{}

void Journal::enter(const QJsonObject &check)
{
    const Descriptor file(m_fileName, O_RDWR | O_CREAT | O_APPEND);
    const Tail tail = readTail(m_fileName, file);
    // A till has one check at a time: only the last line can be the one of this check.
    const QJsonObject last = QJsonDocument::fromJson(tail.lastLine).object();
    if (last.value(u"check"_s) != check.value(u"check"_s)) {
        if (::ftruncate(file.get(), tail.end) != 0)
            fail(m_fileName);
        file.write(QJsonDocument(check).toJson(QJsonDocument::Compact) + '\n');
    }
    file.sync(); // Also a line that was found may not have reached the disk before the crash.
    Descriptor(QFileInfo(m_fileName).absolutePath(), O_RDONLY | O_DIRECTORY).sync();
}

} // namespace till
