#include "service/http/FaultPlan.h"

namespace service::http {

FaultPlan::FaultPlan(const std::vector<Fault>& faults) {
    for (const Fault& fault : faults) {
        _faults.push_back({fault});
    }
}

std::optional<Fault> FaultPlan::Next(const std::string& method) {
    const std::lock_guard lock(_mutex);
    std::optional<Fault> met;
    for (auto& [fault, seen] : _faults) {
        if (!fault.method.empty() && fault.method != method) {
            continue;
        }
        ++seen;
        if (!met && (fault.request == 0 || fault.request == seen)) {
            met = fault;
        }
    }
    return met;
}

}  // namespace service::http
