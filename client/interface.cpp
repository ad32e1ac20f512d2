// Construction of the service client: the settings, read once.
#include "client/interface.h"

#include "client/settings.h"

#include <core/config.h>
#include <core/singleton.h>

#include <log4qt/logmanager.h>

#include <QtNetwork/QHostAddress>

#include <atomic>

using namespace Qt::Literals::StringLiterals;

namespace kvo {

/// One warning per process: this code is linked into both the plugin and the till.
struct PlainHttpWarning
{
    std::atomic_flag isGiven;
};

namespace {

std::filesystem::path toPath(const QString &text)
{
    return std::filesystem::path(text.toStdString());
}

QHash<QString, QString> commonHeaders(const QString &user, const QString &password)
{
    const QByteArray credentials = (user + u':' + password).toLocal8Bit().toBase64();
    return {{u"Authorization"_s, "Basic "_L1 + QLatin1StringView(credentials)},
            {u"Content-Type"_s, u"application/json"_s}};
}

bool isLoopback(const QString &host)
{
    return host == "localhost"_L1 || QHostAddress(host).isLoopback();
}

void warnOfPlainHttp(const QUrl &url, Log4Qt::Logger &logger)
{
    if (!url.isValid() || url.scheme() != "http"_L1 || isLoopback(url.host()) ||
        Singleton<PlainHttpWarning>::instance()->isGiven.test_and_set())
        return;
    logger.warn(
        u"Обмен с %1 пойдёт без шифрования (http): пароль и данные покупателей будут видны в сети, укажите https "
        "в настройке Kvo:host"_s.arg(url.host()));
}

} // namespace

Interface::Interface() : Interface(utils::ForMock())
{
    const auto config = Singleton<Config>::instance();
    const auto text = [&config](const Setting &one) {
        return config->getString(one.key.toString(), one.defaultValue.toString());
    };
    host = text(setting(u"Kvo:host"));
    path = toPath(text(setting(u"Kvo:path")));
    verificationPath = toPath(text(setting(u"Kvo:verificationPath")));
    warnOfPlainHttp(QUrl(host), *logger);
    headers = commonHeaders(text(setting(u"Kvo:user")), text(setting(u"Kvo:password")));
    timeout = config->getInt(u"Kvo:timeout"_s, setting(u"Kvo:timeout").defaultValue.toInt());
    brand = text(setting(u"Kvo:brand"));
    verificationBrand = config->getString(u"Kvo:verificationBrand"_s, brand);
    onlineStore = text(setting(u"Kvo:onlineStore"));
    terminal = text(setting(u"Kvo:terminal"));
}

Interface::Interface(utils::ForMock) : logger(Log4Qt::LogManager::logger(u"kvo"_s))
{}

Interface::~Interface() = default;

} // namespace kvo
