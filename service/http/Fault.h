#pragma once

#include <cstdint>
#include <string>

namespace service::http {

/// One way to misbehave, and at which requests.
struct Fault {
    enum class Kind {
        // Instead of doing what is asked:
        Hang,
        Reset,
        Redirect,
        ErrorPage,
        Status,
        // After it was done:
        Cut,
        ResetInBody,
        ContentType,
        ErrorInBody,
        Drip,
        ContentLength,
    };

    /// Reads "KIND[=ARGUMENT][,method=METHOD][,request=NUMBER]". Throws std::invalid_argument with what is wrong.
    static Fault Parse(const std::string& text);

    /// Whether the request is not carried out.
    bool ReplacesOperation() const;

    /// Whether there is no answer at all.
    bool IsSilent() const { return kind == Kind::Hang || kind == Kind::Reset; }

    Kind kind = Kind::Hang;
    /// The number that belongs to the kind: bytes, a status, or a difference of bytes.
    std::int64_t number = 0;
    /// The media type of ContentType.
    std::string type;
    /// Empty: every method.
    std::string method;
    /// Which of the requests with this method, from 1; 0: each.
    std::int64_t request = 0;
};

}  // namespace service::http
