// The cashier's window. It holds no logic of a sale: commands go to the check thread, states come back.
#pragma once

#include "checkthread.h"
#include "listpage.h"
#include "questionpanel.h"

#include <QtWidgets/QMainWindow>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QToolButton>

namespace till {

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// `till` must live longer than the window.
    explicit MainWindow(CheckThread &till);

private:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

    /// A large button below the check.
    struct Action
    {
        QString icon;
        QString text;
        std::function<bool(const TillView &view)> isAllowed; ///< Null: always.
        std::function<void()> run;
        QToolButton *button = nullptr;
    };

    /// What the entry field takes.
    struct Mode
    {
        QString prompt = {};
        QString hint = {};
        std::function<void(CheckDesk &desk, const QString &typed)> work = nullptr; ///< Null: goods.
        QString waitingFor = {};
    };

    QWidget *makeSale();
    QWidget *makeCustomer();
    QWidget *makeActions();
    QList<Action> actions();
    QList<ListPage::Action> pageActions(Page::Kind kind);

    void useTheme(bool isDark);
    void apply();
    void showCheck(const TillView &view);
    void showStatus(const TillView &view);
    void showMessage();
    void showPage(const Page &page);
    void showSale();
    /// What Esc does.
    void goBack();
    void updateAreas();

    void setMode(const Mode &mode);
    void enter(const Mode &mode);
    void submit();
    void sendPending();
    /// The number on the check of the selected line, or of the last one.
    int selectedLine() const;

    CheckThread &m_till;
    QStackedWidget *m_pages = new QStackedWidget;
    QWidget *m_sale;
    ListPage *m_list = new ListPage;
    QWidget *m_totals;
    QWidget *m_actionArea;
    QuestionPanel *m_questions = new QuestionPanel;
    QLabel *m_customer = makeLabel(QStringLiteral("title"));
    QLabel *m_card = makeLabel(QStringLiteral("muted"));
    QList<QLabel *> m_points;
    ListTable *m_lines = new ListTable;
    QLabel *m_prompt = makeLabel();
    QLineEdit *m_entry = new QLineEdit;
    QLabel *m_message = makeLabel();
    QLabel *m_sum = makeLabel(QStringLiteral("muted"));
    QLabel *m_total = makeLabel(QStringLiteral("big"));
    QLabel *m_link = makeLabel();
    QPushButton *m_queue = new QPushButton;
    QList<Action> m_actions;

    Mode m_mode;
    const Mode m_goodsMode{tr("Товар"), tr("Штрихкод, 3*штрихкод или название")};
    QStringList m_pending;        ///< Goods entered while the till was busy.
    bool m_isHolding = false;     ///< They wait until the cashier has seen a warning.
    quint64 m_shown = 0;          ///< Commands whose result has been shown.
    std::optional<bool> m_isDark; ///< Nothing before the till has said it.
};

} // namespace till
