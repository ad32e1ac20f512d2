// Arithmetic in whole kopecks. Products are wide integers, so that no valid sum overflows on the way.
#include <core/basicexception.h>
#include <core/money.h>

#include <log4qt/logger.h>
#include <log4qt/logmanager.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

__extension__ using Wide = __int128;

constexpr double largestRubles = 9e16;

} // namespace

Money Money::fromRubles(double rubles)
{
    if (!(std::abs(rubles) < largestRubles))
        return {};
    // 1.005 is stored as slightly less. The nudge lifts such halves again; up to 10^12 rubles it is less than a tenth
    // of a kopeck.
    constexpr double nudge = 1 + 4 * std::numeric_limits<double>::epsilon();
    const double kopecks = rubles * 100;
    return Money(static_cast<qint64>(std::round(std::abs(rubles) > largestSum ? kopecks : kopecks * nudge)));
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

    Wide upTo = 0;
    Money given;
    for (qsizetype i = 0; i < weights.size(); ++i) {
        upTo += std::max<qint64>(weights[i].m_kopecks, 0);
        const Money due(static_cast<qint64>(total.m_kopecks * upTo / weightSum));
        parts[i] = due - std::exchange(given, due);
    }
    return parts;
}
