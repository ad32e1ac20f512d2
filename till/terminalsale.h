// Selling by hand in a terminal: each line typed is a step.
#pragma once

#include "catalogue.h"
#include "checksession.h"

#include <queue/queuedrain.h>

namespace till {

class TerminalSale
{
public:
    /// All of them must live longer than the sale; `waysToGoOn` is printed when a check stays open.
    TerminalSale(CheckSession &session, QueueDrain &drain, const Catalogue &catalogue, const QString &waysToGoOn);

    /// Reads lines until the end of the input; a check that is open then stays as it is. Ctrl-C ends the program at
    /// once: every step has left the check on the disk.
    void run();

private:
    void perform(const QString &line);
    void showCheck() const;

    CheckSession &m_session;
    QueueDrain &m_drain;
    const Catalogue &m_catalogue;
    QString m_waysToGoOn;
};

} // namespace till
