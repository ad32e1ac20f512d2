// A day of receipts out of a CSV file, as exported by a shop's books.
#pragma once

#include "goods.h"

#include <QtCore/QDateTime>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

namespace till {

struct Receipt
{
    QString invoice;
    QString customer; ///< As the file names them; empty for a sale without a customer.
    QDateTime time;   ///< Of its first line; invalid when the file has no times.
    QList<Goods> goods;
};

/// A line of the file that is not sold.
struct LeftOut
{
    enum class Kind { Bad, Return, Cancelled };
    Kind kind;
    int line;
    QString text; ///< What is wrong with it, or what was returned.
    Money sum;    ///< What was returned; zero for a bad line.
};

struct Day
{
    QList<Receipt> receipts; ///< In the order of their times, or of the file.
    QList<LeftOut> leftOut;

    qsizetype lines() const;
    Money sum() const;
};

/// Reads the file. Its columns are found by the names in the first line, which `columns` may give by column: invoice,
/// article, description, quantity, time, price, customer. Lines of one invoice make up a receipt. A negative quantity
/// is a return; an invoice number with a leading C is a cancelled one. Prices are rounded to the kopeck. Throws
/// BasicException that names the file when it cannot be read, has no receipts, or lacks a column.
Day readDay(const QString &fileName, const QHash<QString, QString> &columns);

/// The card number of the customer, always the same: it shows numeric identifiers of up to 12 digits, and is a digest
/// of others.
QString cardOf(const QString &customer);

/// The customers of the day as loyalty-sim reads them, each with a card, a tier of 5 % and some points.
QByteArray customersJson(const Day &day);

} // namespace till
