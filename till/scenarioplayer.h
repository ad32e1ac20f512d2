// Plays scenarios at the till and compares what came of each check with what is expected.
#pragma once

#include "checksession.h"
#include "scenario.h"

#include <queue/queuedrain.h>

namespace till {

class ScriptedCashier;

class ScenarioPlayer
{
public:
    /// All of them must live longer than the player; `waysToGoOn` is printed where an open check is in the way.
    ScenarioPlayer(CheckSession &session, ScriptedCashier &cashier, QueueDrain &drain, const QString &waysToGoOn);

    /// Plays the checks, with a receipt for each. Every difference is printed with its place.
    void play(const Scenario &scenario);

    /// Expectations that did not hold, and operations that failed although no messages were expected.
    int differences() const { return m_differences; }

private:
    void playCheck(const ScenarioCheck &check);
    void attempt(const ScenarioCheck &check, const std::function<void()> &operation);
    void compare(const ScenarioCheck &check, const CheckResult &result);
    void compareMessages(const ScenarioCheck &check, const QStringList &expected);
    void report(const ScenarioCheck &check, const QString &key, const QString &expected, const QString &actual);

    CheckSession &m_session;
    ScriptedCashier &m_cashier;
    QueueDrain &m_drain;
    QString m_waysToGoOn;
    bool m_isFirst = true;
    int m_differences = 0;
};

} // namespace till
