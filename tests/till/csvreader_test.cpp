// CSV files as programs export them, and the day that is read from one.
#include "tests/support/file.h"
#include "tests/support/test.h"
#include "till/csvreader.h"
#include "till/replayreport.h"

namespace {

/// Each record as "line:field|field", with "!" for one that cannot be read.
QString textOf(const QList<till::CsvRecord> &records)
{
    QStringList texts;
    for (const till::CsvRecord &one : records)
        texts.append(QString::number(one.line) + u':' + (one.fault.isEmpty() ? one.fields.join(u'|') : u"!"_s));
    return texts.join(u' ');
}

TEST(CsvReader, ReadsWhatIsExported)
{
    const std::tuple<const char *, QByteArray, QString> cases[]{
        {"byte order mark, CR LF, no end of the last line", "\xEF\xBB\xBF\"x\",y\r\n1,2", u"1:x|y 2:1|2"_s},
        {"semicolons beside decimal commas", "a;b\n1,5;2,5\n", u"1:a|b 2:1,5|2,5"_s},
        {"a separator in the heading's quotes", "\"a,b,c\";d\n1;2\n", u"1:a,b,c|d 2:1|2"_s},
        {"quoted separators and quotes", "a,b\n\"x,y\",\"say \"\"hi\"\"\"\n", u"1:a|b 2:x,y|say \"hi\""_s},
        {"quoted line ends count as lines", "a,b\n\"x\r\ny\nz\",1\n2,3\n", u"1:a|b 2:x\r\ny\nz|1 5:2|3"_s},
        {"a quote within a field", "a,b\n7\" disc,1\n", u"1:a|b 2:7\" disc|1"_s},
        {"empty fields, blank lines, CR", "a,b,c\r\r,,\r\"\",1,\r", u"1:a|b|c 3:|| 4:|1|"_s},
        {"a quote without end", "a,b\n\"x,1\n2,3\n", u"1:a|b 2:! 3:2|3"_s},
        {"not UTF-8", "a,b\n\xA3,1\n2,3\xD0\n4,5\n", u"1:a|b 2:! 3:! 4:4|5"_s},
    };
    for (const auto &[name, data, records] : cases)
        EXPECT_EQ(textOf(till::readCsv(data)), records) << name;
}

/// The day of these lines: receipts as "invoice customer sum", and what is reported of the rest.
QString dayOf(const QByteArray &data, const QHash<QString, QString> &columns = {})
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"day.csv"_s);
    writeFile(file, data);
    QString text;
    const till::Day day = till::readDay(file, columns);
    for (const till::Receipt &receipt : day.receipts)
        text += u"%1 %2 %3\n"_s.arg(receipt.invoice, receipt.customer, till::Day{{receipt}, {}}.sum().toText());
    return text + till::leftOutText(day);
}

TEST(ReplayDay, TellsSalesReturnsAndBadLinesApart)
{
    EXPECT_EQ(dayOf("InvoiceNo,StockCode,Description,Quantity,InvoiceDate,UnitPrice,CustomerID,Country\n"
                    "2,A,Cup,1,2010-12-01 09:00:00,10.00,,UK\n1,A,Cup,6,2010-12-01 08:26:00,2.55,17850.0,UK\n"
                    "C3,A,Cup,-1,2010-12-01 09:41:00,27.50,14527.0,UK\n1,B,,2,2010-12-01 08:26:00,0.45,17850.0,UK\n"
                    "4,B,,-10,2010-12-01 16:50:00,0.3,,UK\n2,A,Cup,none,2010-12-01 09:00:00,1,,UK\n"
                    "2,A,Cup,1,yesterday,1,,UK\n2,A,Cup,1,2010-12-01 09:00:00,-1,,UK\n"
                    "2,A,Cup,0,2010-12-01 09:00:00,1,,UK\n,A,Cup,1,2010-12-01 09:00:00,1,,UK\n2,A,Cup\n"),
              u"1 17850 16.20\n2  10.00\nline 4: cancelled, invoice C3: 1 of A Cup at 27.50\n"
              "line 6: returned, invoice 4: 10 of B B at 0.30\n"
              "line 7: bad, left out: quantity \"none\" is not a number\n"
              "line 8: bad, left out: time \"yesterday\" is not understood\n"
              "line 9: bad, left out: quantity 1 at -1 cannot be sold\n"
              "line 10: bad, left out: quantity 0 at 1 cannot be sold\n"
              "line 11: bad, left out: no invoice or no article\nline 12: bad, left out: 3 fields instead of 8\n"
              "2 receipts with 3 lines for 26.20; not sold: 6 bad lines, 1 returned (3.00), 1 cancelled (27.50)\n"_s);
    const QHash<QString, QString> columns{{u"invoice"_s, u"Bill"_s}, {u"price"_s, u"Net"_s}};
    const QString russian = dayOf("Чек;Артикул;Кол-во;Цена;Дата\n7;A;1,5;1 000,50;01.12.2010 8:26\n");
    EXPECT_TRUE(russian.startsWith(u"7  1500.75\n"_s)) << russian.toStdString();
    EXPECT_TRUE(dayOf("Bill,EAN,qty,Net\n7,A,2,0.05\n", columns).startsWith(u"7  0.10\n"_s));
}

} // namespace
