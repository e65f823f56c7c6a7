#include "client/cli/commands/Failure.h"

#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/library/Netrc.h"
#include "client/store/StoreError.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/pass/ServiceFolder.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace commands {

using input::Refusal;
using input::UsageError;
using output::ErrorMessage;
using output::ErrorStyle;
using output::ErrorText;
using output::ExitCode;
using sync::http::HttpException;
using wire::HttpStatus;
using wire::TransactionError;

namespace {

bool IsOfNetrc(const std::exception& error) {
    return dynamic_cast<const library::NetrcError*>(&error) != nullptr;
}

ExitCode ExitCodeOf(const std::exception& error) {
    if (dynamic_cast<const UsageError*>(&error) != nullptr ||
        dynamic_cast<const pass::WrongFolder*>(&error) != nullptr) {
        return ExitCode::WrongUsage;
    }
    if (dynamic_cast<const Refusal*>(&error) != nullptr || dynamic_cast<const local::LocalError*>(&error) != nullptr ||
        dynamic_cast<const store::StoreError*>(&error) != nullptr || IsOfNetrc(error)) {
        return ExitCode::Refused;
    }
    const auto* const answer = dynamic_cast<const HttpException*>(&error);
    if (answer != nullptr && HttpStatus::IsRefusal(answer->StatusCode())) {
        return ExitCode::Refused;
    }
    const auto* const failure = dynamic_cast<const TransactionError*>(&error);
    const bool isCancelled = failure != nullptr && failure->Why() == TransactionError::Cause::Cancelled;
    return isCancelled ? ExitCode::Interrupted : ExitCode::Unreachable;
}

}  // namespace

ExitCode ComplainOfFailure(const std::exception& error, const ErrorText::Context& asked, const ErrorStyle& style) {
    ErrorMessage message = ErrorText(asked).Of(std::current_exception());
    const ExitCode exitCode = ExitCodeOf(error);
    if (exitCode == ExitCode::WrongUsage) {
        message.kind = "usage";
    } else if (IsOfNetrc(error)) {
        message.kind = "file";
    }
    output::Complain(message, exitCode, style);
    return exitCode;
}

}  // namespace commands
}  // namespace ovsync
