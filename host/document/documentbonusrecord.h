// Loyalty points that a check, or one position of it, earns.
#pragma once

#include <poshost_export.h>

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QString>

class POSHOST_EXPORT DocumentBonusRecord
{
    Q_GADGET
    Q_PROPERTY(QString cardNumber MEMBER cardNumber)
    Q_PROPERTY(double amount MEMBER amount)
    Q_PROPERTY(QDateTime dateTime MEMBER dateTime)
    Q_PROPERTY(QString userCode MEMBER userCode)
    Q_PROPERTY(int position MEMBER position)

public:
    QString cardNumber; ///< The card that earns.
    double amount = 0;  ///< Points.
    QDateTime dateTime; ///< When the points were computed.
    QString userCode;   ///< The cashier at the till, User::getCode().
    int position = 0;   ///< GoodsItem::getPosnum(); 0 for the whole check.

    friend bool operator==(const DocumentBonusRecord &, const DocumentBonusRecord &) = default;
};

Q_DECLARE_METATYPE(DocumentBonusRecord)
Q_DECLARE_METATYPE(QList<DocumentBonusRecord>)
