// Reads the body of an answer. Private to this folder.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QString>

struct Answer
{
    enum Kind {
        Empty,
        Json,
        Text,       ///< Neither JSON nor meant to be, such as "accepted".
        Unreadable, ///< Damaged JSON, JSON that would take too much memory, HTML, XML, or binary data.
    };

    Kind kind = Empty;
    QJsonDocument json{};
    QString fault{}; ///< Why it is unreadable, for the log.
};

/// Takes time proportional to the body's length. RestClient::maxBodySize and the limits on nesting and on the number of
/// values keep the memory below 32 MiB.
Answer readAnswer(const QByteArray &body);
