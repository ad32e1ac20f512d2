// The doctor's checks of what is on this machine.
#pragma once

#include "doctor.h"

#include <core/config.h>

#include <QtCore/QSharedPointer>

namespace till::doctor {

/// Configuration file, its access, keys and values, log, plugin, data folder and disk space. The
/// first check that reads the file puts it into Singleton<Config>, where the plugin finds it. Nothing is changed but a
/// file that is made in the data folder and removed again. Less free space than `spaceWanted` bytes is a warning.
QList<Check> hostChecks(const QString &configFile, qint64 spaceWanted = qint64{1} << 30);

/// The name of the check that everything else needs.
extern const QString configurationCheck;

/// The folder "Host:dataFolder".
QString dataFolder();

} // namespace till::doctor
