// Compares a configuration with the settings that somebody reads from it.
#pragma once

#include <core/config.h>
#include <core/setting.h>

namespace till {

/// One mistake in the configuration, without the words for it.
struct SettingFault
{
    enum class Kind {
        UnknownSection, ///< Nobody reads this section; `expected` is the likely one, or empty.
        UnknownKey,     ///< Nobody reads this key; `expected` is the likely one, or empty.
        NotANumber,
        DecimalComma, ///< It would be a number with a point; `expected` is that number.
        OutOfRange,   ///< `expected` is the range.
        NotAChoice,   ///< `expected` lists the choices.
        WrongForm,    ///< `expected` is the form of an address or a path.
        Incomplete,   ///< `expected` is missing in the text.
    };

    Kind kind = Kind::UnknownKey;
    Config::Entry entry;
    QString expected;
};

/// A setting's allowed values, in a form that needs no language: "1 ... 65535", "QSQLITE, QPSQL",
/// "http[s]://HOST[:PORT]", "/PATH".
QString rangeOf(const Setting &setting);

/// All mistakes, in the order of the file. An entry without a section counts as one of an unknown section.
QList<SettingFault> settingFaults(const Config &config, const QList<Setting> &settings);

} // namespace till
