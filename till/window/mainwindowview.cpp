// What the window shows of the till, and what it sends.
#include "customerpanel.h"
#include "linesmodel.h"
#include "listpage.h"
#include "mainwindow.h"
#include "questionpanel.h"
#include "texts.h"
#include "theme.h"

#include <QtGui/QCloseEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QStyle>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolButton>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

/// Waiting that is over before the eye sees it is not shown.
constexpr qint64 unnoticed = 300; // milliseconds

void setTone(QWidget *widget, const QString &tone)
{
    if (widget->property("tone").toString() == tone)
        return;
    widget->setProperty("tone", tone);
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
}

} // namespace

void MainWindow::useTheme(bool isDark)
{
    m_isDark = isDark;
    const Theme theme = isDark ? Theme::dark() : Theme::light();
    theme.apply(*static_cast<QApplication *>(QApplication::instance()));
    for (const Action &action : std::as_const(m_actions)) {
        const bool isMain = action.kind == Command::Kind::Close;
        action.button->setIcon(theme.icon(action.icon, isMain ? theme.onAccent : theme.accent));
    }
}

void MainWindow::apply()
{
    const TillView &view = m_till.view();
    if (view.isDark != m_isDark)
        useTheme(view.isDark);
    if (!view.fault.isEmpty()) {
        m_list->showText(tr("Касса не может работать"), view.fault, {});
        showPage();
        return;
    }
    showCheck(view);
    showStatus(view);
    const std::optional<Question> &question = m_confirmation ? m_confirmation : view.question;
    const bool isSale = m_pages->currentWidget() == m_sale;
    if (question)
        m_questions->show(*question);
    else
        m_questions->hide();
    m_actionArea->setVisible(!question && isSale);
    for (const Action &action : std::as_const(m_actions)) {
        const bool takes = action.kind == Command::Kind::Park && !view.isOpen;
        const Command::Kind kind = takes ? Command::Kind::ShowParked : action.kind;
        action.button->setText(
            u"%1  F%2"_s.arg(takes ? tr("Вернуть чек") : action.text, QString::number(action.key - Qt::Key_F1 + 1)));
        action.button->setEnabled(!m_till.isBusy() && view.allows(kind));
    }
    if (!m_till.isBusy() && m_shown != view.commandsDone) {
        m_shown = view.commandsDone;
        showResult(view);
    }
    showMessage();
    sendPending();
}

void MainWindow::showCheck(const TillView &view)
{
    m_customer->show(view.check);
    m_total->setText(moneyText(view.check.total()));
    m_sum->setText(
        view.check.spent().isZero()
            ? tr("К оплате")
            : tr("Сумма %1\nБаллами −%2\nК оплате").arg(moneyText(view.check.sum()), moneyText(view.check.spent())));
    if (!m_lines->setLines(view.check.lines))
        return;
    const int row = m_table->currentIndex().row();
    m_table->selectRow(row >= 0 ? row : m_lines->rowCount() - 1);
}

void MainWindow::showResult(const TillView &view)
{
    if (!view.receipt.isEmpty())
        showReceipt(view.receipt);
    else if (view.listing.kind != Listing::Kind::None)
        showListing(view.listing);
    else
        showSale();
}

void MainWindow::showStatus(const TillView &view)
{
    const QString since = view.serviceSince.toString(u"HH:mm:ss"_s);
    if (!view.serviceSince.isValid())
        m_link->setText(tr("Служба лояльности: обмена ещё не было"));
    else
        m_link->setText(view.isServiceReachable ? tr("Служба лояльности на связи")
                                                : tr("Нет связи со службой лояльности с %1").arg(since));
    setTone(m_link, view.isServiceReachable ? u"good"_s : u"warning"_s);
    m_queue->setText(tr("Запросы: ждут %1, отклонено %2  Ctrl+L")
                         .arg(QString::number(view.queue.waiting), QString::number(view.queue.deadLetters)));
    m_queue->setEnabled(!m_till.isBusy() && view.allows(Command::Kind::ShowQueue));
    setTone(m_queue, view.queue.deadLetters > 0 ? u"warning"_s : QString());
}

