// Whether the service can be reached, as the exchanges of this process have found.
#pragma once

#include <poshost_export.h>

#include <QtCore/QDateTime>

#include <mutex>

/// One per process through Singleton<LinkState>; every RestClient reports to it. Used from any thread.
class POSHOST_EXPORT LinkState
{
public:
    struct State
    {
        bool isReachable = true;
        QDateTime since; ///< When that was first found; invalid before the first exchange.
    };

    /// The outcome of an exchange: an answer that was the service's own, or none.
    void report(bool isReachable);

    State state() const;

private:
    mutable std::mutex m_mutex;
    State m_state;
};
