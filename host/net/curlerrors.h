// What libcurl's results are as Qt's network errors. Private to this folder.
#pragma once

#include <curl/curl.h>

#include <QtNetwork/QNetworkReply>

/// NoError for CURLE_OK, UnknownNetworkError for results that an HTTP exchange does not have.
QNetworkReply::NetworkError networkErrorOf(CURLcode code);
