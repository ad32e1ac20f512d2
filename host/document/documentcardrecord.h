// A card on a check, with what a loyalty system keeps about it.
#pragma once

#include <core/money.h>
#include <document/card.h>
#include <document/storedfield.h>
#include <poshost_export.h>

#include <QtCore/QVariant>

#include <optional>

class POSHOST_EXPORT DocumentCardRecord
{
public:
    DocumentCardRecord();

    /// The card's number; a text, or null while none is known.
    QVariant getNumber() const { return m_number; }
    void setNumber(const QVariant &number) { m_number = number; }

    /// The record's number within the check, 1 and up; 0 while it is on none.
    int getCodeInternal() const { return m_codeInternal; }
    void setCodeInternal(int code) { m_codeInternal = code; }

    /// The code of the loyalty system that answers for the card; 0 while none does.
    int getLoyaltySystemCode() const { return m_loyaltySystemCode; }
    void setLoyaltySystemCode(int code) { m_loyaltySystemCode = code; }

    /// Never null; its client may be.
    QSharedPointer<Card> getCard() const { return m_card; }

    /// The identifier of the loyalty service's order for this check; empty while there is none.
    QString getOperationId() const { return m_operationId; }
    void setOperationId(const QString &id) { m_operationId = id; }

    /// The order that the loyalty service accepted last, as a JSON object; null while there is none.
    QVariant getOperationInfo() const { return m_operationInfo; }
    void setOperationInfo(const QVariant &info) { m_operationInfo = info; }

    /// Points that may be spent on this check. The setters of points log the field and throw BasicException, with a
    /// text for the cashier and the record unchanged, for a value that is not finite or too large for Money, or
    /// negative for points to spend or earn.
    double getPointsForSpend() const { return m_pointsForSpend; }
    void setPointsForSpend(double points);

    /// Points that this check earns; a double, or null while unknown.
    QVariant getPointsForEarn() const { return variant(m_pointsForEarn); }
    void setPointsForEarn(const QVariant &points);

    /// The card's balance of points; a double, or null while unknown.
    QVariant getBonusBalance() const { return variant(m_bonusBalance); }
    void setBonusBalance(const QVariant &balance);

    /// A map of what else a loyalty system knows about the card, such as "loyaltyStatus" and "loyaltyTier".
    QVariant getExtendedOptions() const { return m_extendedOptions; }
    void setExtendedOptions(const QVariant &options) { m_extendedOptions = options; }

    static constexpr auto storedFields()
    {
        using Record = DocumentCardRecord;
        return std::tuple{
            StoredField("number", &Record::m_number),
            StoredField("codeInternal", &Record::m_codeInternal),
            StoredField("loyaltySystemCode", &Record::m_loyaltySystemCode),
            StoredField("card", &Record::m_card, [](const QSharedPointer<Card> &card) { return !card.isNull(); }),
            StoredField("operationId", &Record::m_operationId),
            StoredField("operationInfo", &Record::m_operationInfo),
            StoredField("pointsForSpend", &Record::m_pointsForSpend,
                        [](const double &points) { return Money::isSum(points); }),
            StoredField("pointsForEarn", &Record::m_pointsForEarn,
                        [](const std::optional<double> &points) { return Money::isSum(points.value_or(0)); }),
            StoredField("bonusBalance", &Record::m_bonusBalance),
            StoredField("extendedOptions", &Record::m_extendedOptions)};
    }

private:
    static QVariant variant(const std::optional<double> &number) { return number ? QVariant(*number) : QVariant(); }

    QVariant m_number;
    int m_codeInternal = 0;
    int m_loyaltySystemCode = 0;
    QSharedPointer<Card> m_card;
    QString m_operationId;
    QVariant m_operationInfo;
    double m_pointsForSpend = 0;
    std::optional<double> m_pointsForEarn;
    std::optional<double> m_bonusBalance;
    QVariant m_extendedOptions;
};
