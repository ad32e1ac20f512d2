// What can be had from the files that a power cut has left, seen through SQLite's ordinary system interface.
#pragma once

#include "powercutdisk.h"

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

namespace powercutremains {

/// Makes the files in the folder what they are in `contents`, by the last part of their names; where a log or a journal
/// is not in there, it is removed. Throws std::runtime_error when that fails.
void put(const PowerCutDisk::Contents &contents, const QString &folder);

/// Opens a copy of the database, checks it and has the queue send all that is due. Returns the events in the sequence
/// of their sending; none when the database is corrupt.
std::optional<QList<QJsonObject>> events(const PowerCutDisk::Contents &contents);

} // namespace powercutremains
