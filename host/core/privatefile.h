// Files and folders that are their owner's alone, for good once they are made, also where root makes them.
#pragma once

#include <poshost_export.h>

#include <QtCore/QString>

/// Makes the folder, and those above it that are missing, with mode 0700, durably; root gives them to the owner of the
/// folder above. True when the folder is there afterwards; otherwise errno says why not.
POSHOST_EXPORT bool makePrivateFolder(const QString &folder);

/// When running as root, gives a file or folder that was just created to the owner of `other` (its folder, or the file
/// it belongs to), who must be able to write it later. Does nothing for other users, for symbolic links and for files
/// with several names.
POSHOST_EXPORT void giveToOwnerOf(const QString &other, const QString &fileName);

/// Waits until the names in the folder are on the disk. False when that fails; errno says why.
POSHOST_EXPORT bool syncFolder(const QString &folder);
