// What the machines that lose their power have in common.
#pragma once

#include "powercutdisk.h"

#include <QtCore/QString>

namespace powercut {

/// Has the connection that was opened first commit without a sync.
void commitWithoutSync();

/// Makes the files in the folder what they are in `contents`; a log or a journal that is not in there is removed.
void put(const PowerCutDisk::Contents &contents, const QString &folder);

bool isSound(const QString &fileName);

} // namespace powercut
