// A sales check on disk. Kopecks are whole numbers; what the impacts take off a line is computed from their
// shares when the check is read, and must fit it.
#include "jsonwriter.h"
#include "saledocument.h"
#include "storedmap.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int formatVersion = 1;

void writePluginData(JsonWriter &json, const SaleDocument &document)
{
    const QStringList keys = document.pluginDataKeys();
    for (const QString &key : keys) {
        const QVariantMap data = document.getPluginData(key);
        json.addObject(key, [&] {
            for (auto entry = data.cbegin(); entry != data.cend(); ++entry)
                json.add(entry.key(), entry.value());
        });
    }
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

QByteArray SaleDocument::toJson() const
{
    return JsonWriter::of([this](JsonWriter &json) {
        json.add("version"_L1, formatVersion);
        json.add("type"_L1, m_type);
        json.add("state"_L1, m_state);
        json.add("identifier"_L1, m_identifier);
        json.add("dateTime"_L1, m_dateTime);
        json.add("lastPosnum"_L1, m_lastPosnum);
        json.add("lastCardCode"_L1, m_lastCardCode);
        json.addList("goods"_L1, m_goods, [&](const auto &item) { item->writeTo(json); });
        json.addList("cards"_L1, m_cards, [&](const auto &card) { card->writeTo(json); });
        json.addList("impacts"_L1, m_impacts, [&](const auto &impact) {
            json.add("bonus"_L1, !impact.template dynamicCast<BonusImpact>().isNull());
            impact->writeTo(json);
        });
        json.addObject("pluginData"_L1, [&] { writePluginData(json, *this); });
    });
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
