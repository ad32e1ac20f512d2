// Questions of the till and the loyalty system, worded as they word them.
#include "questionpanel.h"

using namespace Qt::Literals::StringLiterals;

namespace till {

QuestionPanel::QuestionPanel()
{
    setProperty("role", u"card"_s);
    m_first->setProperty("role", u"main"_s);
    addKey(m_first, Qt::Key_F5);
    addKey(m_again, Qt::Key_F8);
    addKey(m_second, Qt::Key_F10);
    for (QLabel *label : {m_text, m_reason})
        label->setWordWrap(true);
    m_typing = arrange(Qt::Horizontal, {m_entry, m_time}, {m_entry});
    QWidget *buttons = arrange(Qt::Horizontal, {m_first, m_again, m_second}, {m_first, m_again, m_second});
    arrange(Qt::Vertical, {m_text, m_reason, m_typing, buttons}, {}, this);
    connect(m_first, &QPushButton::clicked, this, [this] { answer(Answer::Kind::First); });
    connect(m_entry, &QLineEdit::returnPressed, this, [this] { answer(Answer::Kind::First); });
    connect(m_again, &QPushButton::clicked, this, [this] { answer(Answer::Kind::SendAgain); });
    connect(m_second, &QPushButton::clicked, this, [this] { answer(Answer::Kind::Second); });
}

void QuestionPanel::show(const Question &question)
{
    if (isVisible())
        return;
    m_question = question;
    const bool isCode = question.entry == Question::Entry::Code;
    const bool isTyped = question.entry != Question::Entry::None;
    m_text->setText(fitting(question.text));
    m_reason->setText(fitting(question.reason));
    m_reason->setVisible(!question.reason.isEmpty());
    m_entry->clear();
    m_entry->setAccessibleName(question.text);
    m_typing->setVisible(isTyped);
    setTone(m_entry, isCode ? u"code"_s : QString());
    m_time->setVisible(isCode);
    m_again->setVisible(isCode);
    m_first->setText(question.first + (isTyped ? u"  Enter"_s : u"  F5"_s));
    m_second->setText(question.second + u"  F10"_s);
    showTimeLeft();
    setVisible(true);
    setFocusProxy(isTyped ? static_cast<QWidget *>(m_entry) : question.isRisky ? m_second : m_first);
    setFocus();
}

void QuestionPanel::answer(Answer::Kind kind)
{
    const QString typed = m_entry->text().trimmed();
    if (kind != Answer::Kind::First || m_question.entry == Question::Entry::None || !typed.isEmpty())
        Q_EMIT answered({m_question.number, kind, typed});
}

void QuestionPanel::showTimeLeft()
{
    const qint64 seconds = m_question.deadline.remainingTime() / 1000;
    m_time->setText(tr("Осталось времени: %1:%2, попыток: %3")
                        .arg(QString::number(seconds / 60), QString::number(seconds % 60).rightJustified(2, u'0'),
                             QString::number(m_question.attemptsLeft)));
}

} // namespace till
