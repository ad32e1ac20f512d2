// What the window shows of the till, and what it does with what is typed.
#include "listings.h"
#include "mainwindow.h"
#include "theme.h"

#include <QtGui/QCloseEvent>
#include <QtWidgets/QStatusBar>

using namespace Qt::Literals::StringLiterals;

namespace till {

void MainWindow::useTheme(bool isDark)
{
    m_isDark = isDark;
    const Theme theme{isDark};
    theme.apply();
    for (const Action &action : std::as_const(m_actions)) {
        const bool isMain = &action == &m_actions.constLast();
        action.button->setIcon(theme.icon(action.icon, theme.colour(isMain ? u"onAccent" : u"accent")));
    }
}

void MainWindow::apply()
{
    const TillView &view = m_till.view();
    if (view.isDark != m_isDark)
        useTheme(view.isDark);
    statusBar()->setVisible(view.fault.isEmpty());
    if (!view.fault.isEmpty())
        return showPage({Page::Kind::Fault, tr("Касса не может работать"), view.fault});
    if (m_mode.work && !m_till.isIdle()) { // It gave way to a command: what is scanned meanwhile are goods.
        m_entry->clear();
        setMode(m_goodsMode);
    }
    showCheck(view);
    showStatus(view);
    updateAreas();
    if (m_till.isIdle() && m_shown != view.commandsDone) {
        m_shown = view.commandsDone;
        if (view.page)
            showPage(*view.page);
        else
            showSale();
        m_isHolding = view.isWarning && !m_pending.isEmpty();
    }
    showMessage();
    sendPending();
}

void MainWindow::showCheck(const TillView &view)
{
    constexpr qsizetype longestName = 40; // characters
    const CheckResult &check = view.check;
    m_total->setText(moneyText(check.total()));
    m_sum->setText(check.spent().isZero()
                       ? tr("К оплате")
                       : tr("Сумма %1\nБаллами −%2\nК оплате").arg(moneyText(check.sum()), moneyText(check.spent())));
    if (check.lines.size() > m_lines->rowCount())
        m_lines->clearSelection(); // The line that was added is selected instead.
    m_lines->show(linesPage(check.lines), check.lines.size() - 1);
    const bool isCode = view.question && view.question->entry == Question::Entry::Code;
    const QString name = check.customer.isEmpty() ? tr("Имя неизвестно") : fitting(check.customer, longestName);
    m_customer->setText(view.hasCard() ? name : tr("Покупатель не указан"));
    m_customer->setToolTip(tip(check.customer));
    m_card->setText(view.hasCard() ? fitting(check.tier, longestName) + u'\n' +
                                         tr("Карта %1").arg(fitting(check.card, longestName))
                                   : tr("F2 – карта, F3 – телефон"));
    const QList<std::optional<Money>> sums{check.balance, check.offered, check.spent(), check.earned,
                                           check.balanceAfter()};
    for (qsizetype index = 0; index < sums.size(); ++index) {
        const bool isCurrent = index == 0 || isCode || (index == 1 ? check.isOffered : check.isPriced);
        m_points.at(index)->setText(sums.at(index) && isCurrent ? moneyText(*sums.at(index)) : u"–"_s);
    }
}

void MainWindow::showStatus(const TillView &view)
{
    const QString lost = tr("Нет связи с сервисом лояльности с %1").arg(view.link.since.toString(u"HH:mm:ss"_s));
    const QString link = view.link.isReachable ? tr("Сервис лояльности на связи") : lost;
    m_link->setText(view.link.since.isValid() ? link : tr("Сервис лояльности: обмена ещё не было"));
    setTone(m_link, !view.link.since.isValid() ? QString() : view.link.isReachable ? u"good"_s : u"warning"_s);
    const auto queue = view.queue.value_or(QueueStatus());
    const QString counts = tr("Запросы: ждут %1, остановлено %2  Ctrl+L")
                               .arg(QString::number(queue.waiting), QString::number(queue.blocked));
    m_queue->setText(view.queue ? counts : tr("Очередь недоступна  Ctrl+L"));
    setTone(m_queue, view.queue && queue.blocked == 0 ? QString() : u"warning"_s);
}

void MainWindow::updateAreas()
{
    const TillView &view = m_till.view();
    const bool isSale = m_pages->currentWidget() == m_sale;
    // One takes the place of the other: with both the window would grow.
    if (!view.question)
        m_questions->hide();
    m_actionArea->setVisible(isSale && !view.question);
    if (view.question)
        m_questions->show(*view.question);
    m_list->setEnabled(!view.question);
    m_totals->setVisible(isSale);
    const bool isFree = m_till.isIdle() && m_pending.isEmpty();
    m_queue->setEnabled(isFree && !view.question);
    for (qsizetype index = 0; index < m_actions.size(); ++index) {
        const Action &action = m_actions.at(index);
        const QString text = action.icon == "park"_L1 && !view.isOpen     ? tr("Вернуть чек")
                             : action.icon == "card"_L1 && view.hasCard() ? tr("Убрать карту")
                                                                          : action.text;
        action.button->setText(u"%1\nF%2"_s.arg(text, QString::number(index + 1)));
        action.button->setEnabled(isFree && (!action.isAllowed || action.isAllowed(view)));
    }
}

void MainWindow::showMessage()
{
    /// Waiting that is over before the eye sees it is not shown.
    constexpr qint64 unnoticed = 300; // milliseconds
    const TillView &view = m_till.view();
    const qint64 waited = view.waitingSince.msecsTo(QDateTime::currentDateTime());
    const bool isWaiting = !m_till.isIdle() && !view.question && !view.waitingFor.isEmpty() && waited > unnoticed;
    QString text = fitting(view.message);
    if (isWaiting)
        text = tr("%1: ждём ответа %2 с, с %3")
                   .arg(view.waitingFor, QString::number(waited / 1000), view.waitingSince.toString(u"HH:mm:ss"_s));
    const QString pending = m_isHolding ? tr("Enter добавит, Esc сотрёт: %1") : tr("Введено и будет добавлено: %1");
    if (!m_pending.isEmpty())
        text += QString(text.isEmpty() ? 0 : 1, u'\n') + fitting(pending.arg(m_pending.join(u", "_s)));
    m_message->setText(text);
    setTone(m_message, isWaiting ? u"wait"_s : view.isWarning && !text.isEmpty() ? u"warning"_s : QString());
    m_questions->showTimeLeft();
}

void MainWindow::showPage(const Page &page)
{
    m_pages->setCurrentWidget(m_list);
    updateAreas();
    m_list->show(page, pageActions(page.kind));
}

void MainWindow::showSale()
{
    m_pages->setCurrentWidget(m_sale);
    m_isHolding = false;
    updateAreas();
    setMode(m_goodsMode);
}

void MainWindow::goBack()
{
    if (!m_till.view().fault.isEmpty())
        return void(close());
    if (const std::optional<Question> &question = m_till.view().question)
        return question->isRisky ? m_till.answer({question->number}) : m_questions->setFocus();
    if (m_isHolding)
        m_pending.clear();
    m_entry->clear();
    showSale();
    showMessage();
}

void MainWindow::setMode(const Mode &mode)
{
    m_mode = mode;
    m_prompt->setText(mode.prompt);
    m_entry->setPlaceholderText(mode.hint);
    m_entry->setAccessibleName(mode.prompt);
    m_entry->setFocus();
}

void MainWindow::enter(const Mode &mode)
{
    setMode(mode);
    submit(); // What was typed before the key is the number.
}

void MainWindow::submit()
{
    const QString text = m_entry->text().trimmed();
    if (m_mode.work && text.isEmpty())
        return;
    m_entry->clear();
    if (m_mode.work)
        m_till.send([work = m_mode.work, text](CheckDesk &desk) { work(desk, text); }, m_mode.waitingFor);
    else if (text.isEmpty())
        m_isHolding = false;
    else
        m_pending.append(text);
    sendPending();
    showMessage();
}

void MainWindow::sendPending()
{
    if (!m_pending.isEmpty() && m_till.isIdle() && !m_isHolding && m_pages->currentWidget() == m_sale)
        m_till.send([text = m_pending.takeFirst()](CheckDesk &desk) { desk.addGoods(text); });
}

int MainWindow::selectedLine() const
{
    const QList<ResultLine> &lines = m_till.view().check.lines;
    const QString id = m_lines->selectedId();
    return id.isEmpty() && !lines.isEmpty() ? lines.constLast().lineId : id.toInt();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // Until then the check thread could not end, and the window would stand still.
    event->setAccepted(m_till.isIdle() || m_till.view().question || !m_till.view().fault.isEmpty());
}

bool MainWindow::eventFilter(QObject *object, QEvent *event)
{
    const auto *key = event->type() == QEvent::KeyPress ? static_cast<QKeyEvent *>(event) : nullptr;
    // Held too long, these would answer the next question as well.
    static const QList<int> answers{Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape};
    return (key && key->isAutoRepeat() && answers.contains(key->key())) || QMainWindow::eventFilter(object, event);
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    const QChar typed = event->text().isEmpty() ? QChar() : event->text().front();
    const int step = event->key() == Qt::Key_Up ? -1 : event->key() == Qt::Key_Down ? 1 : 0;
    const bool isSale = m_pages->currentWidget() == m_sale;
    if (step != 0)
        return (isSale ? m_lines : m_list->table())->step(step);
    if (event->key() == Qt::Key_Escape)
        return goBack();
    if (!typed.isPrint() || typed.isSpace() || !m_till.view().fault.isEmpty())
        return QMainWindow::keyPressEvent(event);
    // No widget here takes text: a scan would end as a stray Enter on some button. It belongs to the sale.
    if (!isSale)
        showSale();
    m_entry->setFocus();
    m_entry->insert(event->text());
}

} // namespace till
