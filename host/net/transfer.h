// One HTTP exchange through libcurl; its content is judged elsewhere. Private to this folder.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtNetwork/QNetworkReply>

#include <chrono>

struct TransferRequest
{
    QByteArray method;
    QByteArray url;  ///< Sent unchanged.
    QByteArray body; ///< Not sent with GET.
    QHash<QString, QString> headers;
    std::chrono::milliseconds timeout{};
};

struct TransferResult
{
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QString reason{}; ///< What went wrong, for the log; without headers, bodies or queries.
    int status{};     ///< 0 when no status line came.
    bool html{};      ///< Its Content-Type is HTML.
    QByteArray body{};
};

/// Sends `request` at most once, or a GET again if a kept connection was dead, and waits for the whole answer, no
/// longer than its time-out. A body of more than `maxBodySize` bytes, or headers and trailers of more than 64 KiB, fail
/// with UnknownContentError. Network failures never throw.
TransferResult transfer(const TransferRequest &request, qsizetype maxBodySize);
