#pragma once

namespace ovsync {
namespace wire {

/// The statuses of HTTP and WebDAV that are treated each in its own way.
struct HttpStatus {
    static constexpr int Ok = 200;
    static constexpr int Created = 201;
    static constexpr int Accepted = 202;
    static constexpr int NoContent = 204;
    static constexpr int PartialContent = 206;
    static constexpr int MultiStatus = 207;
    static constexpr int MultipleChoices = 300;
    static constexpr int MovedPermanently = 301;
    static constexpr int Found = 302;
    static constexpr int NotModified = 304;
    static constexpr int PermanentRedirect = 308;
    /// The first that says no.
    static constexpr int BadRequest = 400;
    static constexpr int Unauthorized = 401;
    static constexpr int Forbidden = 403;
    static constexpr int NotFound = 404;
    static constexpr int MethodNotAllowed = 405;
    static constexpr int ProxyAuthenticationRequired = 407;
    static constexpr int Conflict = 409;
    static constexpr int Gone = 410;
    static constexpr int LengthRequired = 411;
    static constexpr int PreconditionFailed = 412;
    static constexpr int PayloadTooLarge = 413;
    static constexpr int UriTooLong = 414;
    static constexpr int RangeNotSatisfiable = 416;
    static constexpr int UnprocessableContent = 422;
    static constexpr int Locked = 423;
    static constexpr int FailedDependency = 424;
    static constexpr int TooManyRequests = 429;
    static constexpr int RequestHeaderFieldsTooLarge = 431;
    static constexpr int UnavailableForLegalReasons = 451;
    /// The first that says that the server failed.
    static constexpr int InternalServerError = 500;
    static constexpr int NotImplemented = 501;
    static constexpr int BadGateway = 502;
    static constexpr int ServiceUnavailable = 503;
    static constexpr int GatewayTimeout = 504;
    static constexpr int InsufficientStorage = 507;
    static constexpr int NetworkAuthenticationRequired = 511;

    static constexpr bool IsRedirection(int status) {
        return status >= MultipleChoices && status < BadRequest && status != NotModified;
    }
    /// Whether the service says no to what was asked. It is not to be reached, or has no time, where another server
    /// answers for it, or it asks for patience.
    static constexpr bool IsRefusal(int status) {
        return status >= BadRequest && status != TooManyRequests && status != BadGateway &&
               status != ServiceUnavailable && status != GatewayTimeout && status != NetworkAuthenticationRequired;
    }
    /// Whether a question that was refused so may have another answer the next time.
    static constexpr bool IsPassing(int status) {
        return status == Unauthorized || status == ProxyAuthenticationRequired || status == NotFound ||
               status == Gone || status == Locked || status == TooManyRequests ||
               (status >= InternalServerError && status != NotImplemented);
    }
};

}  // namespace wire
}  // namespace ovsync
