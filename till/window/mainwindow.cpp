// How the window is put together.
#include "mainwindow.h"

#include "customerpanel.h"
#include "keys.h"
#include "linesmodel.h"
#include "listpage.h"
#include "questionpanel.h"

#include <QtCore/QTimer>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolButton>

using namespace Qt::Literals::StringLiterals;

namespace till {

MainWindow::MainWindow(CheckThread &till) : m_till(till)
{
    setWindowTitle(tr("Касса"));
    resize(1024, 768);
    auto *central = new QWidget;
    central->setObjectName(u"page"_s);
    auto *layout = new QVBoxLayout(central);
    m_pages = new QStackedWidget;
    m_sale = makeSale();
    m_list = new ListPage;
    m_pages->addWidget(m_sale);
    m_pages->addWidget(m_list);
    layout->addWidget(m_pages, 1);
    layout->addWidget(makeTotal());
    m_actionArea = makeActions();
    layout->addWidget(m_actionArea);
    m_questions = new QuestionPanel;
    m_questions->hide();
    layout->addWidget(m_questions);
    setCentralWidget(central);
    makeStatusBar();

    connect(m_list, &ListPage::left, this, &MainWindow::showSale);
    connect(m_questions, &QuestionPanel::answered, this, [this](const Answer &answer) {
        if (!std::exchange(m_confirmation, std::nullopt))
            return m_till.answer(answer);
        if (answer.kind == Answer::Kind::First)
            m_till.send(m_confirmed);
        apply();
        m_entry->setFocus();
    });
    connect(&m_till, &CheckThread::changed, this, &MainWindow::apply);
    auto *clock = new QTimer(this);
    connect(clock, &QTimer::timeout, this, &MainWindow::showMessage);
    clock->start(std::chrono::milliseconds(200));
    useTheme(false);
    setMode(Mode::Goods);
    apply();
}

QWidget *MainWindow::makeSale()
{
    auto *page = new QWidget;
    auto *layout = new QHBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *left = new QVBoxLayout;
    auto *entryRow = new QHBoxLayout;
    m_prompt = new QLabel;
    m_entry = new QLineEdit;
    m_prompt->setBuddy(m_entry);
    entryRow->addWidget(m_prompt);
    entryRow->addWidget(m_entry, 1);
    left->addLayout(entryRow);
    m_lines = new LinesModel(this);
    m_table = new QTableView;
    m_table->setModel(m_lines);
    m_table->setSelectionBehavior(QTableView::SelectRows);
    m_table->setSelectionMode(QTableView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->setShowGrid(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(50);
    m_table->setAccessibleName(tr("Строки чека"));
    QHeaderView *header = m_table->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(LinesModel::Name, QHeaderView::Stretch);
    header->setHighlightSections(false);
    left->addWidget(m_table, 1);
    layout->addLayout(left, 1);
    m_customer = new CustomerPanel;
    m_customer->setFixedWidth(264);
    layout->addWidget(m_customer);
    connect(m_entry, &QLineEdit::returnPressed, this, &MainWindow::submit);
    return page;
}

QWidget *MainWindow::makeTotal()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    m_message = new QLabel;
    m_message->setObjectName(u"message"_s);
    m_message->setWordWrap(true);
    m_message->setTextFormat(Qt::PlainText);
    m_message->setAccessibleName(tr("Сообщение"));
    m_sum = new QLabel;
    m_sum->setProperty("role", u"muted"_s);
    m_sum->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_total = new QLabel;
    m_total->setProperty("role", u"big"_s);
    m_total->setAccessibleName(tr("К оплате"));
    layout->addWidget(m_message, 1);
    layout->addWidget(m_sum);
    layout->addWidget(m_total);
    return row;
}

QWidget *MainWindow::makeActions()
{
    auto *area = new QWidget;
    auto *grid = new QGridLayout(area);
    grid->setContentsMargins(0, 0, 0, 0);
    m_actions = actions();
    constexpr int columns = 6;
    for (int index = 0; index < m_actions.size(); ++index) {
        Action &action = m_actions[index];
        action.button = new QToolButton;
        action.button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        action.button->setFocusPolicy(Qt::TabFocus);
        action.button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        action.button->setMinimumHeight(76);
        action.button->setIconSize(QSize(26, 26));
        addKey(action.button, action.key);
        connect(action.button, &QToolButton::clicked, this, action.run);
        grid->addWidget(action.button, index / columns, index % columns);
        grid->setColumnStretch(index % columns, 1);
    }
    m_actions.constLast().button->setProperty("role", u"main"_s);
    return area;
}

QList<MainWindow::Action> MainWindow::actions()
{
    using Kind = Command::Kind;
    const auto send = [this](Kind kind) { return [this, kind] { m_till.send({.kind = kind}); }; };
    const auto voidCheck = [this] {
        confirm(tr("Аннулировать чек? Вернуть его будет нельзя."), tr("Аннулировать"), {.kind = Kind::Void});
    };
    return {
        {Kind::ShowQueue, u"help"_s, tr("Помощь"), Qt::Key_F1, [this] { showHelp(); }},
        {Kind::Card, u"card"_s, tr("Карта"), Qt::Key_F2, [this] { enter(Mode::Card); }},
        {Kind::Phone, u"phone"_s, tr("Телефон"), Qt::Key_F3, [this] { enter(Mode::Phone); }},
        {Kind::Price, u"price"_s, tr("Рассчитать"), Qt::Key_F4, send(Kind::Price)},
        {Kind::Spend, u"spend"_s, tr("Списать баллы"), Qt::Key_F5, send(Kind::Spend)},
        {Kind::Change, u"change"_s, tr("Изменить"), Qt::Key_F6, [this] { enter(Mode::Change); }},
        {Kind::Remove, u"remove"_s, tr("Удалить"), Qt::Key_F7,
         [this] { m_till.send({.kind = Kind::Remove, .line = selectedLine()}); }},
        {Kind::Restore, u"restore"_s, tr("Вернуть"), Qt::Key_F8, send(Kind::Restore)},
        {Kind::Park, u"park"_s, tr("Отложить"), Qt::Key_F9, [this] { parkOrTake(); }},
        {Kind::Void, u"void"_s, tr("Аннулировать"), Qt::Key_F10, voidCheck},
        {Kind::ShowJournal, u"journal"_s, tr("Журнал"), Qt::Key_F11, send(Kind::ShowJournal)},
        {Kind::Close, u"close"_s, tr("Закрыть"), Qt::Key_F12, send(Kind::Close)},
    };
}

void MainWindow::makeStatusBar()
{
    m_link = new QLabel;
    m_queue = new QPushButton;
    addKey(m_queue, Qt::CTRL | Qt::Key_L);
    connect(m_queue, &QPushButton::clicked, this, [this] { m_till.send({.kind = Command::Kind::ShowQueue}); });
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(m_link);
    statusBar()->addWidget(m_queue);
    statusBar()->addPermanentWidget(new QLabel(tr("Принтера нет")));
}

} // namespace till
