// Starts and ends the check thread, and carries commands and states across.
#include "checkthread.h"

namespace till {

CheckThread::CheckThread()
{
    m_desk->moveToThread(&m_thread);
    connect(m_desk.get(), &CheckDesk::changed, this, [this](const TillView &view) {
        m_view = view;
        Q_EMIT changed();
    });
}

CheckThread::~CheckThread()
{
    m_desk->abandon();
    QMetaObject::invokeMethod(m_desk.get(), [desk = m_desk.get()] {
        desk->finish();
        QThread::currentThread()->quit();
    });
    m_thread.wait();
}

void CheckThread::start(const QString &configFile)
{
    m_thread.setObjectName(QStringLiteral("check"));
    m_thread.start();
    QMetaObject::invokeMethod(m_desk.get(), [desk = m_desk, configFile] { desk->start(configFile, desk); });
}

void CheckThread::send(const CheckDesk::Work &work, const QString &waitingFor)
{
    ++m_sent;
    QMetaObject::invokeMethod(m_desk.get(),
                              [desk = m_desk.get(), work, waitingFor] { desk->perform(work, waitingFor); });
    Q_EMIT changed();
}

void CheckThread::answer(const Answer &answer)
{
    m_desk->answer(answer);
    m_view.question.reset(); // Answered once: the check thread shows what comes next.
    Q_EMIT changed();
}

} // namespace till
