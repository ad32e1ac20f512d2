// The till's configuration, refused as a whole when anything in it is in doubt.
#pragma once

#include "settingfault.h"

#include <QtCore/QSharedPointer>

namespace till {

/// Everything that the host, the till and the loyalty plugin read, joined from their own lists.
QList<Setting> allSettings();

/// Reads the file. Throws BasicException that names the file and every mistake in it, with line, section, key and what
/// was probably meant; nothing is guessed.
QSharedPointer<Config> readConfiguration(const QString &fileName);

/// Whether the file holds a password and lets others than its owner and group read it.
bool othersCanReadPasswords(const Config &config);

/// All settings as a page in Markdown, one table a section.
QString settingsReference();

/// The folder "Host:dataFolder", and the catalogue "Till:goods", which is meant in it.
QString configuredDataFolder(const Config &config);
QString configuredGoodsFile(const Config &config);

/// Where libKvo.so is when Till:pluginFolder does not say: `../lib/kvo` beside the folder of the program, as installed,
/// or else `../lib`, as built.
QString defaultPluginFolder();

} // namespace till
