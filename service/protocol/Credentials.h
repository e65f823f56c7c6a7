#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace service::protocol {

/// Who a client says it is.
struct Credentials {
    /// Reads the header Authorization. Nothing when its scheme is not Basic, in whatever letter case, or when what
    /// follows is not Base64 as RFC 4648 has it (padded, without other characters) of a name, ':' and a password.
    static std::optional<Credentials> Parse(std::string_view header);

    std::string user;
    std::string password;
};

}  // namespace service::protocol
