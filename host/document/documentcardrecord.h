// A card on a check, with what a loyalty system keeps about it.
#pragma once

#include <document/card.h>
#include <poshost_export.h>

#include <QtCore/QVariant>

class JsonWriter;

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

    /// Points that may be spent on this check.
    double getPointsForSpend() const { return m_pointsForSpend; }
    void setPointsForSpend(double points) { m_pointsForSpend = points; }

    /// Points that this check earns; a double, or null while unknown.
    QVariant getPointsForEarn() const { return m_pointsForEarn; }
    void setPointsForEarn(const QVariant &points) { m_pointsForEarn = points; }

    /// The card's balance of points; a double, or null while unknown.
    QVariant getBonusBalance() const { return m_bonusBalance; }
    void setBonusBalance(const QVariant &balance) { m_bonusBalance = balance; }

    /// A map with what else a loyalty system tells about the card, such as "loyaltyStatus" and "loyaltyTier".
    QVariant getExtendedOptions() const { return m_extendedOptions; }
    void setExtendedOptions(const QVariant &options) { m_extendedOptions = options; }

    /// All of the record, its client included, to a file, and back. fromMap() throws BasicException that names the
    /// entry that is missing or of a wrong type.
    void writeTo(JsonWriter &json) const;
    static QSharedPointer<DocumentCardRecord> fromMap(const QVariantMap &map);

private:
    QVariant m_number;
    int m_codeInternal = 0;
    int m_loyaltySystemCode = 0;
    QSharedPointer<Card> m_card;
    QString m_operationId;
    QVariant m_operationInfo;
    double m_pointsForSpend = 0;
    QVariant m_pointsForEarn;
    QVariant m_bonusBalance;
    QVariant m_extendedOptions;
};
