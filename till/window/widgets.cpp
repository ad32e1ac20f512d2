// Makes the window's labels, buttons and tables.
#include "widgets.h"

#include <core/plaintext.h>

#include <QtCore/QRegularExpression>
#include <QtGui/QKeyEvent>
#include <QtGui/QShortcut>
#include <QtGui/QTextDocument>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyle>

using namespace Qt::Literals::StringLiterals;

namespace till {

QWidget *arrange(Qt::Orientation orientation, const QList<QWidget *> &widgets, const QList<QWidget *> &wide,
                 QWidget *box)
{
    auto *layout = new QBoxLayout(orientation == Qt::Horizontal ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    if (!box) {
        box = new QWidget;
        layout->setContentsMargins({});
    }
    for (QWidget *widget : widgets)
        layout->addWidget(widget, int(wide.contains(widget)));
    box->setLayout(layout);
    return box;
}

QLabel *makeLabel(const QString &role, const QString &text)
{
    auto *label = new QLabel(text);
    label->setProperty("role", role);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QString fitting(const QString &text, qsizetype longest)
{
    // Nine letters, with more to come, of a word that has twenty.
    static const QRegularExpression longWord(u"((?:\\G(?!^)|(?<!\\S)(?=\\S{20}))\\S{9})(?=\\S)"_s);
    QStringList lines = text.split(u'\n').mid(0, 4);
    for (QString &line : lines)
        line = plainText(line, longest).replace(longWord, u"\\1\u200B"_s);
    return lines.join(u'\n');
}

QString tip(const QString &text)
{
    return text.isEmpty() ? QString() : Qt::convertFromPlainText(fitting(text));
}

QPushButton *makeButton(const QString &text)
{
    auto *button = new QPushButton(text);
    button->setAutoDefault(true);
    return button;
}

void addKey(QAbstractButton *button, const QKeySequence &key)
{
    auto *shortcut = new QShortcut(key, button, [button] { button->click(); });
    shortcut->setAutoRepeat(false); // The next question may have a button with this key, too.
}

void setTone(QWidget *widget, const QString &tone)
{
    if (widget->property("tone").toString() == tone)
        return;
    widget->setProperty("tone", tone);
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
}

ListTable::ListTable()
{
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    // Only now does it know how far it can scroll: rows were added, or there is less room for them.
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] { scrollTo(currentIndex()); });
}

void ListTable::show(const Page &page, qsizetype otherwise)
{
    if (page.rows == m_rows && columnCount() == page.header.size())
        return;
    const QString selected = selectedId();
    setRowCount(0);
    m_rows = page.rows;
    setColumnCount(static_cast<int>(page.header.size()));
    setRowCount(static_cast<int>(m_rows.size()));
    setHorizontalHeaderLabels(page.header);
    for (int column = 0; column < columnCount(); ++column) {
        const auto side = page.numbers.contains(column) ? Qt::AlignRight : Qt::AlignLeft;
        horizontalHeaderItem(column)->setTextAlignment(side | Qt::AlignVCenter);
        for (int row = 0; row < rowCount(); ++row) {
            auto *cell = new QTableWidgetItem(m_rows.at(row).cells.at(column));
            cell->setTextAlignment(side | Qt::AlignVCenter);
            cell->setToolTip(tip(cell->text()));
            setItem(row, column, cell);
        }
    }
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(page.wide, QHeaderView::Stretch);
    const auto same = std::find_if(m_rows.cbegin(), m_rows.cend(), [&](const auto &row) { return row.id == selected; });
    selectRow(static_cast<int>(same == m_rows.cend() ? otherwise : same - m_rows.cbegin()));
}

QString ListTable::selectedId() const
{
    const QModelIndexList selected = selectionModel()->selectedRows();
    return selected.isEmpty() ? QString() : m_rows.at(selected.constFirst().row()).id;
}

void ListTable::step(int by)
{
    int row = currentRow() + by;
    while (isRowHidden(row)) // No row beyond the first and last one is hidden, and none can be selected there.
        row += by;
    selectRow(row);
}

void ListTable::filter(const QString &words)
{
    clearSelection();
    for (int row = 0; row < rowCount(); ++row) {
        const bool isHit = m_rows.at(row).cells.join(u' ').contains(words.trimmed(), Qt::CaseInsensitive);
        setRowHidden(row, !isHit);
        if (isHit && selectedItems().isEmpty())
            selectRow(row);
    }
}

void ListTable::keyPressEvent(QKeyEvent *event)
{
    if (event->text().isEmpty() || event->matches(QKeySequence::Copy))
        return QTableWidget::keyPressEvent(event);
    event->ignore();
}

} // namespace till
