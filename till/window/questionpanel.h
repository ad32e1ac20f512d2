// What has to be answered before the sale goes on: a question with two buttons, and perhaps something to type.
#pragma once

#include "widgets.h"

namespace till {

class QuestionPanel : public QFrame
{
    Q_OBJECT

public:
    QuestionPanel();

    /// Shows a question and takes the focus; the same question again changes nothing.
    void show(const Question &question);

    /// Counts the time down.
    void showTimeLeft();

Q_SIGNALS:
    void answered(const till::Answer &answer);

private:
    void answer(Answer::Kind kind);

    Question m_question;
    QLabel *m_text;
    QLabel *m_reason;
    QLabel *m_time;
    QLineEdit *m_entry;
    QPushButton *m_first;
    QShortcut *m_firstKey;
    QPushButton *m_again;
    QPushButton *m_second;
};

} // namespace till
