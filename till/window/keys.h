// Keys of buttons.
#pragma once

#include <QtGui/QShortcut>
#include <QtWidgets/QAbstractButton>

namespace till {

/// Gives a button a key for as long as it can be seen and is enabled. Unlike QAbstractButton's own shortcut it acts at
/// once, and survives a new text.
inline QShortcut *addKey(QAbstractButton *button, const QKeySequence &key)
{
    return new QShortcut(key, button, [button] { button->click(); });
}

} // namespace till
