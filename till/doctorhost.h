// The doctor's checks of what is on this machine.
#pragma once

#include "doctor.h"

namespace till::doctor {

/// Configuration file, its access, keys and values, log, goods, plugin, data folder and disk space. The first check
/// puts the configuration into Singleton<Config>, where the plugin finds it. Makes a file in the data folder and in the
/// log's folder, and removes it again; makes no folder. Less free space than `spaceWanted` bytes is a warning.
QList<Check> hostChecks(const QString &configFile, qint64 spaceWanted = qint64{1} << 30);

/// The name of the check that everything else needs.
extern const QString configurationCheck;

/// The folder "Host:dataFolder".
QString dataFolder();

/// Whether a file can be made in the folder that `key` names. Does not make the folder: it may have a mistyped name.
Finding checkFolder(const QString &folder, const QString &key);

} // namespace till::doctor
