// The result of a check: the single source of the receipt, the journal entry and a scenario's expectations.
#pragma once

#include <core/money.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <optional>

class DocumentCardRecord;
class SaleDocument;

namespace till {

struct ResultLine
{
    int lineId = 0; ///< The line's number on the check, as the loyalty service knows it.
    QString name;
    double quantity = 1;
    Money price;
    Money amount;            ///< Before the points discount.
    Money spent;             ///< The points discount.
    bool takesPoints = true; ///< Points may pay for it.
    bool earnsPoints = true;
};

struct CheckResult
{
    QString identifier;
    QDateTime dateTime;
    QString outcome; ///< "open", "closed" or "voided".
    QList<ResultLine> lines;
    QString card; ///< Empty when no card is on the check.
    QString basket;
    QString customer;
    QString tier;
    std::optional<Money> balance;
    Money earned;
    QString loyaltyOff; ///< Why no cards are accepted now; empty while they are.
    Money offered = {}; ///< Points that can be spent; zero until the check is priced.
    QString cashier = {};
    bool isOffered = false; ///< `offered` is for the check as it is.
    bool isPriced = false;  ///< `earned` is for the check as it is.

    Money sum() const;
    Money spent() const;
    Money total() const { return sum() - spent(); }
    /// What the balance becomes; nothing where none is known, or where it has changed since: it would not have
    /// sufficed.
    std::optional<Money> balanceAfter() const;

    /// By the keys that a scenario expects them under; sums with two decimals.
    QMap<QString, QString> fields() const;

    /// The line of the journal.
    QJsonObject toJournal() const;
};

/// A finished check as its entry in the journal tells it.
CheckResult resultFromJournal(const QJsonObject &entry);

/// Reads everything off the check, its card (null: none) and the points that it earns.
CheckResult resultOf(const SaleDocument &document, const QSharedPointer<DocumentCardRecord> &card, double earned);

} // namespace till
