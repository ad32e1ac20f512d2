// Turns the lines of a file that was not made for tills into receipts; lines that do not fit are reported.
#include "replayday.h"

#include "csvreader.h"
#include "replaycolumns.h"

#include <core/basicexception.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <numeric>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

std::optional<double> toNumber(QString text)
{
    static const QRegularExpression number(u"^[+-]?(\\d+([.,]\\d*)?|[.,]\\d+)$"_s);
    text.removeIf([](QChar character) { return character.isSpace(); });
    if (!number.match(text).hasMatch())
        return std::nullopt;
    return text.replace(u',', u'.').toDouble();
}

/// Which of day and month comes first does not matter where all lines are of one day.
QDateTime toTime(const QString &text)
{
    if (const QDateTime time = QDateTime::fromString(text, Qt::ISODate); time.isValid())
        return time;
    for (const QString &date : {u"d.M.yyyy "_s, u"M/d/yyyy "_s, u"d/M/yyyy "_s, QString()}) {
        for (const QString &clock : {u"H:mm:ss"_s, u"H:mm"_s}) {
            if (const QDateTime time = QDateTime::fromString(text, date + clock); time.isValid())
                return time;
        }
    }
    return {};
}

/// Spreadsheets that read a column with gaps as decimal numbers write 17850.0.
QString withoutFraction(const QString &customer)
{
    static const QRegularExpression wholeNumber(u"^\\d+\\.0$"_s);
    return wholeNumber.match(customer).hasMatch() ? customer.chopped(2) : customer;
}

Money sumOf(const Goods &goods)
{
    return makeItem(goods)->getSum();
}

class DayReader
{
public:
    DayReader(const QString &fileName, const QHash<QString, QString> &names) : m_fileName(fileName), m_names(names) {}

    Day read()
    {
        QFile file(m_fileName);
        if (!file.open(QFile::ReadOnly))
            fail(file.errorString());
        const QList<CsvRecord> records = readCsv(file.readAll());
        if (records.isEmpty())
            fail(u"the file is empty"_s);
        readHeader(records.constFirst());
        for (const CsvRecord &record : records.sliced(1))
            readRecord(record);
        const auto bad = std::ranges::find(m_day.leftOut, LeftOut::Kind::Bad, &LeftOut::kind);
        if (m_day.receipts.isEmpty() && bad != m_day.leftOut.end())
            fail(u"there are no receipts to sell; line %1: %2"_s.arg(QString::number(bad->line), bad->text));
        if (m_day.receipts.isEmpty())
            fail(u"there are no receipts to sell"_s);
        std::stable_sort(m_day.receipts.begin(), m_day.receipts.end(),
                         [](const Receipt &a, const Receipt &b) { return a.time < b.time; });
        return m_day;
    }

private:
    [[noreturn]] void fail(const QString &reason) const { throw BasicException(m_fileName + u": "_s + reason); }

    void readHeader(const CsvRecord &header)
    {
        if (!header.fault.isEmpty())
            fail(u"line 1: "_s + header.fault);
        try {
            m_columns = ReplayColumns(header.fields, m_names);
        } catch (const BasicException &error) {
            fail(error.text().ru());
        }
        m_fieldCount = header.fields.size();
    }

    void readRecord(const CsvRecord &record)
    {
        const bool isBlank = std::all_of(record.fields.cbegin(), record.fields.cend(),
                                         [](const QString &field) { return field.trimmed().isEmpty(); });
        if (isBlank && record.fault.isEmpty())
            return;
        QString fault = record.fault;
        if (fault.isEmpty() && record.fields.size() != m_fieldCount)
            fault =
                u"%1 fields instead of %2"_s.arg(QString::number(record.fields.size()), QString::number(m_fieldCount));
        if (fault.isEmpty())
            fault = readLine(record);
        if (!fault.isEmpty())
            m_day.leftOut.append({LeftOut::Kind::Bad, record.line, fault, {}});
    }

    /// Returns what is wrong with the line.
    QString readLine(const CsvRecord &record)
    {
        const auto field = [&](const QString &column) { return m_columns.field(record.fields, column); };
        const QString invoice = field(u"invoice"_s);
        const QDateTime time = toTime(field(u"time"_s));
        Goods goods;
        goods.barcode = field(u"article"_s);
        goods.name = field(u"description"_s);
        if (invoice.isEmpty() || goods.barcode.isEmpty())
            return u"no invoice or no article"_s;
        if (goods.name.isEmpty())
            goods.name = goods.barcode;
        if (!time.isValid() && m_columns.has(u"time"_s))
            return u"time \"%1\" is not understood"_s.arg(field(u"time"_s));
        const QString fault = readAmounts(field(u"quantity"_s), field(u"price"_s), goods);
        if (!fault.isEmpty())
            return fault;
        static const QRegularExpression cancelled(u"^[Cc]\\d"_s);
        if (const bool isCancelled = cancelled.match(invoice).hasMatch(); isCancelled || goods.quantity < 0)
            takeBack(record.line, isCancelled ? LeftOut::Kind::Cancelled : LeftOut::Kind::Return, invoice, goods);
        else
            addToReceipt(invoice, withoutFraction(field(u"customer"_s)), time, goods);
        return {};
    }

