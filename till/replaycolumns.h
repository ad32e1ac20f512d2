// Which column holds which value.
#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace till {

/// The columns invoice, article, description, quantity, time, price and customer.
class ReplayColumns
{
public:
    ReplayColumns() = default;

    /// Finds them by the names in the file's first line, or by those that `names` gives for them. Throws BasicException
    /// that names what is missing; description, time and customer may be.
    ReplayColumns(const QStringList &headers, const QHash<QString, QString> &names);

    bool has(const QString &column) const { return m_fields.value(column) >= 0; }

    /// The field of a line with as many fields as the first one, without superfluous blanks; empty for a column that
    /// the file does not have.
    QString field(const QStringList &fields, const QString &column) const;

private:
    QHash<QString, qsizetype> m_fields; ///< By column; -1: the file does not have it.
};

} // namespace till
