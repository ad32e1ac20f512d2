// How a failure of the queue is told: the cashier gets a text that names the database, the log the technical reason.
#pragma once

#include <core/basicexception.h>

#include <log4qt/logger.h>

#include <QtCore/QString>

namespace queueerror {

/// The logger "poshost.queue".
Log4Qt::Logger *logger();

/// Logs `reason` and returns the exception to throw; `problem` completes the sentence "Очередь запросов «database»:
/// ...".
BasicException make(const QString &database, const QString &problem, const QString &reason);

} // namespace queueerror
