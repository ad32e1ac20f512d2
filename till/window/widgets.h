// The widgets that all parts of the window are made of.
#pragma once

#include "tillview.h"

#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTableWidget>

namespace till {

/// Puts widgets side by side or one below the other, into `box` or a new one; those in `wide` take the room that is
/// left.
QWidget *arrange(Qt::Orientation orientation, const QList<QWidget *> &widgets, const QList<QWidget *> &wide,
                 QWidget *box = nullptr);

/// A label for plain text. `role` is one of the style sheet's.
QLabel *makeLabel(const QString &role = {}, const QString &text = {});

/// A text that came from outside, fit for a label: plain, with `longest` characters of a line at most and few lines,
/// and with break opportunities inside long words.
QString fitting(const QString &text, qsizetype longest = 200);

/// A text that came from outside as a tool tip, where it would be taken for HTML.
QString tip(const QString &text);

/// A large button.
QPushButton *makeButton(const QString &text = {});

/// Gives a button a key while it is visible and enabled. Unlike QAbstractButton's own shortcut it acts at
/// once, and survives a new text.
void addKey(QAbstractButton *button, const QKeySequence &key);

/// Shows the widget in another tone of the style sheet.
void setTone(QWidget *widget, const QString &tone);

/// A table of texts in which one row is selected.
class ListTable : public QTableWidget
{
public:
    ListTable();

    /// The row with the selected id stays selected; where it is gone, row `otherwise` is. The same rows again change
    /// nothing.
    void show(const Page &page, qsizetype otherwise);

    /// Of the selected row; empty when there is none.
    QString selectedId() const;

    /// Selects the next row up or down that is not hidden.
    void step(int by);

    /// Hides the rows in which `words` do not occur, and selects the first of the others.
    void filter(const QString &words);

private:
    /// Leaves what is typed to the window instead of looking for a row that begins with it.
    void keyPressEvent(QKeyEvent *event) override;

    QList<Page::Row> m_rows;
};

} // namespace till
