#include "client/sync/pass/PassReport.h"

#include "client/store/StoreError.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/report/Cancelled.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace pass {

using local::LocalError;
using report::Cancelled;
using report::SyncEvent;
using report::SyncOutcome;
using sync::http::HttpException;
using wire::HttpStatus;

namespace {

const int PatienceWithFailures = 3;

}  // namespace

void PassReport::Tell(const SyncEvent& event) {
    _hasProblems = _hasProblems || event.IsProblem() || (_options.isStrict && event.kind == SyncEvent::Kind::Skipped);
    if (event.IsProblem()) {
        _open.insert(event.path);
    }
    _hasFailed = _hasFailed || event.kind == SyncEvent::Kind::Failed;
    _observer.OnEvent(event);
}

void PassReport::Tell(SyncEvent::Kind kind, const QString& path, const QString& detail, qint64 bytes) {
    Tell({kind, path, detail, bytes});
}

void PassReport::Tell(const QVector<SyncEvent>& events) {
    for (const SyncEvent& event : events) {
        Tell(event);
    }
}

void PassReport::TellRefusal(const QString& path, const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& e) {
        Tell({SyncEvent::Kind::Refused, path, QString::fromUtf8(e.what()), 0, error});
    }
}

void PassReport::TellFailure(const QString& path, const std::exception_ptr& error) {
    if (*_options.isStopped) {
        std::rethrow_exception(error);
    }
    try {
        std::rethrow_exception(error);
    } catch (const HttpException& e) {
        if (e.StatusCode() == HttpStatus::Unauthorized || e.StatusCode() == HttpStatus::ProxyAuthenticationRequired) {
            throw;
        }
        if (HttpStatus::IsRefusal(e.StatusCode())) {
            Tell({SyncEvent::Kind::Refused, path, e.Message(), 0, error});
        } else if (_IsTooMuch({SyncEvent::Kind::Failed, path, e.Message(), 0, error})) {
            throw;
        }
    } catch (const store::StoreError&) {
        throw;
    } catch (const LocalError& e) {
        if (e.ConcernsWholeDisk()) {
            throw;
        }
        Tell({SyncEvent::Kind::Refused, path, e.Message(), 0, error});
    } catch (const sync::core::SyncException& e) {
        if (_IsTooMuch({SyncEvent::Kind::Failed, path, e.Message(), 0, error})) {
            throw;
        }
    }
}

bool PassReport::_IsTooMuch(const SyncEvent& failure) {
    Tell(failure);
    return ++_failuresInARow >= PatienceWithFailures;
}

void PassReport::ThrowIfStopped() const {
    Cancelled::ThrowIf(*_options.isStopped);
}

SyncOutcome PassReport::Outcome() const {
    if (_hasFailed) {
        return SyncOutcome::Failed;
    }
    return _hasProblems ? SyncOutcome::LeftSome : SyncOutcome::InStep;
}

}  // namespace pass
}  // namespace ovsync
