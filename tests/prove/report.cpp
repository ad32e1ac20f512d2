// The figures, one to a line.
#include "report.h"

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace prove {

namespace {

void line(const QString &name, int figure)
{
    std::printf("%-44s %7d\n", qPrintable(name), figure);
}

void lines(const Figures &figures)
{
    for (auto figure = figures.cbegin(); figure != figures.cend(); ++figure)
        line(u"  "_s + figure.key(), figure.value());
}

void group(const QString &name, const Figures &figures)
{
    line(name, total(figures));
    lines(figures);
}

} // namespace

void print(const Result &result, const Options &options)
{
    const Books &books = result.books;
    line(u"sales"_s, books.sales());
    lines({{u"closed"_s, books.closed}, {u"closed with a card"_s, books.closedWithCard}, {u"voided"_s, books.voided}});
    group(u"processes killed"_s, result.kills);
    line(u"exchanges that the service answered"_s, result.traffic.served);
    group(u"faults"_s, result.traffic.faults);
    group(u"requests delivered more than once"_s, result.traffic.repeats);
    line(u"refused requests sent again"_s, result.sentAgain);
    group(u"requests refused by the service itself"_s, result.traffic.refused);
    line(u"cards removed, each after a failure"_s, result.cardsRemoved);
    line(u"left in the queue"_s, result.leftInQueue);
    line(u"lost"_s, books.lost);
    line(u"doubled"_s, books.doubled);
    line(u"different"_s, books.different);
    line(u"left open at the service"_s, books.leftOpen);
    line(u"wrong balances"_s, books.unbalanced);
    for (const QString &finding : books.findings + result.findings)
        std::printf("FOUND: %s\n", qPrintable(finding));
    if (total(result.traffic.repeats) == 0)
        std::printf("FOUND: nothing was delivered twice, so that nothing is proven about it\n");
    std::printf("%s, seed %llu\n", result.isGood() ? "All holds" : "It does not hold", options.seed);
}

} // namespace prove