void MainWindow::showMessage()
{
    const TillView &view = m_till.view();
    const qint64 waited = view.waitingSince.msecsTo(QDateTime::currentDateTime());
    const bool isWaiting = m_till.isBusy() && !view.question && !view.waitingFor.isEmpty() && waited > unnoticed;
    QString text = view.message;
    if (isWaiting)
        text = tr("%1: ждём ответа %2 с, с %3")
                   .arg(view.waitingFor, QString::number(waited / 1000), view.waitingSince.toString(u"HH:mm:ss"_s));
    if (!m_pending.isEmpty())
        text += u"\n"_s + tr("Введено и будет добавлено: %1").arg(m_pending.join(u", "_s));
    m_message->setText(text);
    setTone(m_message, isWaiting ? u"wait"_s : view.isWarning && !text.isEmpty() ? u"warning"_s : QString());
}

void MainWindow::setMode(Mode mode)
{
    m_mode = mode;
    const QString prompts[]{tr("Товар"), tr("Номер карты"), tr("Телефон"), tr("Строка %1").arg(selectedLine())};
    const QString hints[]{tr("Штрихкод, 3*штрихкод или название"), tr("Проведите карту или введите номер"),
                          tr("Например, +79001234567"), tr("Количество, или =цена")};
    const auto index = static_cast<std::size_t>(mode);
    m_prompt->setText(prompts[index]);
    m_entry->setPlaceholderText(hints[index]);
    m_entry->setAccessibleName(prompts[index]);
}

void MainWindow::enter(Mode mode)
{
    setMode(mode);
    m_entry->setFocus();
    // What was typed before the key is the number.
    if (mode != Mode::Change && !m_entry->text().trimmed().isEmpty())
        submit();
    else
        m_entry->clear();
}

void MainWindow::submit()
{
    using Kind = Command::Kind;
    const QString text = m_entry->text().trimmed();
    if (text.isEmpty())
        return;
    if (m_mode == Mode::Goods) {
        m_pending.append(text);
        m_entry->clear();
        return sendPending();
    }
    const Kind kind = m_mode == Mode::Card ? Kind::Card : m_mode == Mode::Phone ? Kind::Phone : Kind::Change;
    if (m_till.isBusy() || !m_till.view().allows(kind))
        return;
    m_entry->clear();
    m_till.send({.kind = kind, .text = text, .line = selectedLine()});
}

void MainWindow::sendPending()
{
    if (m_pending.isEmpty() || m_till.isBusy() || !m_till.view().allows(Command::Kind::Add) || m_confirmation ||
        m_pages->currentWidget() != m_sale)
        return;
    m_table->setCurrentIndex({});
    m_till.send({.kind = Command::Kind::Add, .text = m_pending.takeFirst()});
}

void MainWindow::parkOrTake()
{
    m_till.send({.kind = m_till.view().isOpen ? Command::Kind::Park : Command::Kind::ShowParked});
}

int MainWindow::selectedLine() const
{
    const int row = m_table->currentIndex().row();
    return m_lines->lineAt(row >= 0 ? row : m_lines->rowCount() - 1);
}

void MainWindow::confirm(const QString &question, const QString &yes, const Command &command)
{
    m_confirmed = command;
    m_confirmation.emplace();
    m_confirmation->text = question;
    m_confirmation->first = yes;
    m_confirmation->second = tr("Нет");
    apply();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // Until then the check thread could not end, and the window would stand still.
    if (!m_till.isBusy() || m_till.view().question || !m_till.view().fault.isEmpty())
        return QMainWindow::closeEvent(event);
    event->ignore();
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    const int step = event->key() == Qt::Key_Up ? -1 : event->key() == Qt::Key_Down ? 1 : 0;
    if (step != 0 && m_lines->rowCount() > 0)
        m_table->selectRow(qBound(0, m_table->currentIndex().row() + step, m_lines->rowCount() - 1));
    else if (event->key() == Qt::Key_Escape)
        showSale();
    else
        QMainWindow::keyPressEvent(event);
}

} // namespace till
