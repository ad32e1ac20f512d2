// How the window is put together, and what its keys do.
#include "mainwindow.h"

#include <QtCore/QResource>
#include <QtCore/QTimer>
#include <QtGui/QClipboard>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QStatusBar>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace till {

MainWindow::MainWindow(CheckThread &till) : m_till(till)
{
    m_sale = makeSale();
    m_totals = arrange(Qt::Horizontal, {m_sum, m_total}, {});
    m_actionArea = makeActions();
    setWindowTitle(tr("Касса"));
    resize(QSize(1024, 768).boundedTo(screen()->availableSize()));
    m_sum->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_total->setAccessibleName(tr("К оплате"));
    m_message->setObjectName(u"message"_s);
    m_message->setWordWrap(true);
    m_message->setAccessibleName(tr("Сообщение"));
    m_pages->addWidget(m_sale);
    m_pages->addWidget(m_list);
    QWidget *bottom = arrange(Qt::Horizontal, {m_message, m_totals}, {m_message});
    setCentralWidget(arrange(Qt::Vertical, {m_pages, bottom, m_actionArea, m_questions}, {m_pages}, new QWidget));
    addKey(m_queue, Qt::CTRL | Qt::Key_L);
    statusBar()->addWidget(m_link);
    statusBar()->addWidget(m_queue);
    statusBar()->addPermanentWidget(makeLabel({}, tr("Принтера нет")));

    connect(m_queue, &QPushButton::clicked, this, [this] { m_till.send(&CheckDesk::showQueue); });
    connect(m_list, &ListPage::left, this, &MainWindow::goBack);
    connect(m_questions, &QuestionPanel::answered, &m_till, &CheckThread::answer);
    connect(&m_till, &CheckThread::changed, this, &MainWindow::apply);
    auto *clock = new QTimer(this);
    connect(clock, &QTimer::timeout, this, &MainWindow::showMessage);
    connect(clock, &QTimer::timeout, this, &MainWindow::sendPending);
    clock->start(200ms);
    QApplication::instance()->installEventFilter(this);
    showSale();
}

QWidget *MainWindow::makeSale()
{
    m_prompt->setBuddy(m_entry);
    m_lines->setAccessibleName(tr("Строки чека"));
    connect(m_entry, &QLineEdit::returnPressed, this, &MainWindow::submit);
    QWidget *entry = arrange(Qt::Horizontal, {m_prompt, m_entry}, {m_entry});
    QWidget *check = arrange(Qt::Vertical, {entry, m_lines}, {m_lines});
    return arrange(Qt::Horizontal, {check, makeCustomer()}, {check});
}

QWidget *MainWindow::makeCustomer()
{
    auto *panel = new QFrame;
    panel->setProperty("role", u"customer"_s);
    auto *form = new QFormLayout(panel);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setVerticalSpacing(2);
    for (QLabel *label : {m_customer, m_card}) {
        label->setWordWrap(true);
        form->addRow(label);
    }
    const QString titles = tr("Баланс баллов|Можно списать|Списывается|Будет начислено|Баланс после чека");
    for (const QString &title : titles.split(u'|')) {
        m_points.append(makeLabel(u"figure"_s));
        m_points.constLast()->setAlignment(Qt::AlignRight);
        form->addRow(title, m_points.constLast());
    }
    return panel;
}

QWidget *MainWindow::makeActions()
{
    m_actions = actions();
    QList<QWidget *> upper, lower;
    for (int index = 0; index < m_actions.size(); ++index) {
        Action &action = m_actions[index];
        action.button = new QToolButton;
        action.button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        action.button->setFocusPolicy(Qt::TabFocus);
        action.button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        addKey(action.button, Qt::Key(Qt::Key_F1 + index));
        connect(action.button, &QToolButton::clicked, this, action.run);
        (index < m_actions.size() / 2 ? upper : lower).append(action.button);
    }
    m_actions.constLast().button->setProperty("role", u"main"_s);
    QWidget *first = arrange(Qt::Horizontal, upper, upper);
    return arrange(Qt::Vertical, {first, arrange(Qt::Horizontal, lower, lower)}, {});
}

