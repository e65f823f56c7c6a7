#pragma once

#include <string>

#include "service/http/Fault.h"
#include "service/http/StopSignal.h"
#include "service/protocol/Answer.h"
#include "service/protocol/Request.h"

namespace service::http {

/// Misbehaves on a connection as a fault says. Thread-safe.
class FaultInjector {
public:
    /// `stop` ends what takes its time, and must outlive this object and the answers.
    explicit FaultInjector(StopSignal& stop) : _stop(stop) {}

    /// Hangs or resets; then the connection is to be closed. `connection` is its socket.
    void LeaveUnanswered(const Fault& fault, int connection);

    /// What is answered to `request`, which `fault` keeps from being carried out. `server` is the URL that redirects
    /// lead to, without a path.
    static protocol::Answer Instead(const Fault& fault, const protocol::Request& request, const std::string& server);

    /// The answer to a request that was carried out, spoilt. One without a body is left as it is.
    protocol::Answer Spoilt(protocol::Answer answer, const Fault& fault, int connection);

private:
    void _Hang(int connection);
    void _Reset(int connection);

    StopSignal& _stop;
};

}  // namespace service::http
