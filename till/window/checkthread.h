// The check thread as the window sees it: commands in, states out.
#pragma once

#include "checkdesk.h"

#include <QtCore/QSharedPointer>
#include <QtCore/QThread>

namespace till {

/// Used on the window's thread, which it never makes wait, but for the end.
class CheckThread : public QObject
{
    Q_OBJECT

public:
    explicit CheckThread(const QString &configFile);
    /// Waits until the exchange under way is over.
    ~CheckThread() override;

    void start();

    /// Has a command carried out after those that were sent before; `waitingFor` says what the cashier waits for.
    void send(const CheckDesk::Work &work, const QString &waitingFor = {});
    void answer(const Answer &answer);

    /// Whether something was sent that has not been carried out.
    bool isBusy() const { return m_sent != m_view.commandsDone; }
    /// Whether a command can be given now.
    bool isIdle() const { return !isBusy() && m_view.isReady; }

    const TillView &view() const { return m_view; }

Q_SIGNALS:
    void changed();

private:
    QThread m_thread;
    QSharedPointer<CheckDesk> m_desk;
    quint64 m_sent = 0;
    TillView m_view;
};

} // namespace till
