// The cashier's window. It holds no logic of a sale: commands go to the check thread, states come back.
#pragma once

#include "checkthread.h"

#include <QtWidgets/QMainWindow>

class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;
class QTableView;
class QToolButton;

namespace till {

class CustomerPanel;
class LinesModel;
class ListPage;
class QuestionPanel;

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// `till` must live longer than the window.
    explicit MainWindow(CheckThread &till);

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    /// What the entry field takes.
    enum class Mode { Goods, Card, Phone, Change };

    /// A large button below the check.
    struct Action
    {
        Command::Kind kind;
        QString icon;
        QString text;
        Qt::Key key;
        std::function<void()> run;
        QToolButton *button = nullptr;
    };

    QWidget *makeSale();
    QWidget *makeTotal();
    QWidget *makeActions();
    void makeStatusBar();
    QList<Action> actions();

    void useTheme(bool isDark);
    void apply();
    void showCheck(const TillView &view);
    void showResult(const TillView &view);
    void showStatus(const TillView &view);
    void showMessage();
    void showListing(const Listing &listing);
    void showReceipt(const QString &receipt);
    void showHelp();
    void showPage();
    void showSale();

    void setMode(Mode mode);
    void enter(Mode mode);
    void submit();
    void sendPending();
    void parkOrTake();
    int selectedLine() const;
    /// Asks before something that cannot be taken back.
    void confirm(const QString &question, const QString &yes, const Command &command);

    CheckThread &m_till;
    QStackedWidget *m_pages;
    QWidget *m_sale;
    ListPage *m_list;
    QWidget *m_actionArea;
    QuestionPanel *m_questions;
    CustomerPanel *m_customer;
    LinesModel *m_lines;
    QTableView *m_table;
    QLabel *m_prompt;
    QLineEdit *m_entry;
    QLabel *m_message;
    QLabel *m_sum;
    QLabel *m_total;
    QLabel *m_link;
    QPushButton *m_queue;
    QList<Action> m_actions;

    Mode m_mode = Mode::Goods;
    QStringList m_pending; ///< Goods entered while the till was busy.
    std::optional<Question> m_confirmation;
    Command m_confirmed;
    quint64 m_shown = 0; ///< Commands whose result has been shown.
    bool m_isDark = false;
};

} // namespace till
