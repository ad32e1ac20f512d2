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

QByteArray textOf(const QJsonObject &object)
{
    return jsontext::compact(QJsonDocument(object));
}

template <class T>
QByteArray contentOf(const T &object)
{
    return textOf(storedrow::write(object));
}

QByteArray contentOf(const DocumentImpact &impact)
{
    QJsonObject row = storedrow::write(impact);
    row.insert(bonusKey, dynamic_cast<const BonusImpact *>(&impact) != nullptr);
    return textOf(row);
}

// Values of other types may be equal and yet have changed: lists of pointers are equal when the pointers are.
bool isComparable(const QVariant &value)
{
    const QMetaType type = value.metaType();
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
    return jsontext::compact(QJsonDocument(QJsonArray{storedrow::toJson(value)}));
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
        const auto begin = kept.begin() + place;
        const auto found = std::find_if(begin, kept.end(), [&](const auto &entry) { return entry.object == object; });
        if (found == kept.end()) {
            kept.insert(place, {object, storedrow::copy(*object), keyOf(*object)});
            changes.written.append({kind, kept.at(place).key, contentOf(*object)});
        } else {
            std::for_each(begin, found, [&](const auto &gone) { changes.removed.append({kind, gone.key}); });
            if (!storedrow::isSame(*found->copy, *object)) {
                found->copy = storedrow::copy(*object);
                changes.written.append({kind, found->key, contentOf(*object)});
            }
            kept.erase(begin, found);
        }
        ++place;
    }
    for (; kept.size() > place; kept.removeLast())
        changes.removed.append({kind, kept.last().key});
}

void CheckRows::updateData(const SaleDocument &check, Changes &changes)
{
    KeptData before = std::exchange(m_data, {});
    for (const QStringList storeKeys = check.pluginDataKeys(); const QString &storeKey : storeKeys) {
        const QVariantMap data = check.getPluginData(storeKey);
        for (auto entry = data.cbegin(); entry != data.cend(); ++entry) {
            KeptValue kept = before[storeKey].take(entry.key());
            const QVariant plain = plainOf(*entry);
            if (kept.content.isNull() || !isSurelySame(kept.value, plain)) {
                const QByteArray content = contentOf(plain);
                if (content != kept.content)
                    changes.written.append({dataKind + storeKey, entry.key(), content});
                kept = {plain, content};
            }
            m_data[storeKey].insert(entry.key(), kept);
        }
    }
    for (auto storeKey = before.cbegin(); storeKey != before.cend(); ++storeKey) {
        for (auto entry = storeKey->cbegin(); entry != storeKey->cend(); ++entry)
            changes.removed.append({dataKind + storeKey.key(), entry.key()});
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
