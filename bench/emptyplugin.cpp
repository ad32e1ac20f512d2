// A plugin of libKvo's base classes that does nothing: what loading costs before any code of ours runs.
#include <core/baseactivitylistener.h>
#include <loyalty/basicloyaltysystem.h>

namespace bench {

class EmptyPlugin : public BaseActivityListener, public BasicLoyaltySystem
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "Kvo")
    Q_INTERFACES(BasicLoyaltySystem BasicPlugin)

public Q_SLOTS:
    void handleEvent(const Event &) override {}
};

} // namespace bench

#include "emptyplugin.moc"
