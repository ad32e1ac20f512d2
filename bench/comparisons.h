// The comparisons, by group. Each one sets up what it needs, checks that both sides do the same, and runs the pairs.
#pragma once

#include "pairs.h"

#include <QtCore/QString>

namespace bench {

// exchange.cpp: Interface::cardInfo() over a kept connection, beside bare libcurl and QNetworkAccessManager. stall():
// by how many milliseconds the slowest of 10,000 exchanges with the service at `url` was slower than its twin.
void exchangeVsCurl(Pairs &pairs);
void exchangeVsQnam(Pairs &pairs);
double stall(const QString &url);

// body.cpp: the order's body and its text.
void bodyVsQJson(Pairs &pairs, int lines);
void bodyVsNlohmann(Pairs &pairs, int lines);
void bodyGrowth(Pairs &pairs);

// sale.cpp: sales with the loaded plugin, beside bare libcurl and beside the floor: libcurl with the bodies built and
// the answers parsed.
void saleVsCurl(Pairs &pairs, int lines);
void saleVsFloor(Pairs &pairs, int lines);
void floorVsCurl(Pairs &pairs, int lines);
void unchangedVsBody(Pairs &pairs);
void saveVsSqlite(Pairs &pairs);
void saveGrowth(Pairs &pairs);

// queue.cpp: the persistent queue, filled and drained; and its requests sent by the client without the queue.
void pushVsSqlite(Pairs &pairs);
void drainVsCurl(Pairs &pairs);
void replayVsCurl(Pairs &pairs);

// With 100,000 events beside 1,000: the till's status line, a push, a look for the next event while all are backing
// off, and while the service is down after a failed probe. Run by scripts/with-postgres, they use its server.
void queueStatusGrowth(Pairs &pairs);
void queuePushGrowth(Pairs &pairs);
void queueDueGrowth(Pairs &pairs);
void queueProbeGrowth(Pairs &pairs);

// saleondisk.cpp: the same sale as kvo-till makes it, saved at each step and with its requests on the queue and
// drained, beside one by the plain means of Qt.
void saleOnDiskVsPlainQt(Pairs &pairs);

// loading.cpp: libKvo.so, and a plugin of the same base classes that does nothing, each in a new process to its end.
// loadOnce() is what that process runs; it prints the seconds.
void loadVsEmptyPlugin(Pairs &pairs);
void loadOnce(const std::string &side);

// till.cpp: kvo-till at the service at `url`. Its peak memory after 2,000 sales as a multiple of that after 200; and
// how often it and its drain wait for the disk (fsync, fdatasync) for one more sale of 20 lines.
double tillMemory(const QString &url);
double syncsPerSale(const QString &url);

} // namespace bench
