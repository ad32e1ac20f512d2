// The real window, driven with keys only: a person at the keyboard, in the same process. Every wait has a condition and
// a bound, and lets the window live meanwhile.
#pragma once

#include "till/window/mainwindow.h"
#include "till/window/theme.h"

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
        ready = settles(u"start"_s);
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

    /// Waits until the till is idle or asks or cannot work, and tells what `step` has changed.
    bool settles(const QString &step)
    {
        QCoreApplication::processEvents();
        const bool isSettled = waitFor([this] { return till.isIdle() || isAsked() || !till.view().fault.isEmpty(); });
        QStringList gone = std::exchange(m_parts, parts());
        QStringList added = m_parts;
        for (const QString &part : std::as_const(m_parts))
            if (gone.removeOne(part))
                added.removeOne(part);
        m_story += step + u'\n';
        if (!gone.isEmpty())
            m_story += u" - "_s + gone.join(u" · "_s) + u'\n';
        if (!added.isEmpty())
            m_story += u" + "_s + added.join(u" · "_s) + u'\n';
        return isSettled;
    }

    /// Each step, and what it has changed of what can be seen. In "()" stands what cannot be used.
    QString story() const { return m_story; }

    /// Pressing, or typing, and waiting.
    bool press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        return hit(key, modifiers), settles(QKeySequence(modifiers | key).toString());
    }
    bool press(const QList<Qt::Key> &keys)
    {
        return std::ranges::all_of(keys, [this](auto key) { return press(key); });
    }
    bool type(const QString &text) { return scan(text), settles(u'"' + text + u'"'); }

    /// The text of a page over the sale; empty when there is none.
    QString page() const
    {
        const auto *text = window.findChild<QPlainTextEdit *>();
        return text->isVisible() ? text->toPlainText() : QString();
    }

    /// The rows that can be seen of the check, or of the table over it; "*" marks the one that is selected.
    QStringList rows() const
    {
        QStringList rows;
        const auto *table = shownTable();
        for (int row = 0; table->isVisible() && row < table->rowCount(); ++row) {
            QString text;
            for (int column = 0; column < table->columnCount(); ++column)
                text += table->item(row, column)->text() + u'|';
            if (!table->isRowHidden(row))
                rows.append(text + (table->item(row, 0)->isSelected() ? u"*"_s : QString()));
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

    const QTableWidget *shownTable() const
    {
        return window.findChild<QStackedWidget *>()->currentWidget()->findChild<QTableWidget *>();
    }

    /// All that can be seen, with ">" where the focus is, "→" for what stands at the right, what the styles go by, and
    /// the colours of icons; "@" for times, identifiers, and how far the drain has come.
    QStringList parts() const
    {
        static const QRegularExpression changing(
            uR"((\d\d\.\d\d(\.\d{4})? )?\d+:\d\d(:\d\d)?|[0-9a-f]{8}-[0-9a-f-]{27}|ждут \d+|\S*/window_test-\S*)"_s);
        const auto side = [](int alignment) { return alignment & Qt::AlignRight ? u"→"_s : QString(); };
        const till::Theme theme{till.view().isDark};
        QStringList parts;
        for (const auto *part : window.findChildren<QWidget *>()) {
            QString text = part->property("text").toString().remove(QChar(0x200B)).replace(u'\n', u'/');
            text = text.isEmpty() ? part->accessibleName() : text;
            text = part->isEnabled() || text.isEmpty() ? text : u'(' + text + u')';
            for (const char *property : {"placeholderText", "toolTip", "role", "tone"})
                text += u' ' + part->property(property).toString();
            const QIcon::Mode mode = part->isEnabled() ? QIcon::Normal : QIcon::Disabled;
            const QPixmap icon = part->property("icon").value<QIcon>().pixmap(96, mode);
            for (const auto &name : {u"accent"_s, u"onAccent"_s, u"muted"_s})
                if (!QRegion(icon.createMaskFromColor(theme.colour(name), Qt::MaskOutColor)).isEmpty())
                    text += u' ' + name;
            if (part->isVisible() && !text.trimmed().isEmpty())
                parts.append((part->hasFocus() ? u"> "_s : QString()) + text +
                             side(part->property("alignment").toInt()));
        }
        const auto *table = shownTable();
        QString header;
        for (int column = 0; table->isVisible() && column < table->columnCount(); ++column) {
            const auto *title = table->horizontalHeaderItem(column);
            header += title->text() + side(title->textAlignment()) + u'|';
        }
        if (!header.isEmpty())
            parts.append(header);
        parts += rows();
        if (!page().isEmpty())
            parts.append(page().section(u"\n---"_s, 0, 2)); // The rest depends on the drain.
        for (QString &part : parts)
            part = part.replace(changing, u"@"_s).simplified();
        return parts;
    }

    QStringList m_parts;
    QString m_story;
};
