// fault-proxy: between a till and its service on loopback; does to their exchanges what networks do.
#include "proxyconnection.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <thread>

namespace {

struct Options
{
    int port = 0;
    int servicePort = 0;
    std::uint64_t seed = 0;
    double rate = 0;
    std::string only;
    std::filesystem::path record;
};

/// A broken framing must not end in a proof that looks good: it ends the process.
void carry(prove::ProxyConnection &connection)
try {
    connection.run();
} catch (const std::exception &error) {
    std::cerr << "fault-proxy: " << error.what() << std::endl;
    std::_Exit(2);
}

[[noreturn]] void serve(const Options &options)
{
    prove::FaultSource faults(options.seed, options.rate, options.only);
    const prove::Record record(options.record);
    prove::Listener listener(options.port);
    std::cout << listener.port() << std::endl;
    listener.run([&](prove::Socket till) {
        std::thread([connection = prove::ProxyConnection(std::move(till), options.servicePort, faults, listener,
                                                         record)]() mutable {
            carry(connection);
        }).detach();
    });
}

} // namespace

int main(int argc, char *argv[])
try {
    Options options;
    CLI::App program("Fault proxy on 127.0.0.1. Prints its port and serves until it is killed.", "fault-proxy");
    program.add_option("--port", options.port, "Port; 0 takes a free one")->check(CLI::Range(0, 65535));
    program.add_option("--service", options.servicePort, "Port of the service")
        ->required()
        ->check(CLI::Range(1, 65535));
    program.add_option("--seed", options.seed, "Start of the random numbers");
    program.add_option("--rate", options.rate, "Part of the exchanges that meet with a fault")
        ->check(CLI::Range(0., 1.));
    program.add_option("--only", options.only, "The one kind of fault to draw");
    program.add_option("--record", options.record, "File to append to what was done and seen")->required();
    CLI11_PARSE(program, argc, argv);
    serve(options);
} catch (const std::exception &error) {
    std::cerr << "fault-proxy: " << error.what() << std::endl;
    return 2;
}
