// Tables and texts over the sale.
#include "listpage.h"

#include <QtGui/QKeyEvent>

using namespace Qt::Literals::StringLiterals;

namespace till {

static const QStringList keys{u"Enter"_s, u"F5"_s, u"F6"_s};

ListPage::ListPage()
{
    m_search->setPlaceholderText(tr("Поиск"));
    m_search->setAccessibleName(tr("Поиск"));
    m_text->setReadOnly(true);
    for (qsizetype index = 0; index < keys.size(); ++index) {
        QPushButton *button = makeButton();
        if (index > 0)
            addKey(button, keys.at(index));
        connect(button, &QPushButton::clicked, this, [this, index] { m_actions.at(index).run(subject()); });
        m_buttons.append(button);
    }
    m_buttons.constFirst()->setProperty("role", u"main"_s);
    QList<QWidget *> buttons(m_buttons.cbegin(), m_buttons.cend());
    buttons.append(m_back);
    QWidget *top = arrange(Qt::Horizontal, {m_title, m_search}, {m_title, m_search});
    QWidget *bottom = arrange(Qt::Horizontal, buttons, buttons);
    arrange(Qt::Vertical, {top, m_table, m_text, m_summary, bottom}, {m_table, m_text}, this);
    m_table->hide(); // The window keeps room for a page that is not shown yet, and it never has both.
    connect(m_search, &QLineEdit::textChanged, m_table, &ListTable::filter);
    connect(m_table, &ListTable::itemSelectionChanged, this, &ListPage::updateButtons);
    connect(m_table, &ListTable::itemDoubleClicked, m_buttons.constFirst(), &QPushButton::click);
    connect(m_back, &QPushButton::clicked, this, &ListPage::left);
}

void ListPage::show(const Page &page, const QList<Action> &actions)
{
    const bool isTable = !page.header.isEmpty();
    m_title->setText(page.title);
    m_search->clear();
    m_search->setVisible(isTable);
    if (isTable)
        m_table->show(page, 0);
    m_table->setVisible(isTable);
    m_text->setPlainText(page.text);
    m_text->setVisible(!isTable);
    m_summary->setText(page.text);
    m_summary->setVisible(isTable);
    m_back->setText(page.kind == Page::Kind::Fault ? tr("Закрыть кассу  Esc") : tr("Назад  Esc"));
    m_actions = actions;
    for (qsizetype index = 0; index < m_buttons.size(); ++index) {
        m_buttons.at(index)->setVisible(index < actions.size());
        m_buttons.at(index)->setText(actions.value(index).text + u"  "_s + keys.at(index));
    }
    updateButtons();
    setFocusProxy(isTable ? static_cast<QWidget *>(m_table) : m_text);
    setFocus();
}

void ListPage::updateButtons()
{
    for (QPushButton *button : std::as_const(m_buttons))
        button->setEnabled(!subject().isEmpty());
}

QString ListPage::subject() const
{
    return m_table->isVisibleTo(this) ? m_table->selectedId() : m_text->toPlainText();
}

void ListPage::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        (m_actions.isEmpty() ? m_back : m_buttons.constFirst())->click();
    else
        QWidget::keyPressEvent(event);
}

} // namespace till
