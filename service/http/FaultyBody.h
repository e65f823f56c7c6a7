#pragma once

#include <functional>
#include <memory>

#include "service/http/Fault.h"
#include "service/http/StopSignal.h"
#include "service/protocol/IBody.h"

namespace service::http {

/// A body that is not as it should be: cut, reset, with an error in its middle, or dripping.
class FaultyBody : public protocol::IBody {
public:
    /// `reset` resets the connection. `stop` must outlive this object.
    FaultyBody(std::unique_ptr<protocol::IBody> body, const Fault& fault, std::function<void()> reset,
               StopSignal& stop);

    std::optional<std::uint64_t> Size() const override;
    std::size_t Read(char* buffer, std::size_t size) override;

private:
    std::unique_ptr<protocol::IBody> _body;
    Fault _fault;
    std::function<void()> _reset;
    StopSignal& _stop;
    /// How many bytes are still to be right.
    std::uint64_t _right;
    bool _isInError = false;
};

}  // namespace service::http
