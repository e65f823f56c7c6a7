#pragma once

#include <QString>

namespace sync {
namespace dv {
namespace dvsync {

/// `text` with its escapes decoded as UTF-8. Thread-safe.
QString PercentDecoded(const QString& text);

/// The decoded path of an href, whatever form it has; empty when it is no URL. Two slashes at its front are part of the
/// path. Thread-safe.
QString PathOfHref(const QString& href);

/// `path` without one leading '/'. Thread-safe.
QString WithoutLeadingSlash(const QString& path);

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
