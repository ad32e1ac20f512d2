// Opening and reopening the queue's database.
#include "queueaccess.h"

QueueStore &QueueAccess::opened()
{
    if (m_store && !m_store->isUsable())
        m_store.reset();
    if (!m_store)
        m_store.emplace(m_settings, m_commits);
    return *m_store;
}
