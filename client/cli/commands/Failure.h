#pragma once

#include <exception>

#include "client/cli/output/Complaint.h"
#include "client/cli/output/ErrorText.h"
#include "client/cli/output/ExitCode.h"

namespace ovsync {
namespace commands {

/// Complains of `error`, which is being handled, in words for what was asked, and returns what to exit with.
output::ExitCode ComplainOfFailure(const std::exception& error, const output::ErrorText::Context& asked,
                                   const output::ErrorStyle& style);

}  // namespace commands
}  // namespace ovsync
