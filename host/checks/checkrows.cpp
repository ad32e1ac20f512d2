// Compares a check with its stored copy, object by object.
#include "checkrows.h"

#include <core/jsontext.h>
#include <document/documentbonusrecord.h>

#include <QtCore/QJsonDocument>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString checkKind = u"check"_s;
const QString goodsKind = u"goods"_s;
const QString cardKind = u"card"_s;
const QString impactKind = u"impact"_s;
const QString dataKind = u"data "_s;
constexpr auto bonusKey = "bonus"_L1;

template <class T>
QByteArray contentOf(const T &object)
{
    return storedrow::textOf(object);
}

QByteArray contentOf(const DocumentImpact &impact)
{
    return jsontext::compact([&impact](QCborStreamWriter &row) {
        row.startMap(storedrow::fieldCount<DocumentImpact> + 1);
        storedrow::appendFields(row, impact);
        row.append(bonusKey);
        row.append(dynamic_cast<const BonusImpact *>(&impact) != nullptr);
        row.endMap();
    });
}

// Values of other types may be equal and yet have changed: lists of pointers are equal when the pointers are.
bool isComparable(const QVariant &value)
{
    const QMetaType type = value.metaType();
    if (type.id() == QMetaType::QVariantList)
        return std::ranges::all_of(value.toList(), isComparable);
    if (type.id() == QMetaType::QVariantMap)
        return std::ranges::all_of(value.toMap(), isComparable);
    return type.id() < QMetaType::User || type == QMetaType::fromType<QList<DocumentBonusRecord>>();
}

// The value in the plain form in which it is written, where that can be compared. Comparing is quicker than writing the
// value again at each save to see whether it has changed.
QVariant plainOf(const QVariant &value)
{
    if (isComparable(value) || !value.canConvert<QVariantList>())
        return value;
    const QVariantList elements = value.toList();
    return std::ranges::all_of(elements, isComparable) ? elements : value;
}

bool isSurelySame(const QVariant &a, const QVariant &b)
{
    return isComparable(a) && a.metaType() == b.metaType() && a == b;
}

QByteArray contentOf(const QVariant &value)
{
    return jsontext::compact([&value](QCborStreamWriter &row) {
        row.startArray(1);
        storedrow::append(row, value);
        row.endArray();
    });
}

QJsonDocument parse(const CheckRow &row)
{
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(row.content, &error);
    if (json.isNull())
        throw BasicException(u"это не JSON: %1 (позиция %2)"_s.arg(error.errorString(), QString::number(error.offset)));
    return json;
}

template <class T>
QSharedPointer<T> readObject(const CheckRow &row, const QSharedPointer<T> &object)
{
    storedrow::read(parse(row).object(), *object);
    return object;
}

QSharedPointer<DocumentImpact> readImpact(const CheckRow &row)
{
    const QJsonValue isBonus = parse(row).object().value(bonusKey);
    if (!isBonus.isBool())
        throw storedrow::fieldError(bonusKey, BasicException(u"ожидается true или false"_s));
    const QSharedPointer<DocumentImpactDetail> totals;
    if (isBonus.toBool())
        return readObject<DocumentImpact>(row, QSharedPointer<BonusImpact>::create(totals));
    return readObject(row, QSharedPointer<DocumentImpact>::create(totals));
}

template <class T>
QList<QSharedPointer<T>> objectsOf(const auto &kept)
{
    QList<QSharedPointer<T>> objects;
    for (const auto &entry : kept)
        objects.append(entry.object);
    return objects;
}

} // namespace

CheckRows::Changes CheckRows::update(const SaleDocument &check)
{
    Changes changes;
    if (auto fields = storedrow::values(check); m_fields != fields) {
        changes.written.append({checkKind, 0, contentOf(check)});
        m_fields = std::move(fields);
    }
    updateList(goodsKind, m_goods, check.getGoodsItems(), changes);
    updateList(cardKind, m_cards, check.getCardRecords(), changes);
    updateList(impactKind, m_impacts, check.getDiscountImpacts(), changes);
    updateData(check, changes);
    return changes;
}

