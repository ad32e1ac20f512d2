// Finds the columns by the names that common exports give them.
#include "replaycolumns.h"

#include <core/basicexception.h>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace till {

namespace {

struct Column
{
    QString name;
    bool required;
    QStringList headers; ///< What exports call it, in lower case, letters only.
};

const QList<Column> &knownColumns()
{
    static const QList<Column> columns{
        {u"invoice"_s,
         true,
         {u"invoice"_s, u"invoiceno"_s, u"invoicenumber"_s, u"invoiceid"_s, u"receipt"_s, u"receiptno"_s,
          u"receiptid"_s, u"check"_s, u"checkno"_s, u"transaction"_s, u"transactionid"_s, u"orderid"_s, u"orderno"_s,
          u"billno"_s, u"чек"_s, u"номерчека"_s}},
        {u"article"_s,
         true,
         {u"article"_s, u"stockcode"_s, u"sku"_s, u"itemcode"_s, u"itemid"_s, u"productid"_s, u"productcode"_s,
          u"barcode"_s, u"ean"_s, u"артикул"_s, u"штрихкод"_s, u"кодтовара"_s}},
        {u"description"_s,
         false,
         {u"description"_s, u"itemname"_s, u"productname"_s, u"product"_s, u"item"_s, u"name"_s, u"наименование"_s,
          u"товар"_s, u"номенклатура"_s}},
        {u"quantity"_s, true, {u"quantity"_s, u"qty"_s, u"количество"_s, u"колво"_s}},
        {u"time"_s,
         false,
         {u"time"_s, u"invoicedate"_s, u"date"_s, u"datetime"_s, u"timestamp"_s, u"transactiondate"_s, u"orderdate"_s,
          u"дата"_s, u"время"_s, u"датавремя"_s}},
        {u"price"_s, true, {u"price"_s, u"unitprice"_s, u"itemprice"_s, u"цена"_s}},
        {u"customer"_s,
         false,
         {u"customer"_s, u"customerid"_s, u"customerno"_s, u"clientid"_s, u"memberid"_s, u"покупатель"_s, u"клиент"_s,
          u"кодклиента"_s}}};
    return columns;
}

QString lettersOf(const QString &header)
{
    QString letters;
    std::copy_if(header.cbegin(), header.cend(), std::back_inserter(letters), [](QChar c) { return c.isLetter(); });
    return letters.toLower();
}

qsizetype find(const Column &column, const QStringList &headers, const QString &given)
{
    const auto found = std::find_if(headers.cbegin(), headers.cend(), [&](const QString &header) {
        return given.isEmpty() ? column.headers.contains(lettersOf(header)) : header.trimmed() == given;
    });
    if (found != headers.cend())
        return found - headers.cbegin();
    if (!given.isEmpty())
        throw BasicException(u"no column \"%1\", which --map gives for %2"_s.arg(given, column.name));
    if (column.required)
        throw BasicException(
            u"no column for %1 among %2; name it: --map %1=COLUMN"_s.arg(column.name, headers.join(u", "_s)));
    return -1;
}

} // namespace

ReplayColumns::ReplayColumns(const QStringList &headers, const QHash<QString, QString> &names)
{
    for (const Column &column : knownColumns())
        m_fields[column.name] = find(column, headers, names.value(column.name));
    for (auto name = names.cbegin(); name != names.cend(); ++name) {
        if (!m_fields.contains(name.key()))
            throw BasicException(u"--map %1: no such column"_s.arg(name.key()));
    }
}

QString ReplayColumns::field(const QStringList &fields, const QString &column) const
{
    return has(column) ? fields.at(m_fields.value(column)).simplified() : QString();
}

} // namespace till
