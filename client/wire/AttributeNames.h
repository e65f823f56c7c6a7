#pragma once

namespace ovsync {
namespace wire {

/// Properties of a file that are no part of what the library knows, on servers that keep them.

constexpr char ExecutableNamespace[] = "http://apache.org/dav/props/";
constexpr char ExecutableName[] = "executable";
/// The MD5 of a content in hexadecimal, a space, and when that content was last changed, as HTTP writes dates.
constexpr char KeptDateNamespace[] = "urn:ovsync";
constexpr char KeptDateName[] = "content-date";

/// Both, for the body of a request.
constexpr char AttributesToAskFor[] =
    "<A:executable xmlns:A=\"http://apache.org/dav/props/\"/><V:content-date xmlns:V=\"urn:ovsync\"/>";

}  // namespace wire
}  // namespace ovsync
