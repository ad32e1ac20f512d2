// Which URLs a request can be sent to.
#pragma once

#include <QtCore/QUrl>

/// Whether the URL has http or https, a host, and a port that can be connected to.
inline bool isHttpAddress(const QUrl &url)
{
    const bool isHttp = url.scheme() == u"http" || url.scheme() == u"https";
    return url.isValid() && isHttp && !url.host().isEmpty() && url.port(80) > 0;
}
