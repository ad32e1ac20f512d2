// Keeps the till's own state with the check.
#include "tillstate.h"

#include <document/abstractdocument.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

const QString storeKey = u"till"_s;

} // namespace

TillState TillState::readFrom(const AbstractDocument &document)
{
    const QVariantMap data = document.getPluginData(storeKey);
    TillState state;
    state.ending = static_cast<Ending>(data.value(u"ending"_s).toInt());
    state.orderUncertain = data.value(u"orderUncertain"_s).toBool();
    state.changeReported = data.value(u"changeReported"_s).toBool();
    state.pricesStale = data.value(u"pricesStale"_s).toBool();
    state.undo = data.value(u"undo"_s).toMap();
    state.requests = data.value(u"requests"_s).toList();
    return state;
}

void TillState::writeTo(AbstractDocument &document) const
{
    document.setPluginData(storeKey, {{u"ending"_s, static_cast<int>(ending)},
                                      {u"orderUncertain"_s, orderUncertain},
                                      {u"changeReported"_s, changeReported},
                                      {u"pricesStale"_s, pricesStale},
                                      {u"undo"_s, undo},
                                      {u"requests"_s, requests}});
}

} // namespace till
