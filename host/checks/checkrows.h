// A check as rows of the check store, and which of them have changed since they were stored.
#pragma once

#include <document/saledocument.h>
#include <document/storedrow.h>
#include <poshost_export.h>

#include <QtCore/QHash>

#include <map>
#include <optional>

/// The key depends on the kind. "check", the check's own fields: 0. "goods": the line's number. "card": the card's
/// number within the check. "impact": a running number, in order of addition. "data STOREKEY": the key of one entry of
/// plugin data.
struct CheckRow
{
    QString kind;
    QVariant key;
    QByteArray content = {}; ///< Compact JSON.
};

/// What is stored of one check, at first nothing. Keeps a copy of every object, because comparing is much cheaper than
/// writing.
class POSHOST_EXPORT CheckRows
{
public:
    struct Changes
    {
        QList<CheckRow> removed; ///< Without content.
        QList<CheckRow> written;
    };

    /// Returns the rows to remove and then to write so that the database matches `check`, and remembers `check` as
    /// stored. Throws BasicException when plugin data has a value that serder::toJson() cannot convert. After that, or
    /// when the rows cannot be stored, discard the object.
    Changes update(const SaleDocument &check);

    /// Makes a check of rows that are sorted by kind and key; they count as stored. Plugin data comes back as plain
    /// values. Throws BasicException that names row and field when something is missing, of a wrong type, outside its
    /// limits or at odds with the rest.
    QSharedPointer<SaleDocument> read(const QList<CheckRow> &rows);

private:
    template <class T>
    struct Kept
    {
        QSharedPointer<T> object;
        QSharedPointer<T> copy;
        qint64 key;
    };
    template <class T>
    using KeptList = QList<Kept<T>>;
    struct KeptValue
    {
        QVariant value;
        QByteArray content;
    };
    using KeptValues = QHash<QString, KeptValue>;

    template <class T>
    void updateList(const QString &kind, KeptList<T> &kept, const QList<QSharedPointer<T>> &objects, Changes &changes);
    void updateData(const SaleDocument &check, Changes &changes);
    qint64 keyOf(const GoodsItem &item) { return item.getPosnum(); }
    qint64 keyOf(const DocumentCardRecord &card) { return card.getCodeInternal(); }
    qint64 keyOf(const DocumentImpact &) { return ++m_lastImpact; }
    void readRow(const CheckRow &row, SaleDocument &check);

    using Fields = decltype(storedrow::values(std::declval<const SaleDocument &>()));
    std::optional<Fields> m_fields; ///< The check's own; empty until they are stored.
    KeptList<GoodsItem> m_goods;
    KeptList<DocumentCardRecord> m_cards;
    KeptList<DocumentImpact> m_impacts;
    std::map<QString, KeptValues> m_data; ///< By store key and key.
    qint64 m_lastImpact = 0;
};
