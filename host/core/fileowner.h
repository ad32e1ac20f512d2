// Files that root makes where another user works.
#pragma once

#include <poshost_export.h>

#include <QtCore/QString>

/// When running as root, gives a file that was just created to the owner of `other` (its folder, or the file that it
/// belongs to), who must be able to write it later. Does nothing for other users, for symbolic links and for files with
/// several names.
POSHOST_EXPORT void giveToOwnerOf(const QString &other, const QString &fileName);
