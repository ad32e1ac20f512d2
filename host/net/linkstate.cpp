// Remembers whether the last exchange succeeded, and since when that has been so.
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
