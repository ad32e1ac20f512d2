// A page over the sale: a table to choose from, or a text to read.
#pragma once

#include "widgets.h"

#include <QtWidgets/QPlainTextEdit>

#include <functional>

namespace till {

class ListPage : public QWidget
{
    Q_OBJECT

public:
    ListPage();

    /// A button; `subject` is the selected row's id, or the text.
    struct Action
    {
        QString text;
        std::function<void(const QString &subject)> run;
    };

    /// With a button for each action, by the keys Enter, F5 and F6, and one to leave.
    void show(const Page &page, const QList<Action> &actions);

    /// Where the arrow keys move.
    ListTable *table() { return m_table; }

Q_SIGNALS:
    /// By its button.
    void left();

private:
    void keyPressEvent(QKeyEvent *event) override;
    QString subject() const;
    void updateButtons();

    QLabel *m_title = makeLabel(QStringLiteral("title"));
    QLineEdit *m_search = new QLineEdit;
    ListTable *m_table = new ListTable;
    QPlainTextEdit *m_text = new QPlainTextEdit;
    QLabel *m_summary = makeLabel(QStringLiteral("figure"));
    QPushButton *m_back = makeButton();
    QList<QPushButton *> m_buttons;
    QList<Action> m_actions;
};

} // namespace till
