// Reads CSV files as spreadsheets, databases and tills export them.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QStringList>

namespace till {

struct CsvRecord
{
    int line = 0; ///< Where it begins in the file, counted from 1.
    QStringList fields;
    QString fault; ///< Why the line cannot be read; empty when it can. Reading goes on with the next line.
};

/// Splits UTF-8, with or without a byte order mark, into records; blank lines are skipped. The separator is whichever
/// of comma, semicolon and tab is most frequent in the first line. A field in double quotes may hold separators, line
/// ends and doubled quotes; a quote further inside a field stands for itself.
QList<CsvRecord> readCsv(const QByteArray &data);

} // namespace till
