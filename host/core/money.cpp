// Arithmetic of whole kopecks. Products are computed in wide integers, so that no valid sum overflows on the way.
#include <core/basicexception.h>
#include <core/money.h>

#include <log4qt/logger.h>
#include <log4qt/logmanager.h>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace Qt::Literals::StringLiterals;

namespace {

__extension__ using Wide = __int128;

constexpr double largestRubles = 9e16;

// The decimal digits that every double holds: a number written with so many digits comes back unchanged.
constexpr int significantDigits = 15;

constexpr qint64 powerOfTen(int exponent)
{
    qint64 power = 1;
    for (; exponent > 0; --exponent)
        power *= 10;
    return power;
}

} // namespace

Money Money::fromRubles(double rubles)
{
    if (!std::isfinite(rubles) || std::abs(rubles) >= largestRubles)
        return {};
    // Nearly all amounts are a whole number of kopecks up to the last bits. Only close to half a kopeck do the digits
    // matter; they cost 0.2 microseconds an amount.
    constexpr double largestSurelyRounded = 1e12;
    const double nearest = std::round(rubles * 100);
    if (std::abs(rubles) < largestSurelyRounded && std::abs(rubles * 100 - nearest) < 0.25)
        return Money(static_cast<qint64>(nearest));
    // "d.dddddddddddddde±xx", in every locale.
    const QByteArray text = QByteArray::number(std::abs(rubles), 'e', significantDigits - 1);
    const qint64 digits = (text.left(1) + text.mid(2, significantDigits - 1)).toLongLong();
    const int shift = text.mid(significantDigits + 2).toInt() - (significantDigits - 1) + 2;
    if (shift < -significantDigits)
        return {};
    const qint64 scale = powerOfTen(std::abs(shift));
    const qint64 kopecks = shift >= 0 ? digits * scale : (digits + scale / 2) / scale;
    return Money(rubles < 0 ? -kopecks : kopecks);
}

void Money::requireSum(double rubles, const QString &field)
{
    if (isSum(rubles))
        return;
    Log4Qt::LogManager::logger(u"poshost.document"_s)
        ->error(u"%1: недопустимая сумма %2"_s.arg(field, QString::number(rubles)));
    throw BasicException(u"Получена недопустимая сумма. Повторите операцию или продолжите без карты"_s);
}

QString Money::toText() const
{
    const quint64 amount = m_kopecks < 0 ? 0 - static_cast<quint64>(m_kopecks) : static_cast<quint64>(m_kopecks);
    const QString text = QString::number(amount / 100) + u'.' + QString::number(amount % 100).rightJustified(2, u'0');
    return m_kopecks < 0 ? u'-' + text : text;
}

QList<Money> Money::distribute(Money total, const QList<Money> &weights)
{
    Wide weightSum = 0;
    for (const Money weight : weights)
        weightSum += std::max<qint64>(weight.m_kopecks, 0);
    QList<Money> parts(weights.size());
    if (parts.isEmpty())
        return parts;
    if (weightSum == 0) {
        parts.first() = total;
        return parts;
    }

    Money left = total;
    QList<Wide> remainders(weights.size());
    for (qsizetype i = 0; i < weights.size(); ++i) {
        const Wide product = Wide{total.m_kopecks} * std::max<qint64>(weights[i].m_kopecks, 0);
        parts[i] = Money(static_cast<qint64>(product / weightSum));
        remainders[i] = product % weightSum;
        left -= parts[i];
    }

    QList<qsizetype> order(weights.size());
    std::iota(order.begin(), order.end(), 0);
    // Remainders have the sign of the total.
    const int sign = total.m_kopecks < 0 ? -1 : 1;
    std::stable_sort(order.begin(), order.end(),
                     [&](qsizetype a, qsizetype b) { return remainders[a] * sign > remainders[b] * sign; });
    for (qsizetype i = 0; !left.isZero(); ++i) {
        parts[order[i]] += Money(sign);
        left -= Money(sign);
    }
    return parts;
}
