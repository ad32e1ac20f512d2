// Starts and ends the check thread, and carries commands and states across.
#include "checkthread.h"

#include "checkdesk.h"
#include "windowcashier.h"

namespace till {

CheckThread::CheckThread(const QString &configFile) : m_desk(new CheckDesk(configFile)), m_cashier(m_desk->cashier())
{
    m_desk->moveToThread(&m_thread);
    connect(m_desk, &CheckDesk::changed, this, [this](const TillView &view) {
        m_view = view;
        Q_EMIT changed();
    });
    connect(&m_thread, &QThread::finished, m_desk, &QObject::deleteLater);
}

CheckThread::~CheckThread()
{
    disconnect(m_desk, nullptr, this, nullptr);
    m_cashier->abandon();
    QMetaObject::invokeMethod(m_desk, [desk = m_desk] {
        desk->finish();
        QThread::currentThread()->quit();
    });
    m_thread.wait();
}

void CheckThread::start()
{
    m_thread.setObjectName(QStringLiteral("check"));
    m_thread.start();
    ++m_sent;
    QMetaObject::invokeMethod(m_desk, &CheckDesk::start);
}

void CheckThread::send(const Command &command)
{
    ++m_sent;
    QMetaObject::invokeMethod(m_desk, [desk = m_desk, command] { desk->perform(command); });
    Q_EMIT changed();
}

void CheckThread::answer(const Answer &answer)
{
    m_cashier->answer(answer);
    m_view.question.reset(); // Answered once: the check thread shows what comes next.
    Q_EMIT changed();
}

} // namespace till
