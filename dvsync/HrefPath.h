#pragma once

#include <QString>
#include <optional>

namespace sync {
namespace dv {
namespace dvsync {

/// `text` with its escapes decoded as UTF-8, as QUrl::fromPercentEncoding has it. Thread-safe.
QString PercentDecoded(const QString& text);

/// The decoded path of an href, whatever form it has; nothing when it is no valid URL, as an empty href is none. A '%'
/// that begins no escape stands for itself, and two slashes at the front are part of the path. Thread-safe.
std::optional<QString> PathOfHref(const QString& href);

/// `path` without one leading '/'. Thread-safe.
[[nodiscard]] QString WithoutLeadingSlash(const QString& path);

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
