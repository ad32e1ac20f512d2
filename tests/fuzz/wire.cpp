// A body at the simulator, read as each of the requests that it may be.
#include "simulator/wire.h"

#include "fuzz.h"
#include "simulator/refusal.h"

void fuzz(const QByteArray &input)
{
    const auto attempt = [&input](auto read) {
        orRefuse<sim::Refusal>([&] { read(sim::parseObject(input.toStdString())); });
    };
    attempt(sim::readOrder);
    attempt(sim::readBinding);
    attempt(sim::readCancellation);
    attempt(sim::readMessage);
}
