// A process of its own for the tests of the queue, to be killed: says on its output that it sends an event, and hangs.
#include "queuefixture.h"

#include <unistd.h>

#include <cstdio>

int main(int, char **argv)
{
    Singleton<Config>::replace(QSharedPointer<Config>::create(QString::fromLocal8Bit(argv[1])));
    QueueDelivery delivery(QueueSettings::configured(), {{u"kvo"_s, [](const QJsonObject &) {
                                                              std::puts("sent");
                                                              std::fflush(stdout);
                                                              while (true)
                                                                  ::pause();
                                                          }}});
    return delivery.step() ? 1 : 3;
}
