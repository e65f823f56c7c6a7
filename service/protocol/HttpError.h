#pragma once

#include <stdexcept>
#include <string>

namespace service::protocol {

/// The request is answered with an HTTP status of 400 or above. `what()` is the text sent to the client.
class HttpError : public std::runtime_error {
public:
    HttpError(int status, const std::string& reason) : std::runtime_error(reason), _status(status) {}

    int Status() const noexcept { return _status; }

private:
    int _status;
};

}  // namespace service::protocol
