// The fault proxy's record of faults and requests, in a file.
#pragma once

#include <httplib.h>

#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>

namespace sim {

/// Each entry is a JSON line, written at once: after a kill it is there whole or not at all. May be used from any
/// thread.
class ProxyRecord
{
public:
    /// Appends to what earlier proxies have left; writes nothing without a name. Throws std::runtime_error when the
    /// file cannot be opened.
    explicit ProxyRecord(const std::filesystem::path &file);

    /// {"fault": name}
    void fault(const std::string &name);

    /// {"method", "basket", "body", "accepted"}: the service has answered a request. "body" is a digest; "accepted"
    /// tells that the service did not refuse it.
    void served(const httplib::Request &request, const httplib::Response &answer);

private:
    void write(const std::string &line);

    std::mutex m_mutex;
    std::ofstream m_file;
};

} // namespace sim
