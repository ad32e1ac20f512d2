// The customer's side of the sale.
#include "customerpanel.h"

#include "texts.h"

#include <QtWidgets/QLabel>
#include <QtWidgets/QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace till {

CustomerPanel::CustomerPanel(QWidget *parent) : QFrame(parent)
{
    setProperty("role", u"card"_s);
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(2);
    m_name = new QLabel;
    m_name->setProperty("role", u"title"_s);
    m_name->setWordWrap(true);
    m_name->setTextFormat(Qt::PlainText);
    layout->addWidget(m_name);
    m_tier = new QLabel;
    m_tier->setTextFormat(Qt::PlainText);
    m_tier->setWordWrap(true);
    m_tier->setProperty("role", u"muted"_s);
    layout->addWidget(m_tier);
    m_card = new QLabel;
    m_card->setTextFormat(Qt::PlainText);
    m_card->setProperty("role", u"muted"_s);
    layout->addWidget(m_card);
    layout->addSpacing(8);
    m_balance = addFigure(tr("Баланс баллов"));
    m_offered = addFigure(tr("Можно списать"));
    m_spent = addFigure(tr("Списывается"));
    m_earned = addFigure(tr("Будет начислено"));
    m_after = addFigure(tr("Баланс после чека"));
    layout->addStretch();
    show({});
}

QLabel *CustomerPanel::addFigure(const QString &title)
{
    auto *row = new QHBoxLayout;
    auto *name = new QLabel(title);
    name->setProperty("role", u"muted"_s);
    auto *figure = new QLabel;
    figure->setProperty("role", u"figure"_s);
    figure->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    row->addWidget(name);
    row->addWidget(figure, 1);
    static_cast<QVBoxLayout *>(layout())->addLayout(row);
    return figure;
}

void CustomerPanel::show(const CheckResult &check)
{
    const bool hasCard = !check.card.isEmpty();
    const bool isPriced = hasCard && !check.basket.isEmpty();
    const QString none = u"–"_s;
    m_name->setText(!hasCard                   ? tr("Покупатель не указан")
                    : check.customer.isEmpty() ? tr("Имя неизвестно")
                                               : check.customer);
    m_tier->setText(hasCard ? check.tier : tr("F2 – карта, F3 – телефон"));
    m_card->setText(hasCard ? tr("Карта %1").arg(check.card) : QString());
    m_balance->setText(check.balance ? moneyText(*check.balance) : none);
    m_offered->setText(isPriced ? moneyText(check.offered) : none);
    m_spent->setText(isPriced ? moneyText(check.spent()) : none);
    m_earned->setText(isPriced ? moneyText(check.earned) : none);
    m_after->setText(isPriced && check.balance ? moneyText(*check.balance - check.spent() + check.earned) : none);
}

} // namespace till
