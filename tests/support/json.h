// JSON written as text in a test.
#pragma once

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <stdexcept>

inline QJsonObject json(const char *text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject())
        throw std::invalid_argument(text);
    return document.object();
}
