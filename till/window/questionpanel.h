// What has to be answered before the sale goes on: a question with two buttons, and perhaps something to type.
#pragma once

#include "widgets.h"

namespace till {

class QuestionPanel : public QFrame
{
    Q_OBJECT

public:
    QuestionPanel();

    /// Shows a question and takes the focus. Does nothing while a question is visible: that one is hidden before the
    /// next.
    void show(const Question &question);

    /// Counts the time down.
    void showTimeLeft();

Q_SIGNALS:
    void answered(const till::Answer &answer);

private:
    void answer(Answer::Kind kind);

    Question m_question;
    QLabel *m_text = makeLabel(QStringLiteral("title"));
    QLabel *m_reason = makeLabel();
    QLabel *m_time = makeLabel(QStringLiteral("muted"));
    QWidget *m_typing;
    QLineEdit *m_entry = new QLineEdit;
    QPushButton *m_first = makeButton();
    QPushButton *m_again = makeButton(tr("Отправить ещё раз  F8"));
    QPushButton *m_second = makeButton();
};

} // namespace till
