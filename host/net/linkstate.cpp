// Keeps the outcome of the exchanges, and since when it has been the same.
#include "linkstate.h"

void LinkState::report(bool isReachable)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_state.since.isValid() || m_state.isReachable != isReachable)
        m_state = {isReachable, QDateTime::currentDateTime()};
}

LinkState::State LinkState::state() const
{
    const std::scoped_lock lock(m_mutex);
    return m_state;
}
