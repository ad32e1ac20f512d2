// The lines of the check as a table.
#pragma once

#include "till/checkresult.h"

#include <QtCore/QAbstractTableModel>

namespace till {

class LinesModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Number, Name, Quantity, Price, Mark, Points, Sum, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    /// False when they are shown already.
    bool setLines(const QList<ResultLine> &lines);
    /// The number on the check of the line in this row; 0 when there is none.
    int lineAt(int row) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QList<ResultLine> m_lines;
};

} // namespace till
