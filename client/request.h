// A request to the loyalty service as a plain value, and its form in the host's queue.
#pragma once

#include <QtCore/QHash>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>

namespace kvo {

struct Request
{
    QNetworkAccessManager::Operation op = QNetworkAccessManager::UnknownOperation;
    QUrl url;                        ///< Complete: host, path, method and query.
    QHash<QString, QString> headers; ///< By name.
    QJsonDocument payload;           ///< Holds an object; null for a query.

    /// The request as a flat object with "op" (number), "url" (text, fully encoded), "headers" and "payload" (objects).
    /// A later run of the till must be able to read it: the form does not change.
    QJsonObject toQueueEvent() const;

    /// The request that toQueueEvent() wrote. Never fails: what is missing or of another type becomes an unknown
    /// operation, an empty URL, no headers, an empty payload object, each on its own.
    static Request fromQueueEvent(const QJsonObject &event);
};

} // namespace kvo
