// Loads the loyalty plugin the way a host does: by its metadata first, so that no foreign code is run to find out.
#include "loyaltyplugin.h"

#include <core/basicexception.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonObject>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

constexpr auto pluginFile = "libKvo.so"_L1;
constexpr auto interfaceIdentifier = "Kvo"_L1;
constexpr auto className = "Plugin"_L1;

[[noreturn]] void fail(const QString &file, const QString &reason)
{
    throw BasicException(u"Модуль лояльности %1: %2"_s.arg(file, reason));
}

QString findFile(const QString &folder)
{
    if (!QFileInfo(folder).isDir())
        fail(folder, u"нет такой папки; проверьте ключ Till:pluginFolder"_s);
    const QString file = QDir(folder).absoluteFilePath(pluginFile);
    if (!QFileInfo(file).isFile())
        fail(file, u"нет такого файла; проверьте ключ Till:pluginFolder"_s);
    return file;
}

} // namespace

LoyaltyPlugin::LoyaltyPlugin(const QString &folder) : m_loader(inspect(folder))
{
    if (!m_loader.load())
        fail(m_loader.fileName(), u"не загружается: %1"_s.arg(m_loader.errorString()));
    m_system = qobject_cast<BasicLoyaltySystem *>(m_loader.instance());
    if (!m_system)
        fail(m_loader.fileName(), u"в модуле нет системы лояльности"_s);
    if (!m_system->init())
        fail(m_loader.fileName(), u"система лояльности не запустилась: %1"_s.arg(m_system->getLastErrorString().ru()));
}

QString LoyaltyPlugin::inspect(const QString &folder)
{
    const QString file = findFile(folder);
    const QPluginLoader loader(file);
    const QJsonObject metadata = loader.metaData();
    if (metadata.isEmpty())
        fail(file, u"файл не является модулем Qt: %1"_s.arg(loader.errorString()));
    const QString identifier = metadata.value("IID"_L1).toString();
    const QString name = metadata.value("className"_L1).toString();
    if (identifier != interfaceIdentifier || name != className) {
        fail(file, u"модуль \"%1\", класс \"%2\", а нужен модуль \"%3\", класс \"%4\""_s.arg(
                       identifier, name, interfaceIdentifier, className));
    }
    return file;
}

LoyaltyPlugin::~LoyaltyPlugin()
{
    m_system->deinit();
    m_loader.unload();
}

} // namespace till
