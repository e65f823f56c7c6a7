#pragma once

#include <QByteArray>

#include "client/cli/output/Output.h"

namespace ovsync {
namespace output {

/// The agent's line of JSON for people, as `output` may show it.
QByteArray StatusText(const QByteArray& line, const Output& output);

/// Whether it says that nothing is left to anybody.
bool IsAllWell(const QByteArray& line);

}  // namespace output
}  // namespace ovsync
