#pragma once

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>

namespace service::dav {

/// What the service's own clients are told where others get a status. Thread-safe.
class ReasonPhrases {
public:
    /// Why a request with `method` for `target` (percent-encoded, without a query) failed with `status`; nothing when
    /// the status says it to every client. The ways to say it take turns, from one call with an answer to the next.
    std::optional<std::string> Next(int status, const std::string& method, const std::string& target);

private:
    std::atomic<std::size_t> _given{0};
};

}  // namespace service::dav
