// What was pushed, sent and deleted, kept where no power cut reaches it, and the judgement of what a cut has left.
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QList>

#include <deque>
#include <map>

/// Counted over all power cuts.
struct PowerCutCounts
{
    int cuts = 0;
    int torn = 0;      ///< Blocks that were written in part.
    int pushed = 0;    ///< Events whose push has returned.
    int delivered = 0; ///< Events whose handler has returned.
    int again = 0;     ///< Of these, those that had been delivered before.

    // Nothing of these may be above 0.
    int lost = 0;       ///< Pushed and neither delivered nor there any more.
    int corrupt = 0;    ///< Databases that could not be read, or were not sound.
    int overtaken = 0;  ///< Sent after a later event of the same order.
    int unknown = 0;    ///< Never pushed, changed, there twice, or there again after it was gone.
    int undeleted = 0;  ///< There again although its deletion was durable.
    int unexpected = 0; ///< Failures while the power was on.

    bool areGood() const { return lost + corrupt + overtaken + unknown + undeleted + unexpected == 0; }
};

class PowerCutLedger
{
public:
    explicit PowerCutLedger(PowerCutCounts &counts) : m_counts(counts) {}

    /// A new event of the order, to be pushed now.
    QJsonObject newEvent(int order);
    void pushed(const QJsonObject &event);

    /// The handler was called with the event.
    void arrived(const QJsonObject &event);
    /// The handler returns.
    void delivered(const QJsonObject &event);
    void deleted(const QJsonObject &event);
    /// All deletions up to now are durable.
    void synced();

    /// The power was cut, and these events can still be sent, in this sequence.
    void afterCut(const QList<QJsonObject> &left);

private:
    enum class State {
        Pushing, ///< The push has not returned: it may be there or not.
        Stored,
        Gone,
    };
    struct Entry
    {
        int number;
        int order;
        State state = State::Pushing;
        bool delivered = false;
        bool deleted = false;
        bool deletedForGood = false;
    };

    static QJsonObject eventOf(const Entry &entry);
    Entry &find(const QJsonObject &event);
    void checkSequence(const Entry &entry);

    PowerCutCounts &m_counts;
    std::deque<Entry> m_entries;   // the index is the event's number
    std::map<int, int> m_lastSent; // the event's number by order, since the last cut
    Entry m_unknown{};
};
