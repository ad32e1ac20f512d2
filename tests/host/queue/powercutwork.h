// What the programs that must survive power cuts have in common. Each has a Ledger, kept where no power cut reaches it,
// and these operations:
//   open(), act(), close()   starts on what is in its folder, does something at random, ends in good order
//   afterDatabaseWrite()     called after each write to a database itself, not to its log
//   ledger()                 how to judge a cut at this moment; called in the middle of SQLite's operations
//   judge(folder, ledger)    judges what a cut has left in the folder; throws when that is beyond use
//   goBack()                 forgets all that was done since the cut judged last; open() follows, on what that has left
#pragma once

#include <support/sql.h>

#include <map>
#include <random>
#include <string>

using namespace Qt::Literals::StringLiterals;

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

    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }
    int upTo(int most) { return std::uniform_int_distribution(0, most)(m_random); }

protected:
    static void requireSound(const QString &fileName)
    {
        if (runSql(fileName, u"PRAGMA integrity_check"_s) != QVariantList{u"ok"_s})
            throw std::runtime_error("not sound");
    }

    /// To be called when the connection that must sync its commits is the only one.
    void sabotageCommits() const
    {
        QSqlQuery query(QSqlDatabase::database(QSqlDatabase::connectionNames().constFirst(), false));
        if (m_sabotage == Sabotage::SynchronousNormal && !query.exec(u"PRAGMA synchronous = NORMAL"_s))
            throw std::runtime_error("PRAGMA synchronous = NORMAL");
    }

    const Sabotage m_sabotage;
    PowerCutTally &m_tally;
    std::mt19937_64 m_random;
};
