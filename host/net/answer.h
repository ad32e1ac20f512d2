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
        Unreadable, ///< JSON that is damaged or would take too much memory, HTML, or no text at all.
    };

    Kind kind = Empty;
    QJsonDocument json{};
    QString fault{}; ///< Why it is unreadable, for the log.
};

/// Takes time in proportion to the body's length, and memory that maxBodySize of RestClient and the limits on nesting
/// and on the number of values keep below 32 MiB.
Answer readAnswer(const QByteArray &body);
