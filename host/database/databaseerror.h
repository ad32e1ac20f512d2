// How database failures are reported: the cashier gets a text that names the database, the log the technical reason.
#pragma once

#include <core/basicexception.h>
#include <poshost_export.h>

#include <log4qt/logger.h>

#include <QtCore/QString>

/// The file is damaged, was written by a newer version, or belongs to another program. Trying again will not help.
class UnusableDatabase : public BasicException
{
public:
    using BasicException::BasicException;
};

/// There is no database yet, but it can be made: not a failure by itself.
class POSHOST_EXPORT MissingDatabase : public BasicException
{
public:
    using BasicException::BasicException;
};

namespace databaseerror {

/// The logger "poshost.database".
Log4Qt::Logger *logger();

/// Logs `reason` and returns the exception to throw, with the text "title: problem". `title` is a DatabaseConnection's.
BasicException make(const QString &title, const QString &problem, const QString &reason);

} // namespace databaseerror
