// Questions of the till and the loyalty system, worded as they word them.
#include "questionpanel.h"

#include "keys.h"
#include "texts.h"

#include <QtCore/QTimer>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace till {

QuestionPanel::QuestionPanel(QWidget *parent) : QFrame(parent)
{
    setProperty("role", u"card"_s);
    auto *layout = new QVBoxLayout(this);
    m_text = new QLabel;
    m_text->setProperty("role", u"title"_s);
    m_reason = new QLabel;
    m_time = new QLabel;
    m_time->setProperty("role", u"muted"_s);
    for (QLabel *label : {m_text, m_reason, m_time}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        layout->addWidget(label);
    }
    m_code = new QLineEdit;
    m_code->setObjectName(u"code"_s);
    m_code->setMaximumWidth(320);
    m_code->setAccessibleName(tr("Код от покупателя"));
    layout->addWidget(m_code);
    layout->addStretch();
    auto *buttons = new QHBoxLayout;
    m_first = new QPushButton;
    m_first->setProperty("role", u"main"_s);
    m_again = new QPushButton(tr("Отправить ещё раз  F8"));
    addKey(m_again, Qt::Key_F8);
    m_second = new QPushButton;
    m_firstKey = addKey(m_first, Qt::Key_F5);
    addKey(m_second, Qt::Key_F10);
    for (QPushButton *button : {m_first, m_again, m_second}) {
        button->setMinimumHeight(56);
        button->setAutoDefault(true);
        buttons->addWidget(button, 1);
    }
    layout->addLayout(buttons);
    connect(m_first, &QPushButton::clicked, this,
            [this] { answer(m_question.isCode ? Answer::Kind::Code : Answer::Kind::First); });
    connect(m_again, &QPushButton::clicked, this, [this] { answer(Answer::Kind::SendAgain); });
    connect(m_second, &QPushButton::clicked, this,
            [this] { answer(m_question.isCode ? Answer::Kind::GiveUp : Answer::Kind::Second); });
    connect(m_code, &QLineEdit::returnPressed, this, [this] { answer(Answer::Kind::Code); });
    auto *clock = new QTimer(this);
    connect(clock, &QTimer::timeout, this, &QuestionPanel::showTimeLeft);
    clock->start(std::chrono::milliseconds(500));
}

void QuestionPanel::show(const Question &question)
{
    if (question.number == m_question.number && isVisible())
        return;
    m_question = question;
    m_text->setText(question.isCode ? tr("Код отправлен на номер %1").arg(question.phone) : question.text);
    m_reason->setText(question.reason.isEmpty() ? QString() : tr("Причина: %1").arg(question.reason));
    if (question.isCode)
        m_reason->setText(
            question.isCodeRefused
                ? tr("Код неверный. Спросите у покупателя код ещё раз.")
                : tr("Спросите у покупателя код и введите его. К списанию: %1").arg(moneyText(question.points)));
    m_reason->setVisible(!m_reason->text().isEmpty());
    m_code->clear();
    m_code->setVisible(question.isCode);
    m_time->setVisible(question.isCode);
    m_again->setVisible(question.isCode);
    m_first->setText(question.isCode ? tr("Проверить код  Enter") : question.first + u"  F5"_s);
    m_firstKey->setEnabled(!question.isCode);
    m_second->setText((question.isCode ? tr("Не списывать") : question.second) + u"  F10"_s);
    showTimeLeft();
    setVisible(true);
    if (question.isCode)
        m_code->setFocus();
    else
        m_first->setFocus();
}

void QuestionPanel::answer(Answer::Kind kind)
{
    if (kind == Answer::Kind::Code && m_code->text().trimmed().isEmpty())
        return;
    Q_EMIT answered({m_question.number, kind, kind == Answer::Kind::Code ? m_code->text() : QString()});
}

void QuestionPanel::showTimeLeft()
{
    if (!m_question.isCode)
        return;
    const qint64 seconds = std::max<qint64>(0, QDateTime::currentDateTime().secsTo(m_question.deadline));
    m_time->setText(tr("Осталось времени: %1:%2, попыток: %3")
                        .arg(QString::number(seconds / 60), QString::number(seconds % 60).rightJustified(2, u'0'),
                             QString::number(m_question.attemptsLeft)));
}

} // namespace till
