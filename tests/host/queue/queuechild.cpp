// A process of its own for the tests of the queue, to be killed. Says on its output what it has done, line by line.
#include "queuefixture.h"

#include <queue/queuedrain.h>

#include <unistd.h>

namespace {

void say(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    if (::write(STDOUT_FILENO, bytes.constData(), bytes.size()) != bytes.size())
        ::_exit(1);
}

// Pushes "<order><number>" with growing numbers.
[[noreturn]] void pushForEver(int number)
{
    DBQueueBroker broker;
    for (;; ++number) {
        const QString name = QChar(u'a' + number % 5) + QString::number(number);
        broker.push(u"kvo"_s, eventNamed(name), {});
        say(u"pushed "_s + name);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4)
        return 2;
    const bool hanging = QByteArray(argv[1]) == "hang";
    Singleton<Config>::replace(QSharedPointer<Config>::create(QString::fromLocal8Bit(argv[2])));
    QueueDrain drain;
    drain.setHandler(u"kvo"_s, [hanging](const QJsonObject &event) {
        say(u"sent "_s + nameOf(event));
        while (hanging)
            ::pause();
    });
    drain.start();
    if (!hanging)
        pushForEver(QByteArray(argv[3]).toInt());
    while (true)
        ::pause();
}
