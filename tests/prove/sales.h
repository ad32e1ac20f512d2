// Random sales, as scenarios for the till.
#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <random>

namespace prove {

/// The customers of the shop, in the form that the service's stand-in reads.
extern const char customers[];

/// The same seed makes the same sales.
class Sales
{
public:
    explicit Sales(quint64 seed) : m_random(seed) {}

    /// A shift of a few checks. It begins by ending the check that an earlier, killed shift may have left open.
    QJsonObject shift();

    /// Only that ending.
    QJsonObject lastShift() { return {{QStringLiteral("checks"), QJsonArray{continuation()}}}; }

private:
    int number(int least, int most) { return std::uniform_int_distribution(least, most)(m_random); }
    bool chance(int percent) { return number(1, 100) <= percent; }
    QJsonObject goods();
    QJsonArray cardSteps();
    QJsonValue changeOrPrice();
    QString ending();
    QJsonObject answers();
    QJsonObject newCheck();
    QJsonObject continuation();

    std::mt19937_64 m_random;
};

} // namespace prove
