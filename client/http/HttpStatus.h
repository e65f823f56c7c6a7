#pragma once

namespace ovsync {
namespace http {

/// The statuses of HTTP and WebDAV that are treated each in its own way.
namespace HttpStatus {

const int Ok = 200;
const int Created = 201;
const int NoContent = 204;
const int MultiStatus = 207;
const int Found = 302;
const int NotModified = 304;
/// The first that says no.
const int BadRequest = 400;
const int Unauthorized = 401;
const int NotFound = 404;
const int ProxyAuthenticationRequired = 407;
const int Gone = 410;
const int PreconditionFailed = 412;
const int FailedDependency = 424;

}  // namespace HttpStatus
}  // namespace http
}  // namespace ovsync
