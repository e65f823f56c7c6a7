#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "service/http/Fault.h"

namespace service::http {

/// Which request meets which fault. Thread-safe.
class FaultPlan {
public:
    explicit FaultPlan(const std::vector<Fault>& faults);

    /// To be called once for every request, as they come. Each fault counts the requests with its method; of those
    /// whose turn it is, the first one is met.
    [[nodiscard]] std::optional<Fault> Next(const std::string& method);

private:
    struct Counted {
        Fault fault;
        std::int64_t seen = 0;
    };

    std::mutex _mutex;
    std::vector<Counted> _faults;
};

}  // namespace service::http
