// A process of its own for the tests of the queue, to be killed: says on its output that it sends an event, and hangs.
#include "queuefixture.h"

#include <unistd.h>

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    Singleton<Config>::replace(QSharedPointer<Config>::create(QString::fromLocal8Bit(argv[1])));
    QueueDelivery delivery(QueueSettings::configured(), {{u"kvo"_s, [](const QJsonObject &) {
                                                              if (::write(STDOUT_FILENO, "sent\n", 5) != 5)
                                                                  return;
                                                              while (true)
                                                                  ::pause();
                                                          }}});
    return delivery.step() ? 1 : 3;
}
