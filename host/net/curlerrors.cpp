// The table of libcurl's results.
#include "curlerrors.h"

QNetworkReply::NetworkError networkErrorOf(CURLcode code)
{
    switch (code) {
    case CURLE_OK:
        return QNetworkReply::NoError;
    case CURLE_URL_MALFORMAT:
        return QNetworkReply::ProtocolUnknownError;
    case CURLE_COULDNT_RESOLVE_HOST:
        return QNetworkReply::HostNotFoundError;
    case CURLE_COULDNT_CONNECT:
        return QNetworkReply::ConnectionRefusedError;
    case CURLE_OPERATION_TIMEDOUT:
        return QNetworkReply::TimeoutError;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_PEER_FAILED_VERIFICATION:
        return QNetworkReply::SslHandshakeFailedError;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_SEND_FAIL_REWIND:
    case CURLE_ABORTED_BY_CALLBACK: // The one callback that aborts keeps a request from being sent twice.
        return QNetworkReply::RemoteHostClosedError;
    case CURLE_WRITE_ERROR: // The receivers refuse bytes over their caps.
    case CURLE_FILESIZE_EXCEEDED:
        return QNetworkReply::UnknownContentError;
    case CURLE_UNSUPPORTED_PROTOCOL: // An answer without a status line; schemes are checked before.
    case CURLE_WEIRD_SERVER_REPLY:
        return QNetworkReply::ProtocolFailure;
    default:
        return QNetworkReply::UnknownNetworkError;
    }
}
