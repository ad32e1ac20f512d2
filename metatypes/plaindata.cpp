// Converts bonus records and impacts to plain values and back, through their own properties, getters and setters.
#include "metatypes/plaindata.h"

#include <QtCore/QMetaProperty>

#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

/// Calls `visit` with the name, getter and setter of everything that the plugin sets on an impact, except the card.
template <class Visit>
void visitFields(Visit visit)
{
    using Detail = DocumentImpactDetail;
    visit(u"cardIndex"_s, &Detail::getCardIndex, &Detail::setCardIndex);
    visit(u"dateTime"_s, &Detail::getDateTime, &Detail::setDateTime);
    visit(u"discountType"_s, &Detail::getDiscountType, &Detail::setDiscountType);
    visit(u"discountMode"_s, &Detail::getDiscountMode, &Detail::setDiscountMode);
    visit(u"discountName"_s, &Detail::getDiscountName, &Detail::setDiscountName);
    visit(u"discountObject"_s, &Detail::getDiscountObject, &Detail::setDiscountObject);
    visit(u"position"_s, &Detail::getPosition, &Detail::setPosition);
    visit(u"discountRate"_s, &Detail::getDiscountRate, &Detail::setDiscountRate);
    visit(u"discountSum"_s, &Detail::getDiscountSum, &Detail::setDiscountSum);
    visit(u"impactSource"_s, &Detail::getImpactSource, &Detail::setImpactSource);
    visit(u"minPriceIgnored"_s, &Detail::isMinPriceIgnored, &Detail::setMinPriceIgnored);
}

template <class Value>
QVariant toPlain(const Value &value)
{
    if constexpr (std::is_enum_v<Value>)
        return static_cast<int>(value);
    else
        return value;
}

/// False, with `value` unchanged, when `plain` does not hold one.
template <class Value>
bool fromPlain(const QVariant &plain, Value &value)
{
    if constexpr (std::is_same_v<Value, QVariant>) {
        value = plain.isNull() ? QVariant() : plain;
    } else {
        using Stored = std::conditional_t<std::is_enum_v<Value>, int, Value>;
        QVariant stored = plain;
        if (!stored.convert(QMetaType::fromType<Stored>()))
            return false;
        value = static_cast<Value>(stored.value<Stored>());
    }
    return true;
}

QVariantMap toPlainMap(const BonusImpact &impact)
{
    QVariantMap totals;
    visitFields([&](const QString &name, auto get, auto) {
        totals.insert(name, toPlain(std::invoke(get, *impact.getTotals())));
    });
    // A share differs from the totals in these two only.
    QVariantList shares;
    for (const auto details = impact.getDetails(); const auto &detail : details) {
        shares.append(
            QVariantMap{{u"position"_s, detail->getPosition()}, {u"discountSum"_s, detail->getDiscountSum()}});
    }
    return {{u"totals"_s, totals}, {u"shares"_s, shares}};
}

/// Null when the map does not describe an impact.
QSharedPointer<BonusImpact> bonusImpactFrom(const QVariantMap &map)
{
    bool good = true;
    const auto read = [&good]<class Value>(const QVariantMap &from, const QString &name, Value value) {
        good = from.contains(name) && fromPlain(from.value(name), value) && good;
        return value;
    };
    const QVariantMap totals = map.value(u"totals"_s).toMap();
    const auto detail = QSharedPointer<DocumentImpactDetail>::create();
    visitFields([&](const QString &name, auto get, auto set) {
        std::invoke(set, *detail, read(totals, name, std::invoke(get, *detail)));
    });
    auto impact = QSharedPointer<BonusImpact>::create(detail);
    for (const QVariantList shares = read(map, u"shares"_s, QVariantList()); const QVariant &entry : shares) {
        const QVariantMap share = entry.toMap();
        impact->addDetailForPosition(read(share, u"position"_s, 0), read(share, u"discountSum"_s, 0.0));
    }
    return good ? impact : nullptr;
}

} // namespace

QVariantMap toPlainMap(const DocumentBonusRecord &record)
{
    const QMetaObject &type = DocumentBonusRecord::staticMetaObject;
    QVariantMap map;
    for (int i = 0; i < type.propertyCount(); ++i)
        map.insert(QString::fromLatin1(type.property(i).name()), type.property(i).readOnGadget(&record));
    return map;
}

DocumentBonusRecord bonusRecordFrom(const QVariantMap &map, QStringList &unreadable)
{
    const QMetaObject &type = DocumentBonusRecord::staticMetaObject;
    DocumentBonusRecord record;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        const int index = type.indexOfProperty(entry.key().toLatin1().constData());
        if (index != -1 && !type.property(index).writeOnGadget(&record, *entry))
            unreadable.append(entry.key());
    }
    return record;
}

QVariantList toPlainList(const BonusImpactPtrList &impacts)
{
    QVariantList list;
    list.reserve(impacts.size());
    for (const auto &impact : impacts) {
        if (impact && impact->getTotals()) // a host may have put another one into the plugin data
            list.append(toPlainMap(*impact));
    }
    return list;
}

BonusImpactPtrList bonusImpactsFrom(const QVariantList &list)
{
    BonusImpactPtrList impacts;
    for (const QVariant &entry : list) {
        const auto impact = bonusImpactFrom(entry.toMap());
        if (!impact)
            return {};
        impacts.append(impact);
    }
    return impacts;
}

} // namespace kvo
