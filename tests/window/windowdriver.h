// The real window, driven with keys only: a person at the keyboard, in the same process. Every wait has a condition and
// a bound, and lets the window live meanwhile.
#pragma once

#include "till/window/mainwindow.h"

#include <QtTest/QTest>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTableView>

using namespace Qt::Literals::StringLiterals;

class WindowDriver
{
public:
    explicit WindowDriver(const QString &configFile) : window(till)
    {
        window.show();
        window.activateWindow(); // keys of buttons belong to the active window
        till.start(configFile);
        ready = waitFor([this] { return till.isIdle() || !till.view().fault.isEmpty(); });
    }

    static bool waitFor(const std::function<bool()> &condition) { return QTest::qWaitFor(condition, 30'000); }

    bool isAsked() const { return till.view().question.has_value(); }

    /// Presses a key where the focus is.
    void hit(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(focus(), key, modifiers); }

    /// Types a text and Enter, so quickly that the till has done nothing of what was sent before.
    void scan(const QString &text)
    {
        for (const QChar letter : text) // QTest::keyClicks() knows no Cyrillic letters
            QTest::sendKeyEvent(QTest::Click, focus(), Qt::Key_unknown, QString(letter), Qt::NoModifier);
        hit(Qt::Key_Return);
    }

    /// Waits until the till is idle or asks.
    bool settles()
    {
        QCoreApplication::processEvents();
        return waitFor([this] { return till.isIdle() || isAsked(); });
    }

    /// Pressing, or typing, and waiting.
    bool press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { return hit(key, modifiers), settles(); }
    bool press(const QList<Qt::Key> &keys)
    {
        return std::ranges::all_of(keys, [this](auto key) { return press(key); });
    }
    bool type(const QString &text) { return scan(text), settles(); }

    /// The text of a page over the sale; empty when there is none.
    QString page() const
    {
        const auto *text = window.findChild<QPlainTextEdit *>();
        return text->isVisible() ? text->toPlainText() : QString();
    }

    /// The rows that can be seen of the check, or of the table over it.
    QStringList rows() const
    {
        QStringList rows;
        const auto *table = window.findChild<QStackedWidget *>()->currentWidget()->findChild<QTableWidget *>();
        for (int row = 0; table->isVisible() && row < table->rowCount(); ++row) {
            QString text;
            for (int column = 0; column < table->columnCount(); ++column)
                text += table->item(row, column)->text() + u'|';
            if (!table->isRowHidden(row))
                rows.append(text);
        }
        return rows;
    }

    /// All labels that can be seen, what is typed, and the buttons that can be used.
    QString shown() const
    {
        QString texts;
        for (const auto *part : window.findChildren<QWidget *>())
            texts += part->isVisible() && part->isEnabled() ? part->property("text").toString() + u' ' : QString();
        return texts.simplified();
    }

    till::CheckThread till;
    till::MainWindow window;
    bool ready = false;

private:
    QWidget *focus() { return window.focusWidget() ? window.focusWidget() : &window; }
};
