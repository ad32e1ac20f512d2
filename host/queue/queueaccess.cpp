// Opening and reopening the queue's database.
#include "queueaccess.h"

#include "queueerror.h"

using namespace Qt::Literals::StringLiterals;

QueueStore &QueueAccess::opened()
{
    if (m_store && m_store->isReplaced()) {
        queueerror::logger()->error(
            u"Файл очереди запросов «%1» удалён или заменён во время работы, открываю его заново"_s.arg(m_fileName));
        m_store.reset();
    }
    if (!m_store)
        m_store.emplace(m_fileName, m_commits);
    return *m_store;
}
