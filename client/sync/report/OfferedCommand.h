#pragma once

#include <QString>

/// Command lines that messages tell people to type. Thread-safe.

namespace ovsync {
namespace report {

/// As a shell takes it for one word, whatever is in it.
QString ShellWord(QString word);

/// The beginning of the line: `command` of ovsync, as "login --no-check", with who logs in and the certificates to
/// trust, each unless it is empty.
QString OfferedCommand(const QString& command, const QString& user, const QString& caFile);

}  // namespace report
}  // namespace ovsync
