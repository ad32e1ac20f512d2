// The open check on disk. A crash at any instant leaves the old file or the new one: the new one is written beside the
// old one, reaches the disk, and takes its name in one step; the folder is written through as well, so that the step
// itself survives a power failure.
#include "documentstore.h"

#include <core/basicexception.h>
#include <core/config.h>
#include <core/singleton.h>

#include <fcntl.h>
#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QScopeGuard>

#include <cerrno>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace {

[[noreturn]] void fail(const QString &what, const QString &file, const QString &reason)
{
    throw BasicException(u"%1 «%2»: %3"_s.arg(what, QDir::toNativeSeparators(file), reason));
}

[[noreturn]] void failToWrite(const QString &file, const QString &reason)
{
    fail(u"Не удалось сохранить чек в файл"_s, file, reason);
}

QByteArray toJson(const SaleDocument &document, const QString &file)
{
    try {
        return document.toJson();
    } catch (const BasicException &error) {
        failToWrite(file, error.text().ru());
    }
}

// Not QSaveFile: it syncs the file by itself, takes no notice when that fails, and a second sync after one of our own
// lasts nearly as long as the first.
void replaceFile(const QString &name, const QByteArray &content)
{
    constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
    QFile draft(name + u".new"_s);
    // By its name: the open file would try to write the rest of its buffer first, and keep itself when that fails.
    auto removeDraft = qScopeGuard([&draft] { QFile::remove(draft.fileName()); });
    const bool written = draft.open(QFile::WriteOnly, ownerOnly) && draft.setPermissions(ownerOnly) &&
                         draft.write(content) == content.size() && draft.flush();
    if (!written)
        failToWrite(name, draft.errorString());
    if (::fsync(draft.handle()) != 0 ||
        ::rename(QFile::encodeName(draft.fileName()).constData(), QFile::encodeName(name).constData()) != 0)
        failToWrite(name, qt_error_string(errno));
    removeDraft.dismiss();
}

void makeFolder(const QString &folder, const QString &file)
{
    if (QFileInfo(folder).isDir())
        return;
    QDir().mkpath(QFileInfo(folder).path());
    if (!QDir().mkdir(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        failToWrite(file, u"не удалось создать папку: "_s + qt_error_string(errno));
}

// A new name, or its absence, is on the disk only when the folder is.
void syncFolder(const QString &file)
{
    const int folder =
        ::open(QFile::encodeName(QFileInfo(file).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool synced = folder >= 0 && ::fsync(folder) == 0;
    const QString reason = synced ? QString() : qt_error_string(errno);
    if (folder >= 0)
        ::close(folder);
    if (!synced)
        failToWrite(file, reason);
}

QVariantMap readJson(QFile &file)
{
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        throw BasicException(u"%1 (позиция %2)"_s.arg(error.errorString(), QString::number(error.offset)));
    if (!json.isObject())
        throw BasicException(u"это не объект JSON"_s);
    return json.object().toVariantMap();
}

} // namespace

DocumentStore::DocumentStore()
    : DocumentStore(Singleton<Config>::instance()->getString(u"Host:dataFolder"_s, QDir::currentPath()))
{}

DocumentStore::DocumentStore(const QString &folder) : m_folder(QDir(folder).absolutePath())
{}

QString DocumentStore::openCheckFile() const
{
    return QDir(m_folder).filePath(u"open-check.json"_s);
}

void DocumentStore::save(const SaleDocument &document, const QString &fileName) const
{
    const QString name = fileName.isEmpty() ? openCheckFile() : QDir(m_folder).filePath(fileName);
    const QByteArray json = toJson(document, name);
    makeFolder(m_folder, name);
    replaceFile(name, json);
    syncFolder(name);
}

QSharedPointer<SaleDocument> DocumentStore::restore() const
{
    QFile file(openCheckFile());
    if (!file.exists())
        return nullptr;
    try {
        if (!file.open(QFile::ReadOnly))
            throw BasicException(file.errorString());
        return SaleDocument::fromMap(readJson(file));
    } catch (const BasicException &error) {
        fail(u"Не удалось прочитать открытый чек из файла"_s, file.fileName(),
             error.text().ru() + u". Файл сохранён как есть; чтобы начать новый чек, переместите его"_s);
    }
}

void DocumentStore::remove() const
{
    QFile file(openCheckFile());
    if (!file.exists())
        return;
    if (!file.remove())
        fail(u"Не удалось удалить файл закрытого чека"_s, file.fileName(), file.errorString());
    syncFolder(file.fileName());
}
