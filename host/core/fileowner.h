// Files that root makes where another user works.
#pragma once

#include <poshost_export.h>

#include <QtCore/QString>

/// Gives a file that root has just created to the owner of `other`, its folder or the file that it belongs to: that
/// user must be able to write it later. Does nothing for other users than root, and for what is not a file of its own.
POSHOST_EXPORT void giveToOwnerOf(const QString &other, const QString &fileName);
