// The check thread as the window sees it: commands in, states out.
#pragma once

#include "checkdesk.h"

#include <QtCore/QSharedPointer>
#include <QtCore/QThread>

namespace till {

/// Used on the window's thread, which only the destructor blocks.
class CheckThread : public QObject
{
    Q_OBJECT

public:
    CheckThread();
    /// Carries out the commands already sent, without asking the cashier any more, and waits for that.
    ~CheckThread() override;

    void start(const QString &configFile);

    /// Has a command carried out after those that were sent before; `waitingFor` says what the cashier waits for.
    void send(const CheckDesk::Work &work, const QString &waitingFor = {});
    void answer(const Answer &answer);

    /// Whether the till is ready and has carried out what was sent, so that a command can be given now.
    bool isIdle() const { return m_sent == m_view.commandsDone; }

    const TillView &view() const { return m_view; }

Q_SIGNALS:
    void changed();

private:
    QThread m_thread;
    QSharedPointer<CheckDesk> m_desk = QSharedPointer<CheckDesk>::create();
    quint64 m_sent = 1; ///< The start.
    TillView m_view;
};

} // namespace till
