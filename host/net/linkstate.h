// Whether the service can be reached, judged by this process's exchanges.
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
        QDateTime since; ///< When this began; invalid before the first exchange.
    };

    /// Reports an exchange: whether it brought an answer of the service itself.
    void report(bool isReachable);

    State state() const;

private:
    mutable std::mutex m_mutex;
    State m_state;
};
