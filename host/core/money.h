// Money as whole kopecks, so that sums always add up.
#pragma once

#include <poshost_export.h>

#include <QtCore/QList>
#include <QtCore/QString>

#include <compare>

/// An amount in kopecks. Convert to and from rubles only at the border of the document model.
class POSHOST_EXPORT Money
{
public:
    constexpr Money() = default;

    static constexpr Money fromKopecks(qint64 kopecks) { return Money(kopecks); }

    /// Whether `rubles` can be a sum on a check: finite, not negative, and at most 10^12.
    static constexpr bool isSum(double rubles) { return rubles >= 0 && rubles <= largestSum; }

    /// Throws BasicException with a text for the cashier, and logs `field`, unless isSum(rubles).
    static void requireSum(double rubles, const QString &field);

    /// Rounds to the nearest kopeck, halves away from zero: 0.125 and 1.005 become 13 and 101 kopecks. Not a number and
    /// amounts beyond the range become zero.
    static Money fromRubles(double rubles);

    constexpr qint64 kopecks() const { return m_kopecks; }
    double toRubles() const { return static_cast<double>(m_kopecks) / 100; }

    /// "-12.30": two decimals, a point in every locale.
    QString toText() const;

    constexpr bool isZero() const { return m_kopecks == 0; }

    constexpr Money operator-() const { return Money(-m_kopecks); }
    constexpr Money &operator+=(Money other)
    {
        m_kopecks += other.m_kopecks;
        return *this;
    }
    constexpr Money &operator-=(Money other)
    {
        m_kopecks -= other.m_kopecks;
        return *this;
    }
    friend constexpr Money operator+(Money a, Money b) { return a += b; }
    friend constexpr Money operator-(Money a, Money b) { return a -= b; }
    friend constexpr auto operator<=>(Money, Money) = default;

    /// Splits `total` in proportion to `weights` so that the parts add up to it exactly: each gets the running total in
    /// whole kopecks, less what the parts before it got. Weights of zero or below get nothing; if no weight is
    /// positive, the first part gets everything. Without weights there are no parts.
    static QList<Money> distribute(Money total, const QList<Money> &weights);

private:
    // Its kopecks are exact in a double, and any number of such lines adds up in a qint64.
    static constexpr double largestSum = 1e12;

    constexpr explicit Money(qint64 kopecks) : m_kopecks(kopecks) {}

    qint64 m_kopecks = 0;
};
