#pragma once

namespace ovsync {
namespace output {

/// What `ovsync` exits with.
enum class ExitCode {
    Done = 0,
    /// The service answered that it will not or cannot do it; a pass left something to be done by somebody; of the sync
    /// application, that it does not run.
    Refused = 1,
    WrongUsage = 2,
    /// The service could not be reached or understood.
    Unreachable = 3,
    /// As shells say that SIGINT ended a program.
    Interrupted = 130
};

}  // namespace output
}  // namespace ovsync
