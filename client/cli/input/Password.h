#pragma once

#include <QString>

namespace ovsync {
namespace input {

/// The password of `user` at `host`: from the environment variable OVSYNC_PASSWORD, else from ~/.netrc (or the file
/// that the variable NETRC names), else from a prompt on the terminal. Throws UsageError when there is none and no
/// terminal to ask at.
QString FindPassword(const QString& user, const QString& host);

}  // namespace input
}  // namespace ovsync
