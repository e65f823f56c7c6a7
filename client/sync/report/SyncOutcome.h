#pragma once

namespace ovsync {
namespace report {

/// How a pass ended.
enum class SyncOutcome {
    /// Both sides are in step, as far as the pass's direction goes.
    InStep,
    /// Somebody still has to do something; the events say what.
    LeftSome,
    /// The service could not be reached or understood for some files.
    Failed,
    /// It was told to stop. What was finished is recorded.
    Cancelled
};

}  // namespace report
}  // namespace ovsync
