// Turns the service's answer into discounts (points spent) and bonus records (points earned).
#include "plugin/plugin.h"

#include <core/currenttime.h>
#include <core/mockfactory.h>
#include <core/session.h>
#include <core/singleton.h>

#include <log4qt/logger.h>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

namespace {

/// Points up to this count as none.
constexpr double pointsTolerance = 0.005;

QSharedPointer<BonusImpact> createBonusImpact(const QSharedPointer<DocumentCardRecord> &card, const QDateTime &now,
                                              int position, double points)
{
    auto detail = QSharedPointer<DocumentImpactDetail>::create();
    detail->setCardRecord(card);
    detail->setCardIndex(card->getCodeInternal());
    detail->setDateTime(now);
    detail->setDiscountType(EDiscountType::Bonus);
    detail->setDiscountMode(EDiscountMode::LoyaltySystem);
    detail->setDiscountName(u"Баллы Kvo"_s);
    detail->setDiscountObject(EDiscountObject::Position);
    detail->setPosition(position);
    detail->setDiscountRate(points);
    detail->setDiscountSum(points);
    detail->setImpactSource(EImpactSource::LoyaltySystem);
    detail->setMinPriceIgnored(true);

    auto impact = QSharedPointer<BonusImpact>::create(detail);
    impact->addDetailForPosition(detail->getPosition(), points);
    return impact;
}

} // namespace

BonusImpactPtrList Plugin::createBonusImpacts(const QSharedPointer<DocumentCardRecord> &card,
                                              const Response &response) const
{
    const QDateTime now = MockFactory<CurrentTime>::create()->currentDateTime();
    BonusImpactPtrList impacts;
    const QJsonArray lines = response.redeemPoints();
    impacts.reserve(lines.size());
    for (const auto &entry : lines) {
        const QJsonObject line = entry.toObject();
        const double points = line.value("points"_L1).toDouble();
        if (points > pointsTolerance)
            impacts.append(createBonusImpact(card, now, line.value("lineId"_L1).toInt(), points));
    }
    return impacts;
}

void Plugin::createBonusRecords(const QSharedPointer<DocumentCardRecord> &card, const Response &response)
{
    const double amount = response.earnPoints();
    DocumentBonusRecord record;
    record.cardNumber = card->getNumber().toString();
    record.amount = amount;
    record.dateTime = MockFactory<CurrentTime>::create()->currentDateTime();
    if (const auto user = Singleton<Session>::instance()->getUser())
        record.userCode = user->getCode().toString();
    bonusRecords = distributeBonusRecord(currentDocument(), record);
    pointsForEarn = amount;
    logger->info(u"Сумма к начислению: %1"_s.arg(QString::number(amount, 'f', 2)));
    card->setPointsForEarn(amount);
}

} // namespace kvo
