// How the window looks: colours for light and dark, one style sheet, icons.
#pragma once

#include <QtGui/QColor>
#include <QtGui/QIcon>

namespace till {

/// Text has a contrast of at least 4.5:1 on every ground it is put on.
struct Theme
{
    bool isDark = false;

    /// By its name in the style sheet, such as "ground".
    QColor colour(QStringView name) const;

    /// Fusion with these colours, for all of the program.
    void apply() const;

    /// The icon of that name in icons.svg, in this colour, and muted while it is disabled.
    QIcon icon(const QString &name, const QColor &colour) const;
};

} // namespace till
