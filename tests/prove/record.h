// What the fault proxy has done and seen, in a file that outlives it.
#pragma once

#include "httpmessage.h"

#include <filesystem>
#include <string>

namespace prove {

/// One JSON line for each entry, in one write: a kill leaves it in the file or not. May be used from any thread.
class Record
{
public:
    /// Appends to what earlier proxies have left. Throws std::runtime_error when the file cannot be opened.
    explicit Record(const std::filesystem::path &file);
    ~Record();
    Record(const Record &) = delete;
    Record &operator=(const Record &) = delete;

    /// {"fault": name}
    void fault(const std::string &name) const;

    /// {"method", "basket", "body", "accepted"}: the service has answered a request. "body" is a digest; "accepted"
    /// tells that the service did not refuse it.
    void served(const HttpMessage &request, const HttpMessage &answer) const;

private:
    void write(std::string line) const;

    int m_descriptor;
};

} // namespace prove
