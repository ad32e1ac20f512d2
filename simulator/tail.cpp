// Reads the server's events line by line.
#include "tail.h"

#include "fields.h"
#include "plaintext.h"

#include <httplib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

namespace sim {

namespace {

constexpr auto longestSilence = std::chrono::seconds(30); // the server sends something every two
constexpr std::size_t longestAnswer = 1000;               // of another server

enum class Colour { Good = 32, Refused = 31, Faulty = 35 };

class Printer
{
public:
    explicit Printer(bool json) : m_json(json), m_coloured(::isatty(STDOUT_FILENO) == 1 && !std::getenv("NO_COLOR")) {}

    /// Takes the stream's bytes as they come. False when the output is closed.
    bool feed(const char *data, std::size_t size)
    {
        m_buffer.append(data, size);
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = m_buffer.find('\n', begin)) != std::string::npos; begin = end + 1)
            line(m_buffer.substr(begin, end - begin));
        m_buffer.erase(0, begin);
        return static_cast<bool>(std::cout.flush());
    }

private:
    void line(const std::string &text)
    {
        if (text.starts_with("event: "))
            m_event = text.substr(7);
        else if (text.starts_with("data: ") && m_event == "request")
            print(Json::parse(text.substr(6)));
    }

    void print(const Json &request) const
    {
        if (request["milliseconds"].is_null())
            return; // still running; comes again
        std::cout << (m_json ? request.dump() : row(request)) << '\n';
    }

    std::string row(const Json &request) const
    {
        const std::string reason = plainText(request["reason"]);
        const std::string fault = request["fault"];
        const int status = request["status"];
        const std::string shown = status == 0 ? "none" : std::to_string(status);
        char head[80];
        std::snprintf(head, sizeof head, "%s  %-18s %4s %8.1f ms  ",
                      request["at"].get<std::string>().substr(11).c_str(), request["method"].get<std::string>().c_str(),
                      shown.c_str(), request["milliseconds"].get<double>());
        const Colour colour = !fault.empty() ? Colour::Faulty : reason.empty() ? Colour::Good : Colour::Refused;
        return painted(head, colour) + (reason.empty() ? "ok" : reason);
    }

    std::string painted(const std::string &text, Colour colour) const
    {
        return m_coloured ? "\x1b[" + std::to_string(static_cast<int>(colour)) + "m" + text + "\x1b[0m" : text;
    }

    bool m_json;
    bool m_coloured;
    std::string m_buffer;
    std::string m_event;
};

} // namespace

int tail(const TailOptions &options)
{
    httplib::Client server("127.0.0.1", options.port);
    server.set_read_timeout(longestSilence);
    Printer printer(options.json);
    int status = 0;
    std::string answer;
    server.Get(
        "/sim/events?last=" + std::to_string(options.last), httplib::Headers(),
        [&](const httplib::Response &response) {
            status = response.status;
            return true;
        },
        [&](const char *data, std::size_t size) {
            return status == 200 ? printer.feed(data, size) : answer.append(data, size).size() < longestAnswer;
        });
    const std::string port = "port " + std::to_string(options.port);
    if (status == 0)
        throw std::runtime_error("no loyalty-sim answers on " + port);
    if (status != 200)
        throw std::runtime_error(port + " answers with status " + std::to_string(status) + ": " + plainText(answer));
    return 0;
}

} // namespace sim
