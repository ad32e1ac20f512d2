// A program whose data must survive power cuts: what it does on its disk, and what it may find there afterwards.
#pragma once

#include <QtCore/QString>

#include <functional>
#include <map>
#include <random>
#include <string>

/// How the durability that the program relies on is undermined, to see that the loss is noticed.
enum class Sabotage {
    None,
    SyncsIgnored,      ///< The disk says that it has synced and has not.
    SynchronousNormal, ///< Commits that must be synced are not.
};

/// Counted over all power cuts.
struct PowerCutTally
{
    int cuts = 0;
    int torn = 0;                      ///< Blocks that were written in part.
    std::map<std::string, int> seen;   ///< All must be above 0, otherwise the interesting moments were missed.
    std::map<std::string, int> broken; ///< Promises.
};

class PowerCutWork
{
public:
    PowerCutWork(std::uint64_t seed, Sabotage sabotage, PowerCutTally &tally)
        : m_sabotage(sabotage), m_tally(tally), m_random(seed)
    {}
    virtual ~PowerCutWork() = default;
    PowerCutWork(const PowerCutWork &) = delete;
    PowerCutWork &operator=(const PowerCutWork &) = delete;

    /// Starts on what is in its folder.
    virtual void open() = 0;
    /// Does something at random.
    virtual void act() = 0;
    /// Ends in good order.
    virtual void close() = 0;

    /// Judges what a power cut has left in the folder; false: it is beyond use.
    using Judgement = std::function<bool(const QString &folder)>;
    /// How to judge a cut at this moment, later. To be called in the middle of SQLite's operations.
    virtual Judgement judgement() = 0;

    /// Forgets all that was done since the cut that was judged last; open() follows, on what that cut has left.
    virtual void goBack() = 0;

    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }
    int upTo(int most) { return std::uniform_int_distribution(0, most)(m_random); }

protected:
    /// Whether SQLite finds the database sound.
    static bool isSound(const QString &fileName);

    /// To be called when the connection that must sync its commits is the only one.
    void sabotageCommits() const;

    const Sabotage m_sabotage;
    PowerCutTally &m_tally;
    std::mt19937_64 m_random;
};
