// What has to be answered before the sale goes on: a question with two buttons, or the customer's code.
#pragma once

#include "tillview.h"

#include <QtWidgets/QFrame>

class QLabel;
class QLineEdit;
class QPushButton;
class QShortcut;

namespace till {

class QuestionPanel : public QFrame
{
    Q_OBJECT

public:
    explicit QuestionPanel(QWidget *parent = nullptr);

    /// Shows a question and takes the focus; the same question again changes nothing.
    void show(const Question &question);

Q_SIGNALS:
    void answered(const till::Answer &answer);

private:
    void answer(Answer::Kind kind);
    void showTimeLeft();

    Question m_question;
    QLabel *m_text;
    QLabel *m_reason;
    QLabel *m_time;
    QLineEdit *m_code;
    QPushButton *m_first;
    QShortcut *m_firstKey;
    QPushButton *m_again;
    QPushButton *m_second;
};

} // namespace till
