// A page over the sale: a table to choose from, or a text to read.
#pragma once

#include "tillview.h"

#include <QtWidgets/QWidget>

class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;

namespace till {

class ListPage : public QWidget
{
    Q_OBJECT

public:
    explicit ListPage(QWidget *parent = nullptr);

    /// One button; the first of a page is also done by Enter. `id` is that of the selected row, empty on a text.
    struct Action
    {
        QString text;
        QKeySequence key;
        std::function<void(const QString &id)> run;
        bool needsRow = true;
    };

    void showListing(const QString &title, const Listing &listing, const QList<Action> &actions);
    void showText(const QString &title, const QString &text, const QList<Action> &actions);

    QString text() const;
    void copyText();

Q_SIGNALS:
    /// The page is left with Esc or its button.
    void left();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void setActions(const QString &title, const QList<Action> &actions);
    void filter(const QString &words);
    QString selectedId() const;
    void updateActions();

    QLabel *m_title;
    QLabel *m_summary;
    QLineEdit *m_search;
    QTableWidget *m_table;
    QPlainTextEdit *m_text;
    QHBoxLayout *m_buttonRow;
    QList<QPushButton *> m_buttons;
    QList<Action> m_actions;
};

} // namespace till
