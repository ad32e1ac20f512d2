// One HTTP exchange on libcurl, not yet judged by what it brought. Private to this folder.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtNetwork/QNetworkReply>

#include <chrono>

struct TransferRequest
{
    QByteArray method;
    QByteArray url;  ///< Sent as it is.
    QByteArray body; ///< Not sent with GET.
    QHash<QString, QString> headers;
    std::chrono::milliseconds timeout{};
};

struct TransferResult
{
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QString reason{};  ///< What went wrong, for the log; free of headers, bodies and queries.
    int status = 0;    ///< 0 when no status line came.
    bool html = false; ///< The answer calls itself HTML.
    QByteArray body{};
};

/// Sends `request` at most once and waits for the whole answer, at most the time-out. Answers with a body of more than
/// `maxBodySize` bytes, or with more than 64 KiB of headers and trailers, fail with UnknownContentError. Never throws
/// for what happens on the network.
TransferResult transfer(const TransferRequest &request, qsizetype maxBodySize);
