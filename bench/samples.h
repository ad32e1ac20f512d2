// What is sold: checks, the service's answers, and the order's texts for those who build its body by hand.
#pragma once

#include "answerserver.h"
#include "barecurl.h"
#include "client/interface.h"
#include "pairs.h"

#include <document/saledocument.h>

#include <QtCore/QVariant>

namespace bench {

/// Settings of a till whose service is at `url`.
QVariantHash settings(const QString &url);
QVariantHash settings(const AnswerServer &server);

/// A line as it is sold, on no check yet; the same number makes the same line.
QSharedPointer<GoodsItem> makeLine(int number);

/// A check of so many lines, and one where every tenth line carries a bonus already, so that the order's body has
/// impacts to fold.
QSharedPointer<SaleDocument> makePlainCheck(int lines);
QSharedPointer<SaleDocument> makeCheck(int lines);

/// A card of the plugin, on no check yet.
QSharedPointer<DocumentCardRecord> makeCard();

/// What the service answers to each operation, for a check of so many lines.
AnswerServer::Answers answers(int lines);

/// An order's texts, ready to be put into a body.
struct OrderTexts
{
    struct Line
    {
        QString barcode, lineId, quantity, amount, payment;
        bool isSale, noDiscount, noEarn;
    };
    QString brand, cardNumber, onlineStore, basket, date, payment, terminal;
    QList<Line> lines;
};
OrderTexts textsOf(const QJsonObject &body);

/// The body as one would write it by hand.
QJsonObject buildByHand(const OrderTexts &order);

/// A side that sends these by bare libcurl.
Side bareCurl(const QList<Exchange> &exchanges);

/// Where temporary folders are made: on the disk of the build, since that of the system may be in memory.
QString diskFolder();

} // namespace bench
