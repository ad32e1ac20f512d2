// Whole texts that a program prints, kept in files beside the tests.
#pragma once

#include "file.h"
#include "test.h"

#include <QtCore/QRegularExpression>

inline QString goldenText(const QString &fileName)
{
    return QString::fromUtf8(readFile(QStringLiteral(KVO_SOURCES "/tests/") + fileName)).trimmed();
}

/// Compares the text with a file in tests/, line by line, apart from blanks at the beginning and the end. There "~"
/// stands for what differs from run to run.
inline void expectText(const QString &text, const QString &fileName)
{
    const QStringList lines = text.trimmed().split(u'\n');
    const QString expected = QRegularExpression::escape(goldenText(fileName));
    const QStringList patterns = QString(expected).replace(u"\\~"_s, u".*"_s).split(u"\\\n"_s);
    for (qsizetype i = 0; i < std::max(lines.size(), patterns.size()); ++i) {
        const QRegularExpression pattern(QRegularExpression::anchoredPattern(patterns.value(i)));
        EXPECT_TRUE(pattern.match(lines.value(i)).hasMatch())
            << fileName.toStdString() << ':' << i + 1 << ": " << lines.value(i).toStdString();
    }
}

/// Gives `operation` each case of a file: what comes in, "=>" on a new line, and what comes out, up to a blank line.
template <class Operation>
void expectCases(const QString &fileName, Operation operation)
{
    QStringList cases = goldenText(fileName).split(u"\n\n"_s);
    for (QString &one : cases) {
        const QString in = one.section(u"\n=>"_s, 0, 0);
        one = in + u"\n=>"_s + operation(in.toUtf8());
    }
    expectText(cases.join(u"\n\n"_s), fileName);
}
