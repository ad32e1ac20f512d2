// How long the window's thread is ever kept from its events while sales go through a bad line.
#include "tests/window/windowdriver.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <iostream>

namespace {

constexpr double limit = 100; // milliseconds
constexpr int sales = 12;

/// Presses the key, and answers what is asked: once more, then without the card.
void carryOut(WindowDriver &shop, Qt::Key key)
{
    shop.press(key);
    for (int asked = 0; shop.isAsked(); ++asked)
        shop.press(asked < 2 ? Qt::Key_F5 : Qt::Key_F10);
}

void sell(WindowDriver &shop)
{
    for (const QString &entry : {u"4600000000059"_s, u"2*4600000000011"_s, u"4600000000097"_s})
        shop.type(entry);
    shop.press(Qt::Key_F3);
    shop.type(u"+79001234567"_s);
    for (const Qt::Key key : {Qt::Key_F4, Qt::Key_F5, Qt::Key_F12})
        carryOut(shop, key);
    shop.press(Qt::Key_Return);
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    if (argc != 2) {
        std::cerr << "Usage: window-gap CONFIG\n";
        return 2;
    }
    WindowDriver shop(QString::fromLocal8Bit(argv[1]));
    if (!shop.ready || !shop.till.view().fault.isEmpty()) {
        std::cerr << "window-gap: " << shop.till.view().fault.toStdString() << '\n';
        return 2;
    }
    QElapsedTimer sinceBeat;
    qint64 longest = 0;
    QTimer heartbeat;
    heartbeat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&heartbeat, &QTimer::timeout, [&] {
        longest = std::max(longest, sinceBeat.nsecsElapsed());
        sinceBeat.start();
    });
    sinceBeat.start();
    heartbeat.start(std::chrono::milliseconds(1));
    for (int sale = 0; sale < sales; ++sale)
        sell(shop);
    const double gap = static_cast<double>(longest) / 1e6;
    std::cout << "ratio window_gap_ms " << gap << ' ' << limit << (gap <= limit ? " ok" : " over") << '\n';
    return gap <= limit ? 0 : 1;
}
