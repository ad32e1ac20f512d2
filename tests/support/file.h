// Whole files, written and read by a test.
#pragma once

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <stdexcept>

inline void writeFile(const QString &name, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(name).path());
    QFile file(name);
    if (!file.open(QFile::WriteOnly) || file.write(content) != content.size() || !file.flush())
        throw std::runtime_error(name.toStdString() + ": " + file.errorString().toStdString());
}

/// For a QTemporaryDir of a test that saves thousands of times: in memory where that can be.
inline QString quickFolder()
{
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/kvo-XXXXXX");
}

/// Empty when there is no such file.
inline QByteArray readFile(const QString &name)
{
    QFile file(name);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}