// Objects are added and removed; those that stay never change places.
template <class T>
void CheckRows::updateList(const QString &kind, KeptList<T> &kept, const QList<QSharedPointer<T>> &objects,
                           Changes &changes)
{
    qsizetype place = 0;
    for (const auto &object : objects) {
        if (place == kept.size() || kept.at(place).object != object) {
            const auto begin = kept.begin() + place;
            const auto found =
                std::find_if(begin, kept.end(), [&](const auto &entry) { return entry.object == object; });
            if (found == kept.end()) {
                kept.insert(place, {object, storedrow::copy(*object), keyOf(*object)});
                changes.written.append({kind, kept.at(place++).key, contentOf(*object)});
                continue;
            }
            std::for_each(begin, found, [&](const auto &gone) { changes.removed.append({kind, gone.key}); });
            kept.erase(begin, found);
        }
        if (auto &[same, copy, key] = kept[place++]; !storedrow::isSame(*copy, *object)) {
            copy = storedrow::copy(*object);
            changes.written.append({kind, key, contentOf(*object)});
        }
    }
    for (; kept.size() > place; kept.removeLast())
        changes.removed.append({kind, kept.last().key});
}

void CheckRows::updateData(const SaleDocument &check, Changes &changes)
{
    for (const QStringList storeKeys = check.pluginDataKeys(); const QString &storeKey : storeKeys)
        m_data.try_emplace(storeKey);
    for (auto &[storeKey, kept] : m_data) {
        const QString kind = dataKind + storeKey;
        const QVariantMap data = check.getPluginData(storeKey);
        for (auto entry = data.cbegin(); entry != data.cend(); ++entry) {
            KeptValue &value = kept[entry.key()];
            const QVariant plain = plainOf(*entry);
            if (!value.content.isNull() && isSurelySame(value.value, plain))
                continue;
            const QByteArray content = contentOf(plain);
            if (content != value.content)
                changes.written.append({kind, entry.key(), content});
            value = {plain, content};
        }
        kept.removeIf([&](KeptValues::iterator value) {
            const bool isGone = !data.contains(value.key());
            if (isGone)
                changes.removed.append({kind, value.key()});
            return isGone;
        });
    }
}

QSharedPointer<SaleDocument> CheckRows::read(const QList<CheckRow> &rows)
{
    *this = {};
    const auto check = QSharedPointer<SaleDocument>::create();
    for (const CheckRow &row : rows) {
        try {
            readRow(row, *check);
        } catch (const BasicException &error) {
            const QString name = row.kind == checkKind ? checkKind : row.kind + u' ' + row.key.toString();
            throw BasicException(u"запись «%1», %2"_s.arg(name, error.text().ru()));
        }
    }
    if (!m_fields)
        throw BasicException(u"запись «check» отсутствует"_s);
    check->assemble(objectsOf<GoodsItem>(m_goods), objectsOf<DocumentCardRecord>(m_cards),
                    objectsOf<DocumentImpact>(m_impacts));
    return check;
}

void CheckRows::readRow(const CheckRow &row, SaleDocument &check)
{
    const qint64 key = row.key.toLongLong();
    const auto keep = [&](auto &list, const auto &object) { list.append({object, storedrow::copy(*object), key}); };
    if (row.kind.startsWith(dataKind)) {
        const QString storeKey = row.kind.sliced(dataKind.size());
        const QJsonArray array = parse(row).array();
        if (array.size() != 1)
            throw BasicException(u"ожидается список с одним значением"_s);
        QVariant value;
        storedrow::fromJson(array.first(), value);
        check.setPluginData(storeKey, row.key.toString(), value);
        m_data[storeKey].insert(row.key.toString(), {value, row.content});
        return;
    }
    if (row.kind == checkKind) {
        storedrow::read(parse(row).object(), check);
        m_fields = storedrow::values(check);
    } else if (row.kind == goodsKind) {
        keep(m_goods, readObject(row, QSharedPointer<GoodsItem>::create()));
    } else if (row.kind == cardKind) {
        keep(m_cards, readObject(row, QSharedPointer<DocumentCardRecord>::create()));
    } else if (row.kind == impactKind) {
        keep(m_impacts, readImpact(row));
        m_lastImpact = key;
    } else {
        throw BasicException(u"неизвестный вид записи"_s);
    }
}
