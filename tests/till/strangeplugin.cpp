// Passes for the plugin by its metadata, but has no loyalty system.
#include <QtCore/QObject>

class Plugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "Kvo")
};

#include "strangeplugin.moc"
