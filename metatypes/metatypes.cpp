// The registrations. Converters that Qt makes by itself when a type is registered (shared pointers to QObject*, lists
// to sequential containers) are not repeated here.
#include "metatypes/metatypes.h"

#include "metatypes/plaindata.h"

#include <core/event.h>
#include <document/abstractdocument.h>

#include <QtNetwork/QNetworkAccessManager>

namespace kvo {

namespace {

bool registerAll()
{
    // The names are normalized already; to have Qt do that took a third of the plugin's construction.
    qRegisterNormalizedMetaType<Event>("Event");
    qRegisterNormalizedMetaType<QSharedPointer<AbstractDocument>>("QSharedPointer<AbstractDocument>");
    qRegisterNormalizedMetaType<QNetworkAccessManager::Operation>("QNetworkAccessManager::Operation");
    qRegisterNormalizedMetaType<DocumentBonusRecord>("DocumentBonusRecord");
    qRegisterNormalizedMetaType<QList<DocumentBonusRecord>>("QList<DocumentBonusRecord>");
    qRegisterNormalizedMetaType<BonusImpactPtrList>("BonusImpactPtrList");
    // A converter may be there already when another library of the process has registered the types too.
    const auto registerConverter = []<class From, class To>(To (*convert)(const From &)) {
        if (!QMetaType::hasRegisteredConverterFunction<From, To>())
            QMetaType::registerConverter<From, To>(convert);
    };
    registerConverter(static_cast<QVariantMap (*)(const DocumentBonusRecord &)>(&toPlainMap));
    registerConverter(&toPlainList);
    registerConverter(&bonusImpactsFrom);
    return true;
}

} // namespace

void registerMetaTypes()
{
    [[maybe_unused]] static const bool registered = registerAll();
}

} // namespace kvo
