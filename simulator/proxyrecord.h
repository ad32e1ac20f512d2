// The fault proxy's record of faults and requests.
#pragma once

#include <httplib.h>

#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>

namespace sim {

/// Each entry is a JSON line, written at once: after a kill it is complete or missing. Thread-safe.
class ProxyRecord
{
public:
    /// Appends to the file, or records nothing if the name is empty. Throws std::runtime_error if the file cannot be
    /// opened.
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
