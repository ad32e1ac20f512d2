// Translates libcurl's results into Qt's network errors. Private to this folder.
#pragma once

#include <curl/curl.h>

#include <QtNetwork/QNetworkReply>

/// NoError for CURLE_OK, UnknownNetworkError for results that an HTTP exchange cannot have.
QNetworkReply::NetworkError networkErrorOf(CURLcode code);