/// In the order of the keys F1 to F12.
QList<MainWindow::Action> MainWindow::actions()
{
    const auto command = [this](const CheckDesk::Work &work, const QString &waitingFor = {}) {
        return [this, work, waitingFor] { m_till.send(work, waitingFor); };
    };
    const auto sessionCommand = [&command](void (CheckSession::*operation)(), const QString &waitingFor = {}) {
        return command([operation](CheckDesk &desk) { (desk.session().*operation)(); }, waitingFor);
    };
    const auto identification = [this](ECardNumberType type, const QString &prompt, const QString &hint) {
        const auto identify = [type](CheckDesk &desk, const QString &text) { desk.identify(type, text); };
        return [this, mode = Mode{prompt, hint, identify, tr("Ищем покупателя")}] { enter(mode); };
    };
    const auto card =
        identification(ECardNumberType::Scanned, tr("Номер карты"), tr("Проведите карту или введите номер"));
    const auto showHelp = [this] {
        const QResource help(u":/window/help.txt"_s);
        showPage({Page::Kind::Help, tr("Помощь"), QString::fromUtf8(help.uncompressedData())});
    };
    const auto changeLine = [this] {
        const int line = selectedLine();
        enter({tr("Строка %1").arg(line), tr("Количество, или =цена"),
               [line](CheckDesk &desk, const QString &text) { desk.changeGoods(line, text); }});
    };
    const auto removeLine = [this] {
        m_till.send([line = selectedLine()](CheckDesk &desk) { desk.session().removeGoods(line); });
    };
    const QString phoneHint = tr("Например, +79001234567");
    return {
        {u"help"_s, tr("Помощь"), nullptr, showHelp},
        {u"card"_s, tr("Карта"), nullptr,
         [this, card] { m_till.view().hasCard() ? m_till.send(&CheckDesk::removeCard) : card(); }},
        {u"phone"_s, tr("Телефон"), &TillView::hasNoCard,
         identification(ECardNumberType::Phone, tr("Телефон"), phoneHint)},
        {u"price"_s, tr("Рассчитать"), &TillView::canPrice,
         sessionCommand(&CheckSession::price, tr("Рассчитываем чек"))},
        {u"spend"_s, tr("Списать баллы"), &TillView::canSpend,
         sessionCommand(&CheckSession::spend, tr("Списываем баллы"))},
        {u"change"_s, tr("Изменить"), &TillView::hasLines, changeLine},
        {u"remove"_s, tr("Удалить"), &TillView::hasLines, removeLine},
        {u"restore"_s, tr("Вернуть"), &TillView::isRestorable, sessionCommand(&CheckSession::restoreGoods)},
        {u"park"_s, tr("Отложить"), nullptr, command(&CheckDesk::parkOrShowParked)},
        {u"void"_s, tr("Аннулировать"), &TillView::isOpen, command(&CheckDesk::voidCheck, tr("Аннулируем чек"))},
        {u"journal"_s, tr("Журнал"), nullptr, command(&CheckDesk::showJournal)},
        {u"close"_s, tr("Закрыть"), &TillView::hasLines, command(&CheckDesk::close, tr("Закрываем чек"))},
    };
}

/// The first one is done by Enter.
QList<ListPage::Action> MainWindow::pageActions(Page::Kind kind)
{
    const auto command = [this](void (CheckDesk::*operation)(const QString &)) {
        return [this, operation](const QString &id) {
            if (m_till.isIdle()) // While it is not, the list stays enabled, or it would lose the focus.
                m_till.send([operation, id](CheckDesk &desk) { (desk.*operation)(id); });
        };
    };
    const QMap<Page::Kind, QList<ListPage::Action>> actions{
        {Page::Kind::Goods, {{tr("Добавить"), command(&CheckDesk::addGoods)}}},
        {Page::Kind::Parked, {{tr("Вернуть чек"), command(&CheckDesk::take)}}},
        {Page::Kind::Journal, {{tr("Показать чек"), command(&CheckDesk::showReceipt)}}},
        {Page::Kind::Queue,
         {{tr("Отправить снова"), command(&CheckDesk::retryRequest)},
          {tr("Снять с отправки"), command(&CheckDesk::discardRequest)}}},
        {Page::Kind::Receipt,
         {{tr("Следующий чек"), [this](const QString &) { showSale(); }},
          {tr("Копировать"), [](const QString &text) { QApplication::clipboard()->setText(text); }},
          {tr("Сохранить"), command(&CheckDesk::saveReceipt)}}}};
    return actions.value(kind);
}

} // namespace till
