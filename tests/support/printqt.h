// Lets GoogleTest print Qt texts and JSON in its messages.
#pragma once

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <ostream>

inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QJsonObject &object, std::ostream *out)
{
    *out << QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}
