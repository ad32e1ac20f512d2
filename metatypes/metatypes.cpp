// The registrations. Qt itself adds the converters from shared pointers to QObject* and from lists to sequential
// containers.
#include "metatypes/metatypes.h"

#include "metatypes/plaindata.h"

#include <core/event.h>
#include <document/abstractdocument.h>

#include <QtNetwork/QNetworkAccessManager>

namespace kvo {

namespace {

bool registerAll()
{
    // The names are already normalized; letting Qt do it took a third of the plugin's construction time.
    qRegisterNormalizedMetaType<Event>("Event");
    qRegisterNormalizedMetaType<QSharedPointer<AbstractDocument>>("QSharedPointer<AbstractDocument>");
    qRegisterNormalizedMetaType<QNetworkAccessManager::Operation>("QNetworkAccessManager::Operation");
    qRegisterNormalizedMetaType<DocumentBonusRecord>("DocumentBonusRecord");
    qRegisterNormalizedMetaType<QList<DocumentBonusRecord>>("QList<DocumentBonusRecord>");
    qRegisterNormalizedMetaType<BonusImpactPtrList>("BonusImpactPtrList");
    // Another library in the process may have registered the converter already.
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
