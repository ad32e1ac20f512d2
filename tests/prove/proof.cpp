// Random sales under kills. The number of sales paces the kills: that spreads them evenly, and the sales get on however
// slow the machine is.
#include "proof.h"

#include "books.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QThread>

#include <algorithm>
#include <cstdio>
#include <numeric>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace prove {

namespace {

constexpr auto longestShift = 180s;               ///< A till that takes longer is stuck.
constexpr int longestPauseBeforeKill = 700;       // milliseconds
constexpr int longestPauseBeforeKillOfDrain = 80; // it may have little to do
constexpr int longestDownTime = 300;              // milliseconds
constexpr int lastAttempts = 5;

void print(const QString &name, qint64 figure)
{
    std::printf("%-44s %7lld\n", qPrintable(name), figure);
}

int sum(const QMap<QString, int> &figures)
{
    return std::accumulate(figures.cbegin(), figures.cend(), 0);
}

void print(const QString &name, const QMap<QString, int> &figures)
{
    print(name, sum(figures));
    for (auto figure = figures.cbegin(); figure != figures.cend(); ++figure)
        print(u"  "_s + figure.key(), figure.value());
}

} // namespace

Proof::Proof(const QString &folder, const Options &options)
    : m_options(options),
      m_shop(folder, options.seed, options.faultRate),
      m_sales(options.seed),
      m_random(~options.seed)
{}

QStringList Proof::run()
{
    scheduleKill(longestPauseBeforeKill);
    sell();
    finish();
    judge();
    return m_findings + m_shop.crashes();
}

int Proof::killed() const
{
    return sum(m_shop.kills());
}

void Proof::sell()
{
    int reported = 0;
    while (!stop && (m_sold < m_options.sales || killed() < m_options.kills)) {
        startWork();
        if (!watchWork())
            return;
        m_sold = static_cast<int>(m_shop.journal().size());
        if (const int tenths = 10 * m_sold / m_options.sales; tenths > reported) {
            reported = tenths;
            std::fprintf(stderr, "%d sales, %d kills\n", m_sold, killed());
        }
    }
}

void Proof::startWork()
{
    const int chosen = m_sold > 1 ? number(1, 3) : 3;
    if (chosen == 1) {
        m_shop.drain(std::chrono::seconds(number(1, 3)));
        scheduleKill(longestPauseBeforeKillOfDrain);
    } else if (chosen == 2) {
        m_shop.sellElsewhere(number(1, 5));
    } else {
        m_shop.sell(m_sales.shift());
    }
    if (m_sold > 1 && number(1, 3) == 1)
        sendRefusedAgain();
}

/// False if something is wrong with the till and going on is pointless.
bool Proof::watchWork()
{
    const QDeadlineTimer deadline(longestShift);
    for (; m_shop.isWorking() && !deadline.hasExpired(); QThread::msleep(2)) {
        m_shop.tend();
        killWhenDue();
    }
    if (deadline.hasExpired())
        m_findings.append(u"the till does not finish"_s);
    m_shop.noteEndOfWorker();
    return m_findings.isEmpty() && m_shop.crashes().isEmpty();
}

void Proof::killWhenDue()
{
    if (killed() >= m_options.kills || !m_nextKill.hasExpired() ||
        qint64{killed()} * m_options.sales > qint64{m_sold} * m_options.kills)
        return;
    const QStringList names = m_shop.running();
    if (names.isEmpty())
        return;
    scheduleKill(longestPauseBeforeKill);
    const bool workersTurn = number(1, 2) == 1;
    // The worker comes last among what runs, and is what most depends on.
    const auto chosen = workersTurn ? names.size() - 1 : number(0, static_cast<int>(names.size()) - 1);
    const int downTime = number(1, 3) == 1 ? number(0, longestDownTime) : 0;
    m_shop.kill(names.at(chosen), std::chrono::milliseconds(downTime));
}

/// Does what a person would on finding refused requests; the proxy forges refusals.
void Proof::sendRefusedAgain()
{
    m_sentAgain += m_shop.askQueue({u"retry"_s, u"--all"_s}).value(u"changed").toInt();
}

void Proof::finish()
{
    m_shop.endFaults();
    m_shop.sellElsewhere(0);
    if (!watchWork())
        return;
    m_shop.sell(m_sales.lastShift());
    deliverAll();
    for (const QJsonValue entry : undelivered())
        m_findings.append(u"%1 of order %2 is left in the queue: %3"_s.arg(
            entry[u"operation"].toString(), entry[u"order"].toString(), entry[u"lastError"].toString()));
    if (m_shop.isAnyCheckOpen())
        m_findings.append(u"a check is left open"_s);
}

void Proof::deliverAll()
{
    bool good = watchWork();
    for (int i = 0; good && !undelivered().isEmpty() && i < lastAttempts; ++i) {
        sendRefusedAgain();
        m_shop.drain(60s);
        good = watchWork();
    }
}

QJsonArray Proof::undelivered() const
{
    return m_shop.askQueue({u"list"_s}).value(u"entries").toArray();
}

void Proof::judge()
{
    const QByteArray ledger = m_shop.inspect({u"ledger"_s, u"--json"_s}).first;
    const QList<QJsonObject> journal = m_shop.journal();
    const Books books = prove::judge(journal, QJsonDocument::fromJson(ledger)[u"orders"].toArray());
    m_findings += books.findings;
    for (const QStringList &command :
         {QStringList{u"check"_s}, {u"compare"_s, u"--journal"_s, m_shop.writeJournal()}}) {
        const auto [output, status] = m_shop.inspect(command);
        if (status != 0)
            m_findings.append(u"loyalty-sim %1: %2"_s.arg(command.first(), QString::fromUtf8(output)));
    }
    print(u"sales closed"_s, books.closed);
    print(u"  of these with a card"_s, books.closedWithCard);
    print(u"sales voided"_s, books.voided);
    print(u"cards removed, each after a failure"_s, m_shop.cardsRemoved());
    judgeTraffic();
    print(u"lost"_s, books.lost);
    print(u"doubled"_s, books.doubled);
}

void Proof::judgeTraffic()
{
    print(u"processes killed"_s, m_shop.kills());
    const Traffic traffic = count(m_shop.record());
    print(u"exchanges that met with a fault"_s, traffic.faults);
    print(u"refused requests sent again"_s, m_sentAgain);
    print(u"requests refused by the service itself"_s, traffic.refused);
    print(u"requests delivered more than once"_s, traffic.repeats);
    // A killed till may leave a request on its way, which then comes too late.
    if (traffic.refused > killed())
        m_findings.append(u"the service itself has refused more requests than kills can explain"_s);
    if (traffic.repeats == 0)
        m_findings.append(u"nothing was delivered twice, so that nothing is proven about it"_s);
}

} // namespace prove
