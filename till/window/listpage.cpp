// Tables and texts over the sale.
#include "listpage.h"

#include "keys.h"

#include <QtGui/QClipboard>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTableWidget>

using namespace Qt::Literals::StringLiterals;

namespace till {

ListPage::ListPage(QWidget *parent) : QWidget(parent)
{
    setObjectName(u"page"_s);
    auto *layout = new QVBoxLayout(this);
    auto *top = new QHBoxLayout;
    m_title = new QLabel;
    m_title->setProperty("role", u"title"_s);
    m_search = new QLineEdit;
    m_search->setPlaceholderText(tr("Поиск"));
    m_search->setAccessibleName(tr("Поиск"));
    m_search->setMaximumWidth(360);
    top->addWidget(m_title, 1);
    top->addWidget(m_search, 1);
    layout->addLayout(top);
    m_table = new QTableWidget;
    m_table->setSelectionBehavior(QTableView::SelectRows);
    m_table->setSelectionMode(QTableView::SingleSelection);
    m_table->setEditTriggers(QTableView::NoEditTriggers);
    m_table->setTabKeyNavigation(false);
    m_table->setShowGrid(false);
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // The last column is cut instead.
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(40);
    layout->addWidget(m_table, 1);
    m_text = new QPlainTextEdit;
    m_text->setReadOnly(true);
    m_text->setTabChangesFocus(true);
    layout->addWidget(m_text, 1);
    m_summary = new QLabel;
    m_summary->setProperty("role", u"figure"_s);
    layout->addWidget(m_summary);
    m_buttonRow = new QHBoxLayout;
    layout->addLayout(m_buttonRow);
    connect(m_search, &QLineEdit::textChanged, this, &ListPage::filter);
    connect(m_table, &QTableWidget::itemSelectionChanged, this, &ListPage::updateActions);
    connect(m_table, &QTableWidget::itemDoubleClicked, this, [this] { m_buttons.constFirst()->click(); });
}

void ListPage::showListing(const QString &title, const Listing &listing, const QList<Action> &actions)
{
    m_table->clear();
    m_table->setColumnCount(static_cast<int>(listing.header.size()));
    m_table->setRowCount(static_cast<int>(listing.rows.size()));
    m_table->setHorizontalHeaderLabels(listing.header);
    for (int row = 0; row < listing.rows.size(); ++row) {
        for (int column = 0; column < listing.rows.at(row).cells.size(); ++column) {
            auto *cell = new QTableWidgetItem(listing.rows.at(row).cells.at(column));
            cell->setData(Qt::UserRole, listing.rows.at(row).id);
            cell->setToolTip(cell->text());
            m_table->setItem(row, column, cell);
        }
    }
    m_table->resizeColumnsToContents();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_summary->setText(listing.summary);
    m_search->clear();
    m_table->setVisible(true);
    m_text->setVisible(false);
    m_search->setVisible(true);
    setActions(title, actions);
    m_table->selectRow(0);
    updateActions();
    m_table->setFocus();
}

void ListPage::showText(const QString &title, const QString &text, const QList<Action> &actions)
{
    m_text->setPlainText(text);
    m_summary->clear();
    m_table->setVisible(false);
    m_text->setVisible(true);
    m_search->setVisible(false);
    setActions(title, actions);
    m_buttons.constFirst()->setFocus();
}

void ListPage::setActions(const QString &title, const QList<Action> &actions)
{
    m_title->setText(title);
    for (QPushButton *button : std::as_const(m_buttons)) {
        button->hide();
        button->deleteLater(); // One of them may have brought us here.
    }
    m_buttons.clear();
    m_actions = actions;
    m_actions.append({tr("Назад  Esc"), {}, [this](const QString &) { Q_EMIT left(); }, false});
    for (const Action &action : std::as_const(m_actions)) {
        auto *button = new QPushButton(action.text);
        if (!action.key.isEmpty())
            addKey(button, action.key);
        button->setMinimumHeight(56);
        button->setAutoDefault(true);
        connect(button, &QPushButton::clicked, this, [this, run = action.run] { run(selectedId()); });
        m_buttonRow->addWidget(button, 1);
        m_buttons.append(button);
    }
    m_buttons.constFirst()->setProperty("role", u"main"_s);
    updateActions();
}

void ListPage::updateActions()
{
    for (qsizetype index = 0; index < m_buttons.size(); ++index)
        m_buttons.at(index)->setEnabled(!m_actions.at(index).needsRow || !selectedId().isEmpty());
}

QString ListPage::selectedId() const
{
    const QList<QTableWidgetItem *> selected = m_table->selectedItems();
    return m_table->isVisibleTo(this) && !selected.isEmpty() ? selected.constFirst()->data(Qt::UserRole).toString()
                                                             : QString();
}

QString ListPage::text() const
{
    return m_text->toPlainText();
}

void ListPage::copyText()
{
    QApplication::clipboard()->setText(text());
}

void ListPage::filter(const QString &words)
{
    m_table->clearSelection();
    for (int row = 0; row < m_table->rowCount(); ++row) {
        QString content;
        for (int column = 0; column < m_table->columnCount(); ++column)
            content += m_table->item(row, column)->text() + u' ';
        const bool isHit = content.contains(words.trimmed(), Qt::CaseInsensitive);
        m_table->setRowHidden(row, !isHit);
        if (isHit && m_table->selectedItems().isEmpty())
            m_table->selectRow(row);
    }
}

void ListPage::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape)
        Q_EMIT left();
    else if (isEnter && !m_buttons.isEmpty())
        m_buttons.constFirst()->click();
    else
        QWidget::keyPressEvent(event);
}

} // namespace till
