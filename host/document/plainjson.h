// Plain variants as the text of a file. Private to this folder.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QVariant>

/// The map as compact JSON text; it reads back as what QJsonDocument would have written.
///
/// Why not QJsonDocument: to build one, only to have it write its text, took two thirds of the time in which the check
/// thread waits for a save, not counting the disk.
QByteArray toJsonText(const QVariantMap &map);
