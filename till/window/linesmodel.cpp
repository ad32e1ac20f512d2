// Shows the check's lines.
#include "linesmodel.h"

#include "texts.h"

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

QString markText(const ResultLine &line)
{
    if (line.takesPoints)
        return line.earnsPoints ? QString() : LinesModel::tr("не начислить");
    return line.earnsPoints ? LinesModel::tr("не списать") : LinesModel::tr("без баллов");
}

QString cellText(const ResultLine &line, int column)
{
    switch (column) {
    case LinesModel::Number:
        return QString::number(line.lineId);
    case LinesModel::Name:
        return line.name;
    case LinesModel::Quantity:
        return quantityText(line.quantity);
    case LinesModel::Price:
        return moneyText(line.price);
    case LinesModel::Mark:
        return markText(line);
    case LinesModel::Points:
        return line.spent.isZero() ? QString() : moneyText(-line.spent);
    default:
        return moneyText(line.amount - line.spent);
    }
}

QVariant alignmentOf(int column)
{
    const bool isText = column == LinesModel::Name || column == LinesModel::Mark;
    return QVariant::fromValue(Qt::Alignment(isText ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
}

} // namespace

bool LinesModel::setLines(const QList<ResultLine> &lines)
{
    if (lines == m_lines)
        return false;
    beginResetModel();
    m_lines = lines;
    endResetModel();
    return true;
}

int LinesModel::lineAt(int row) const
{
    return row >= 0 && row < m_lines.size() ? m_lines.at(row).lineId : 0;
}

int LinesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

int LinesModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LinesModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return cellText(m_lines.at(index.row()), index.column());
    return role == Qt::TextAlignmentRole ? alignmentOf(index.column()) : QVariant();
}

QVariant LinesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return alignmentOf(section);
    if (role != Qt::DisplayRole)
        return {};
    const QString titles[ColumnCount]{tr("№"),       tr("Товар"), tr("Кол-во"), tr("Цена"),
                                      tr("Отметка"), tr("Баллы"), tr("Сумма")};
    return titles[section];
}

} // namespace till
