// What every test takes for granted: GoogleTest, its most common words, Qt's literals, a temporary folder, and Qt texts
// that can be read in GoogleTest's messages, which only works if each source of a program sees how to print them.
#pragma once

#include <gmock/gmock.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

#include <ostream>

using namespace Qt::Literals::StringLiterals;
using testing::AllOf;
using testing::HasSubstr;

inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QJsonObject &object, std::ostream *out)
{
    *out << QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}
