// Keeps the till's own state with the check.
#include "tillstate.h"

#include <core/basicexception.h>
#include <document/abstractdocument.h>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

const QString storeKey = u"till"_s;

template <class Choice>
Choice readChoice(const QVariantMap &data, const QString &name, Choice last)
{
    const int value = data.value(name).toInt();
    if (value < 0 || value > static_cast<int>(last))
        throw BasicException(
            u"Состояние чека повреждено: поле \"%1\" со значением %2"_s.arg(name, QString::number(value)));
    return static_cast<Choice>(value);
}

} // namespace

TillState TillState::readFrom(const AbstractDocument &document)
{
    const QVariantMap data = document.getPluginData(storeKey);
    TillState state;
    state.ending = readChoice(data, u"ending"_s, Ending::Voiding);
    state.order = readChoice(data, u"order"_s, Order::Uncertain);
    state.basket = data.value(u"basket"_s).toString();
    state.undo = data.value(u"undo"_s).toMap();
    state.requests = data.value(u"requests"_s).toList();
    return state;
}

void TillState::writeTo(AbstractDocument &document) const
{
    document.setPluginData(storeKey, {{u"ending"_s, static_cast<int>(ending)},
                                      {u"order"_s, static_cast<int>(order)},
                                      {u"basket"_s, basket},
                                      {u"undo"_s, undo},
                                      {u"requests"_s, requests}});
}

} // namespace till
