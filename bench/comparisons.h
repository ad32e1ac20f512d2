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

// loading.cpp: libKvo.so, in a new process each time, to its end; or by Qt's loader only, without an instance.
// loadOnce() is what that process runs; it prints the seconds.
void loadVsDlopen(Pairs &pairs);
void loaderVsDlopen(Pairs &pairs);
void loadOnce(const std::string &side);

// till.cpp: the peak memory of kvo-till after 2,000 sales at the service at `url`, as a multiple of that after 200.
double tillMemory(const QString &url);

} // namespace bench
