// One entry of an impact: a discount on one position, or the totals of the whole impact.
#pragma once

#include <document/documentcardrecord.h>
#include <document/ediscountmode.h>
#include <document/ediscountobject.h>
#include <document/ediscounttype.h>
#include <document/eimpactsource.h>
#include <document/storedfield.h>
#include <poshost_export.h>

#include <QtCore/QDateTime>
#include <QtCore/QSharedPointer>

class POSHOST_EXPORT DocumentImpactDetail
{
public:
    virtual ~DocumentImpactDetail() = default;
    DocumentImpactDetail() = default;
    DocumentImpactDetail(const DocumentImpactDetail &) = default;
    DocumentImpactDetail &operator=(const DocumentImpactDetail &) = default;

    /// The card that gave the discount; null if none did.
    QSharedPointer<DocumentCardRecord> getCardRecord() const { return m_cardRecord; }
    void setCardRecord(const QSharedPointer<DocumentCardRecord> &cardRecord) { m_cardRecord = cardRecord; }

    /// getCodeInternal() of that card, which stands for it on disk.
    QVariant getCardIndex() const { return m_cardIndex; }
    void setCardIndex(const QVariant &index) { m_cardIndex = index; }

    QDateTime getDateTime() const { return m_dateTime; }
    void setDateTime(const QDateTime &dateTime) { m_dateTime = dateTime; }

    virtual EDiscountType getDiscountType() const { return m_discountType; }
    void setDiscountType(EDiscountType type) { m_discountType = type; }

    virtual EDiscountMode getDiscountMode() const { return m_discountMode; }
    void setDiscountMode(EDiscountMode mode) { m_discountMode = mode; }

    /// The discount's name on the receipt.
    QString getDiscountName() const { return m_discountName; }
    void setDiscountName(const QString &name) { m_discountName = name; }

    EDiscountObject getDiscountObject() const { return m_discountObject; }
    void setDiscountObject(EDiscountObject object) { m_discountObject = object; }

    /// GoodsItem::getPosnum() of the line; 0 for the whole check.
    virtual int getPosition() const { return m_position; }
    void setPosition(int position) { m_position = position; }

    /// What the discount was computed from: a percentage, a price or a number of points.
    QVariant getDiscountRate() const { return m_discountRate; }
    void setDiscountRate(const QVariant &rate) { m_discountRate = rate; }

    /// In rubles. Whole kopecks once the impact is on a check; getGivenSum() keeps what was given.
    virtual double getDiscountSum() const { return m_discountSum; }
    void setDiscountSum(double rubles) { m_discountSum = m_givenSum = rubles; }

    /// The sum as it was given, in rubles: what getDiscountSum() was before the check rounded it.
    double getGivenSum() const { return m_givenSum; }
    void roundDiscountSum(Money sum) { m_discountSum = sum.toRubles(); }

    EImpactSource getImpactSource() const { return m_impactSource; }
    void setImpactSource(EImpactSource source) { m_impactSource = source; }

    /// Whether the discount may take the line below its minimum price.
    bool isMinPriceIgnored() const { return m_minPriceIgnored; }
    void setMinPriceIgnored(bool ignored) { m_minPriceIgnored = ignored; }

    /// The code of the payment currency that the impact stands for; null where it is no payment.
    virtual QVariant getValutCode() const { return m_valutCode; }
    void setValutCode(const QVariant &code) { m_valutCode = code; }

    static constexpr auto storedFields()
    {
        using Detail = DocumentImpactDetail;
        return std::tuple{
            StoredField("cardIndex", &Detail::m_cardIndex),
            StoredField("dateTime", &Detail::m_dateTime),
            StoredField("discountType", &Detail::m_discountType),
            StoredField("discountMode", &Detail::m_discountMode),
            StoredField("discountName", &Detail::m_discountName),
            StoredField("discountObject", &Detail::m_discountObject),
            StoredField("position", &Detail::m_position),
            StoredField("discountRate", &Detail::m_discountRate),
            StoredField("discountSum", &Detail::m_discountSum, [](const double &sum) { return Money::isSum(sum); }),
            StoredField("givenSum", &Detail::m_givenSum, [](const double &sum) { return Money::isSum(sum); }),
            StoredField("impactSource", &Detail::m_impactSource),
            StoredField("minPriceIgnored", &Detail::m_minPriceIgnored),
            StoredField("valutCode", &Detail::m_valutCode)};
    }

private:
    QSharedPointer<DocumentCardRecord> m_cardRecord;
    QVariant m_cardIndex;
    QDateTime m_dateTime;
    EDiscountType m_discountType = EDiscountType::None;
    EDiscountMode m_discountMode = EDiscountMode::Undefined;
    QString m_discountName;
    EDiscountObject m_discountObject = EDiscountObject::Check;
    int m_position = 0;
    QVariant m_discountRate;
    double m_discountSum = 0;
    double m_givenSum = 0;
    EImpactSource m_impactSource = EImpactSource::Undefined;
    bool m_minPriceIgnored = false;
    QVariant m_valutCode;
};
