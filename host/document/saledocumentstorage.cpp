// A sales check as plain variants. Kopecks are whole numbers; what the impacts take off a line is computed from their
// shares when the check is read, and must fit it.
#include "saledocument.h"
#include "storedmap.h"

#include <core/serder.h>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int formatVersion = 1;

template <class T>
QVariantList toMaps(const QList<QSharedPointer<T>> &objects)
{
    QVariantList maps;
    maps.reserve(objects.size());
    for (const auto &object : objects)
        maps.append(object->toMap());
    return maps;
}

QVariantList impactMaps(const QList<QSharedPointer<DocumentImpact>> &impacts)
{
    QVariantList maps;
    for (const auto &impact : impacts) {
        QVariantMap map = impact->toMap();
        map.insert(u"bonus"_s, !impact.dynamicCast<BonusImpact>().isNull());
        maps.append(map);
    }
    return maps;
}

QSharedPointer<DocumentImpact> readImpact(const QVariantMap &map)
{
    const StoredMap stored(map);
    const auto totals = QSharedPointer<DocumentImpactDetail>::create();
    QSharedPointer<DocumentImpact> impact;
    if (stored.flag(u"bonus"_s))
        impact = QSharedPointer<BonusImpact>::create(totals);
    else
        impact = QSharedPointer<DocumentImpact>::create(totals);
    stored.map(u"totals"_s);
    stored.list(u"details"_s);
    impact->readMap(map);
    return impact;
}

void linkCard(DocumentImpact &impact, const QList<QSharedPointer<DocumentCardRecord>> &cards)
{
    const QVariant index = impact.getTotals()->getCardIndex();
    if (index.isNull())
        return;
    const auto card = std::find_if(cards.cbegin(), cards.cend(),
                                   [&](const auto &record) { return record->getCodeInternal() == index.toInt(); });
    if (card != cards.cend())
        impact.setCardRecord(*card);
}

QDateTime readDateTime(const StoredMap &stored)
{
    const QDateTime dateTime = QDateTime::fromString(stored.text(u"dateTime"_s), Qt::ISODateWithMs);
    if (!dateTime.isValid())
        throw BasicException(u"запись «dateTime»: ожидаются дата и время"_s);
    return dateTime;
}

} // namespace

QVariantMap SaleDocument::toMap() const
{
    QVariantMap pluginData;
    const QStringList keys = pluginDataKeys();
    for (const QString &key : keys)
        pluginData.insert(key, serder::toPlain(getPluginData(key)));
    return {{u"version"_s, formatVersion},
            {u"type"_s, static_cast<int>(m_type)},
            {u"state"_s, static_cast<int>(m_state)},
            {u"identifier"_s, m_identifier},
            {u"dateTime"_s, m_dateTime.toString(Qt::ISODateWithMs)},
            {u"lastPosnum"_s, m_lastPosnum},
            {u"lastCardCode"_s, m_lastCardCode},
            {u"goods"_s, toMaps(m_goods)},
            {u"cards"_s, toMaps(m_cards)},
            {u"impacts"_s, impactMaps(m_impacts)},
            {u"pluginData"_s, pluginData}};
}

QSharedPointer<SaleDocument> SaleDocument::fromMap(const QVariantMap &map)
{
    const StoredMap stored(map);
    if (stored.integer(u"version"_s) != formatVersion)
        throw BasicException(u"запись «version»: эта версия формата не поддерживается"_s);
    const auto document = QSharedPointer<SaleDocument>::create(static_cast<EDocumentType>(stored.integer(u"type"_s)));
    document->m_state = static_cast<State>(stored.integer(u"state"_s));
    document->m_identifier = stored.text(u"identifier"_s);
    document->m_dateTime = readDateTime(stored);
    document->m_lastPosnum = stored.integer(u"lastPosnum"_s);
    document->m_lastCardCode = stored.integer(u"lastCardCode"_s);
    document->m_goods = stored.each(u"goods"_s, &GoodsItem::fromMap);
    document->m_cards = stored.each(u"cards"_s, &DocumentCardRecord::fromMap);
    document->m_impacts = stored.each(u"impacts"_s, &readImpact);
    const QVariantMap pluginData = stored.map(u"pluginData"_s);
    for (auto entry = pluginData.cbegin(); entry != pluginData.cend(); ++entry)
        document->setPluginData(entry.key(), entry.value().toMap());

    for (const auto &impact : std::as_const(document->m_impacts))
        linkCard(*impact, document->m_cards);
    document->updateLineDiscounts();
    document->requireConsistent();
    return document;
}

void SaleDocument::requireConsistent() const
{
    Money ofLines;
    for (const auto &item : m_goods) {
        ofLines += item->getDiscountSum();
        if (item->getPosnum() > m_lastPosnum || item->getTotal() < Money())
            throw BasicException(u"запись «goods»: строка %1 не сходится с чеком"_s.arg(item->getPosnum()));
    }
    if (ofLines != getDiscountSum())
        throw BasicException(u"запись «impacts»: скидки строк (%1) не сходятся со скидкой чека (%2)"_s.arg(
            ofLines.toText(), getDiscountSum().toText()));
}
