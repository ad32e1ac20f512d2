// Uses a little of every library in the package.
#include <core/basicexception.h>
#include <core/config.h>
#include <core/money.h>
#include <core/singleton.h>
#include <net/restclient.h>

#include <log4qt/logmanager.h>

int main()
{
    RestClient client;
    client.request(QNetworkAccessManager::GetOperation, QUrl(), {}, {});
    Log4Qt::LogManager::logger(QStringLiteral("consumer"))->warn(client.response().errorText().ru());
    const Money rubles = Money::fromRubles(Singleton<Config>::instance()->getDouble(QStringLiteral("none"), 1.005));
    try {
        Config(QStringLiteral("/nowhere"));
    } catch (const BasicException &) {
        return rubles.kopecks() == 101 ? 0 : 1;
    }
    return 2;
}
