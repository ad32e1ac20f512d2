// What the owner of a setting declares about it: name, kind, range, default and meaning.
#pragma once

#include <poshost_export.h>

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <limits>

struct Setting
{
    enum class Kind {
        Text,    ///< Anything.
        Whole,   ///< A whole number.
        Decimal, ///< A number; the decimal separator is a point.
        Choice,  ///< One of `choices`, in any capitals.
        Address, ///< A URL with http or https, a host, and perhaps a port.
        Path,    ///< The path of a URL; it begins with "/".
    };

    QString key; ///< "Queue:port" is the entry `port` of the section [Queue].
    Kind kind = Kind::Text;
    QString defaultValue = {}; ///< As it would be written in the file.
    QString meaning;           ///< One English sentence for the reference.
    QString example = {};
    double lowest = std::numeric_limits<double>::lowest(); ///< Of a number: both limits or none.
    double highest = std::numeric_limits<double>::max();
    QStringList choices = {};
    QString placeholder = {}; ///< A text must contain this.

    QString section() const { return key.section(u':', 0, 0); }
    QString name() const { return key.section(u':', 1); }
};

/// Every setting that PosHost itself reads.
POSHOST_EXPORT QList<Setting> hostSettings();
