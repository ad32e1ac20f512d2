// CSV files as programs export them, and the day that is read from one.
#include "tests/support/golden.h"
#include "tests/support/refusal.h"
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
        {"a separator and a line end in the heading's quotes", "\"a,b\n,c\";d\n1;2\n", u"1:a,b\n,c|d 3:1|2"_s},
        {"other separators, more in the next line", "a,b,c;d\n1,;;;;;2,3\n", u"1:a|b|c;d 2:1|;;;;;2|3"_s},
        {"quoted separators and quotes", "a,b\n\"x,y\",\"say \"\"hi\"\"\"\n", u"1:a|b 2:x,y|say \"hi\""_s},
        {"quoted line ends count as lines", "a,b\n\"x\r\ny\rz\",1\n2,3\n", u"1:a|b 2:x\r\ny\rz|1 5:2|3"_s},
        {"a quote within a field", "a,b\n7\" disc,1\n", u"1:a|b 2:7\" disc|1"_s},
        {"empty fields, blank lines, CR", "a,b,c\r\r,,\r\"\",;;;;;;;,\r", u"1:a|b|c 3:|| 4:|;;;;;;;|"_s},
        {"stray quotes", "a,b\n\"y\"z,1\n\"x,1\n2,3\n", u"1:a|b 2:! 3:! 4:2|3"_s},
        {"not UTF-8", "a,b\n\xA3,1\n2,3\xD0\n4,5\n", u"1:a|b 2:! 3:! 4:4|5"_s},
    };
    for (const auto &[name, data, records] : cases)
        EXPECT_EQ(textOf(till::readCsv(data)), records) << name;
}

/// The day of these lines: receipts as "invoice customer sum", what is reported of the rest, the customers, and a table
/// of times.
QString dayOf(const QByteArray &data, const QHash<QString, QString> &columns = {})
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"day.csv"_s);
    writeFile(file, data);
    QString text;
    const till::Day day = till::readDay(file, columns);
    for (const till::Receipt &receipt : day.receipts)
        text += u"%1 %2 %3\n"_s.arg(receipt.invoice, receipt.customer, till::Day{{receipt}, {}}.sum().toText());
    till::ReplayedReceipt sold;
    sold.milliseconds = {{u"price"_s, {3, 1, 2}}, {u"close"_s, QList<double>(50, 4) << 5}};
    return text + till::leftOutText(day) + QString::fromUtf8(till::customersJson(day)) +
           till::timesText({sold, till::ReplayedReceipt::fromJson(sold.toJson())});
}

TEST(ReplayDay, TellsSalesReturnsAndBadLinesApart)
{
    const QByteArray file = readFile(QStringLiteral(KVO_SOURCES "/tests/till/day.csv"));
    expectText(dayOf(file), u"till/day.txt"_s);
    const QHash<QString, QString> columns{{u"invoice"_s, u"Bill"_s}, {u"price"_s, u"Net"_s}};
    const QString russian = dayOf("Чек;Артикул;Кол-во;Цена;Дата\n7;A;1,5;1 000,50;01.12.2010 8:26\n");
    EXPECT_TRUE(russian.startsWith(u"7  1500.75\n"_s)) << russian.toStdString();
    EXPECT_TRUE(dayOf("Bill,EAN,qty,Net\n7,A,2,0.05\n", columns).startsWith(u"7  0.10\n"_s));
    const std::pair<const char *, const char *> refused[]{
        {"", "the file is empty"},
        {"\"a\n", "line 1: a quoted field does not end"},
        {"a\n", "no column \"Bill\", which --map gives for invoice"},
        {"Bill,sku,Net\n", "no column for quantity among Bill, sku, Net; name it: --map quantity=COLUMN"},
        {"Bill,sku,qty,Net\n", "there are no receipts to sell"},
    };
    for (const auto &[data, reason] : refused)
        EXPECT_THAT(refusalOf([&, text = data] { dayOf(text, columns); }).toStdString(),
                    HasSubstr(std::string("day.csv: ") + reason));
}

} // namespace
