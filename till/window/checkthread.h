// The check thread as the window sees it: commands in, states out.
#pragma once

#include "tillview.h"

#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QThread>

namespace till {

class CheckDesk;
class WindowCashier;

/// Used on the window's thread, which it never makes wait, but for the end.
class CheckThread : public QObject
{
    Q_OBJECT

public:
    explicit CheckThread(const QString &configFile);
    /// Waits until the exchange under way is over.
    ~CheckThread() override;

    void start();

    /// Has a command carried out after those that were sent before.
    void send(const Command &command);
    void answer(const Answer &answer);

    /// Whether something was sent that has not been carried out.
    bool isBusy() const { return m_sent != m_view.commandsDone; }

    const TillView &view() const { return m_view; }

Q_SIGNALS:
    void changed();

private:
    QThread m_thread;
    CheckDesk *m_desk;
    QSharedPointer<WindowCashier> m_cashier;
    quint64 m_sent = 0;
    TillView m_view;
};

} // namespace till
