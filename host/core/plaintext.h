// Makes texts from outside fit to be shown to a person.
#pragma once

#include <poshost_export.h>

#include <QtCore/QString>

/// `text`, which came from a service, a scanner or a file, as one line that can neither forge another line nor command
/// a terminal. Line ends, tabs and runs of spaces become one space each, none of them at either end; escape sequences
/// (all of their characters), control and format characters (among them those for the writing direction) and lone
/// surrogates are left out. A result over `maxLength` UTF-16 units is cut to it and ends with "…". Takes time in
/// proportion to what it keeps and leaves out, never more than to the length of `text`.
POSHOST_EXPORT QString plainText(QStringView text, qsizetype maxLength);
