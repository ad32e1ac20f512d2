// Creates files and folders that only their owner can access, durably, even when running as root.
#pragma once

#include <poshost_export.h>

#include <QtCore/QString>

#include <system_error>

/// Makes the folder, and those above it that are missing, with mode 0700, durably; root gives them to the owner of the
/// folder above. Returns why the folder is not there afterwards; nothing if it is.
[[nodiscard]] POSHOST_EXPORT std::error_code makePrivateFolder(const QString &folder);

/// When running as root, gives a file or folder that was just created to the owner of `other` (its folder, or the file
/// it belongs to), who must be able to write it later. Does nothing for other users, for symbolic links and for files
/// with several names.
POSHOST_EXPORT void giveToOwnerOf(const QString &other, const QString &fileName);

/// Waits until the names in the folder are on the disk. Returns why they may not be.
[[nodiscard]] POSHOST_EXPORT std::error_code syncFolder(const QString &folder);
