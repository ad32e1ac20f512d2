// Bodies by hand with Qt's JSON.
#include "floor.h"

#include <QtCore/QJsonDocument>

namespace bench {

Floor::Floor(const Exchange &exchange)
    : m_exchange(exchange), m_fields(parse(exchange.body)), m_order(textsOf(m_fields))
{
    require(build().body == exchange.body, "floor: another body");
}

const Exchange &Floor::build()
{
    if (!m_exchange.body.isEmpty())
        m_exchange.body = QJsonDocument(body()).toJson(QJsonDocument::Compact);
    return m_exchange;
}

// The one body without lines, of the binding, is a handful of strings and counts as built.
QJsonObject Floor::body() const
{
    return m_order.lines.isEmpty() ? m_fields : buildByHand(m_order);
}

QJsonObject Floor::parse(const QByteArray &answer)
{
    return QJsonDocument::fromJson(answer).object();
}

} // namespace bench
