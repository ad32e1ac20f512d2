// Makes texts from outside fit to be shown to a person.
#pragma once

#include <poshost_export.h>

#include <QtCore/QString>

/// Turns `text` from a service, a scanner or a file into one line that can neither forge another line nor command a
/// terminal. Runs of line ends, tabs and spaces become one space, and none at either end; whole escape sequences,
/// control and format characters (marks of the writing direction among them) and lone surrogates are removed. A result
/// of more than `maxLength` UTF-16 units is cut to that length and ends with "…". Takes time proportional to the
/// characters read, at most to the length of `text`.
POSHOST_EXPORT QString plainText(QStringView text, qsizetype maxLength);
