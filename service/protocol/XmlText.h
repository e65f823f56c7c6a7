#pragma once

#include <string>
#include <string_view>

namespace service::protocol {

/// The namespace of WebDAV and of the service's own properties.
inline constexpr std::string_view DavNamespace = "DAV:";

/// Whether `text` is UTF-8 without overlong forms, surrogates and numbers above U+10FFFF.
bool IsValidUtf8(std::string_view text);

/// Appends `text`, which must be valid UTF-8, as XML character data, fit for attribute values in double quotes too.
/// Characters that XML 1.0 cannot express become U+FFFD.
void AppendEscaped(std::string& xml, std::string_view text);

}  // namespace service::protocol
