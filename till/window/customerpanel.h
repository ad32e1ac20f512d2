// Who buys, and what the points come to.
#pragma once

#include "till/checkresult.h"

#include <QtWidgets/QFrame>

class QLabel;

namespace till {

class CustomerPanel : public QFrame
{
    Q_OBJECT

public:
    explicit CustomerPanel(QWidget *parent = nullptr);

    /// A check without a card clears the panel.
    void show(const CheckResult &check);

private:
    QLabel *addFigure(const QString &title);

    QLabel *m_name;
    QLabel *m_tier;
    QLabel *m_card;
    QLabel *m_balance;
    QLabel *m_offered;
    QLabel *m_spent;
    QLabel *m_earned;
    QLabel *m_after;
};

} // namespace till
