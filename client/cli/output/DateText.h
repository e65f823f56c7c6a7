#pragma once

#include <QByteArray>
#include <QDateTime>

namespace ovsync {
namespace output {

/// `date` in UTC, "2026-11-20T10:15:30Z"; empty when it is invalid. Thread-safe.
QByteArray DateText(const QDateTime& date);

}  // namespace output
}  // namespace ovsync
