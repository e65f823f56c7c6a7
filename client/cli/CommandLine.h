#pragma once

#include "client/cli/output/ExitCode.h"

namespace ovsync {
namespace cli {

/// Runs `ovsync` with its arguments, in UTF-8. Results go to standard output, everything else to standard error. Throws
/// nothing. To be called once.
output::ExitCode RunCommandLine(int argc, const char* const* argv);

}  // namespace cli
}  // namespace ovsync
