// A queue's database that is opened when it is needed: at the first use, and again after a failure, so that a till can
// start without it, and continues when the disk or the server is back. Used on one thread.
#pragma once

#include "queuestore.h"

#include <optional>

class QueueAccess
{
public:
    QueueAccess(const QueueSettings &settings, DatabaseConnection::Commits commits)
        : m_settings(settings), m_commits(commits)
    {}

    /// Runs `operation` on the open database and returns what it returns. Throws what it throws, and BasicException
    /// when the database cannot be opened; the database is closed then.
    template <class Operation>
    auto use(Operation operation)
    {
        try {
            return operation(opened());
        } catch (...) {
            m_store.reset();
            throw;
        }
    }

private:
    QueueStore &opened()
    {
        if (m_store && !m_store->connection().isUsable())
            m_store.reset();
        if (!m_store)
            m_store.emplace(m_settings, m_commits);
        return *m_store;
    }

    QueueSettings m_settings;
    DatabaseConnection::Commits m_commits;
    std::optional<QueueStore> m_store;
};