    /// Returns what is wrong with them.
    static QString readAmounts(const QString &quantityText, const QString &priceText, Goods &goods)
    {
        const auto quantity = toNumber(quantityText);
        const auto price = toNumber(priceText);
        if (!quantity)
            return u"quantity \"%1\" is not a number"_s.arg(quantityText);
        if (!price)
            return u"price \"%1\" is not a number"_s.arg(priceText);
        goods.quantity = *quantity;
        goods.price = Money::fromRubles(*price);
        if (*price < 0 || !GoodsItem::isSaleable(std::abs(*quantity), goods.price))
            return u"quantity %1 at %2 cannot be sold"_s.arg(quantityText, priceText);
        return {};
    }

    void takeBack(int line, LeftOut::Kind kind, const QString &invoice, Goods goods)
    {
        goods.quantity = std::abs(goods.quantity);
        const QString text = u"invoice %1: %2 of %3 %4 at %5"_s.arg(invoice, QString::number(goods.quantity),
                                                                    goods.barcode, goods.name, goods.price.toText());
        m_day.leftOut.append({kind, line, text, sumOf(goods)});
    }

    void addToReceipt(const QString &invoice, const QString &customer, const QDateTime &time, const Goods &goods)
    {
        const auto known = m_receipts.constFind(invoice);
        if (known == m_receipts.constEnd()) {
            m_receipts.insert(invoice, m_day.receipts.size());
            m_day.receipts.append({invoice, customer, time, {goods}});
            return;
        }
        Receipt &receipt = m_day.receipts[*known];
        receipt.goods.append(goods);
        if (receipt.customer.isEmpty())
            receipt.customer = customer;
    }

    QString m_fileName;
    QHash<QString, QString> m_names; ///< Of columns, as given.
    ReplayColumns m_columns;
    qsizetype m_fieldCount = 0;
    QHash<QString, qsizetype> m_receipts; ///< By invoice.
    Day m_day;
};

} // namespace

qsizetype Day::lines() const
{
    return std::accumulate(receipts.cbegin(), receipts.cend(), qsizetype{0},
                           [](qsizetype sum, const Receipt &receipt) { return sum + receipt.goods.size(); });
}

Money Day::sum() const
{
    Money total;
    for (const Receipt &receipt : receipts) {
        for (const Goods &goods : receipt.goods)
            total += sumOf(goods);
    }
    return total;
}

Day readDay(const QString &fileName, const QHash<QString, QString> &columns)
{
    return DayReader(fileName, columns).read();
}

QString cardOf(const QString &customer)
{
    static const QRegularExpression shortNumber(u"^[1-9]\\d{0,11}$"_s);
    constexpr int digits = 12;
    if (shortNumber.match(customer).hasMatch())
        return u'2' + customer.rightJustified(digits, u'0');
    const QByteArray digest = QCryptographicHash::hash(customer.toUtf8(), QCryptographicHash::Sha256).toHex();
    constexpr quint64 numbers = 1'000'000'000'000;
    return u'3' + QString::number(digest.first(15).toULongLong(nullptr, 16) % numbers).rightJustified(digits, u'0');
}

QByteArray customersJson(const Day &day)
{
    QMap<QString, QString> names;
    for (const Receipt &receipt : day.receipts) {
        if (!receipt.customer.isEmpty())
            names.insert(cardOf(receipt.customer), receipt.customer);
    }
    QJsonArray customers;
    for (auto name = names.cbegin(); name != names.cend(); ++name) {
        const QJsonObject tier{{u"Name"_s, u"Tier"_s}, {u"Discount"_s, 5}};
        customers.append(QJsonObject{{u"CustAccount"_s, u"R-"_s + name.value()},
                                     {u"LastName"_s, u"Customer"_s},
                                     {u"FirstName"_s, name.value()},
                                     {u"Phone"_s, u'+' + name.key()},
                                     {u"Cards"_s, QJsonArray{name.key()}},
                                     {u"Tiers"_s, QJsonArray{tier}},
                                     {u"Balance"_s, u"100.00"_s}});
    }
    return QJsonDocument(customers).toJson();
}

} // namespace till
