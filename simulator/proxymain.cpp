#include "commandline.h"
#include "proxy.h"

#include <iostream>
#include <thread>

constexpr auto outage = std::chrono::milliseconds(50);

int main(int argc, char *argv[])
try {
    int port = 0;
    int servicePort = 0;
    std::uint64_t seed = 0;
    double rate = 0.2;
    std::string only;
    std::filesystem::path recordFile;
    CLI::App app("A bad line to a service on 127.0.0.1. Prints its port and runs until it is killed.", "fault-proxy");
    app.add_option("--service", servicePort, "Port of the service")->required()->check(CLI::Range(1, 65535));
    app.add_option("--port", port, "Port; 0 takes a free one")->check(CLI::Range(0, 65535));
    app.add_option("--seed", seed, "Start of the random numbers");
    app.add_option("--rate", rate, "Probability of a fault in an exchange")
        ->check(CLI::Range(0., 1.))
        ->capture_default_str();
    app.add_option("--only", only, "Draw only this kind of fault");
    app.add_option("--record", recordFile, "File to append faults and requests to, as JSON lines");
    if (const auto status = sim::startProgram(app, argc, argv))
        return *status;
    sim::ProxyFaults faults(seed, rate, only);
    sim::ProxyRecord record(recordFile);
    for (bool isFirst = true;; isFirst = false) {
        sim::Proxy proxy(servicePort, faults, record);
        port = proxy.bind(port);
        if (isFirst)
            std::cout << port << std::endl;
        if (!proxy.run())
            return 1;
        std::this_thread::sleep_for(outage); // with connections refused
    }
} catch (const std::exception &error) {
    std::cerr << "fault-proxy: " << error.what() << std::endl;
    return 2;
}
