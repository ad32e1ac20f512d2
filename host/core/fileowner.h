// Files that root makes where another user works.
#pragma once

#include <QtCore/QString>

/// Gives a file that was just created to the owner of its folder if root has made it, by a look at the queue, say: the
/// till has to write it later. Does nothing for other users.
void giveToOwnerOfFolder(const QString &fileName);
