#include "service/http/FaultyBody.h"

#include <algorithm>
#include <stdexcept>

#include "service/dav/TextBody.h"

namespace service::http {

FaultyBody::FaultyBody(std::unique_ptr<protocol::IBody> body, const Fault& fault, std::function<void()> reset,
                       StopSignal& stop)
    : _body(std::move(body)),
      _fault(fault),
      _reset(std::move(reset)),
      _stop(stop),
      _right(static_cast<std::uint64_t>(fault.number)) {}

std::optional<std::uint64_t> FaultyBody::Size() const {
    return _fault.kind == Fault::Kind::ErrorInBody ? std::nullopt : _body->Size();
}

std::size_t FaultyBody::Read(char* buffer, std::size_t size) {
    if (_isInError) {
        return _body->Read(buffer, size);
    }
    if (_fault.kind == Fault::Kind::Drip) {
        if (_stop.WaitFor(std::chrono::seconds(1))) {
            throw std::runtime_error("The server stops");
        }
        return _body->Read(buffer, 1);
    }
    std::size_t count = 0;
    if (_right > 0) {
        count = _body->Read(buffer, static_cast<std::size_t>(std::min<std::uint64_t>(size, _right)));
        _right -= count;
    }
    if (count > 0) {
        return count;
    }
    // Here the right part ends, be it that the body is shorter than the fault allows for.
    if (_fault.kind == Fault::Kind::ErrorInBody) {
        _isInError = true;
        _body = std::make_unique<dav::TextBody>("<html><body><h1>Internal error</h1></body></html>\n");
        return _body->Read(buffer, size);
    }
    if (_fault.kind == Fault::Kind::ResetInBody) {
        _reset();
    }
    throw std::runtime_error("The fault ends the body here");
}

}  // namespace service::http
