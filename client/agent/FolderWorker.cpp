#include "client/agent/FolderWorker.h"

#include <log4cplus/loggingmacros.h>
#include <malloc.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <random>

#include "client/agent/AgentClock.h"
#include "client/agent/AgentLog.h"
#include "client/cli/output/ErrorText.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace agent {

using report::SyncEvent;
using report::SyncProgress;

namespace {

const std::chrono::hours WishesHoldFor(24);
/// Some changes cannot be watched, such as those that a program makes to a file that it has mapped into its memory.
const std::chrono::hours PathsHoldFor(1);

FolderSchedule::Random RandomSource() {
    const auto engine = std::make_shared<std::minstd_rand>(std::random_device()());
    return [engine] { return std::uniform_real_distribution<double>(0, 1)(*engine); };
}

FolderSchedule::End EndOf(PassResult::End end) {
    switch (end) {
        case PassResult::End::InStep:
        case PassResult::End::LeftSome:
        case PassResult::End::Busy:
        case PassResult::End::Stopped:
            return FolderSchedule::End::Done;
        case PassResult::End::Failed:
            return FolderSchedule::End::Failed;
        case PassResult::End::Rejected:
            return FolderSchedule::End::Rejected;
    }
    return FolderSchedule::End::Failed;
}

output::ErrorText ErrorTextOf(const input::Location& location) {
    output::ErrorText::Context context;
    context.server = location.Server();
    context.path = location.serverPath;
    context.thing = QStringLiteral("file or folder");
    context.isWriting = true;
    return output::ErrorText(context);
}

int NewWakeUp() {
    const int descriptor = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (descriptor < 0) {
        throw sync::core::SyncException(QStringLiteral("There are no more descriptors to be had."));
    }
    return descriptor;
}

void Drain(int descriptor) {
    char bytes[8];
    [[maybe_unused]] const ssize_t ignored = read(descriptor, bytes, sizeof(bytes));
}

}  // namespace

FolderWorker::FolderWorker(const folders::SyncedFolder& folder, const FolderPassMaker& makePass,
                           const std::function<void()>& onStatus)
    : _folder(folder),
      _onStatus(onStatus),
      _wakeUp(NewWakeUp()),
      _alarm(NewAlarm()),
      _watcher(folder.directory, local::Exclusion(folder.rules)),
      _schedule(Now(), RandomSource()) {
    _status.directory = folder.directory;
    _status.url = QUrl(folder.url).toDisplayString(QUrl::RemoveUserInfo);
    _thread = std::thread([this, makePass] { _Work(makePass); });
}

FolderWorker::~FolderWorker() {
    Stop();
    _thread.join();
    close(_wakeUp);
    close(_alarm);
}

FolderStatus FolderWorker::Status() const {
    const std::lock_guard<std::mutex> lock(_mutex);
    return _status;
}

void FolderWorker::TryAgain() {
    _isToTryAgain = true;
    eventfd_write(_wakeUp, 1);
}

void FolderWorker::Stop() {
    _isStopped = true;
    eventfd_write(_wakeUp, 1);
}

void FolderWorker::_Work(const FolderPassMaker& makePass) {
    {
        const std::unique_ptr<IFolderPass> pass = makePass(_folder);
        while (!_isStopped) {
            if (_isToTryAgain.exchange(false)) {
                _asked.reset();
                _schedule.TryAgain(Now());
            }
            const std::optional<FolderSchedule::Time> due = _schedule.Due();
            if (due && *due <= Now()) {
                _RunPass(*pass);
            } else {
                _Sleep(due);
            }
        }
    }
    _hasEnded = true;
    _onStatus();
}

void FolderWorker::_Sleep(std::optional<FolderSchedule::Time> until) {
    if (until) {
        SetAlarm(_alarm, *until);
    }
    // A negative descriptor is passed over.
    pollfd waits[] = {{_wakeUp, POLLIN, 0}, {until ? _alarm : -1, POLLIN, 0}, {_watcher.Descriptor(), POLLIN, 0}};
    poll(waits, std::size(waits), -1);
    Drain(_wakeUp);
    Drain(_alarm);
    if (_watcher.TakeChanges()) {
        if (_watcher.IsAccessChanged()) {
            _schedule.NoteAccess(Now());
        } else {
            _schedule.NoteChange(Now());
        }
        _Tell([due = _schedule.Due()](FolderStatus& status) {
            if (due) {
                status.nextPass = QDateTime::currentDateTimeUtc().addMSecs((*due - Now()).count());
            }
        });
    }
}

void FolderWorker::_RunPass(IFolderPass& pass) {
    _watcher.Watch();
    _watcher.TakeChanges();
    _schedule.BeginPass();
    _pass = FolderStatus();
    _problemPaths.clear();
    _waiting = report::WaitingDeletions();
    _transfers.invalidate();
    _Tell([this](FolderStatus& status) {
        status.state = FolderStatus::State::Syncing;
        status.notWatched = _watcher.Problem();
        status.nextPass = QDateTime();
    });
    const auto begin = Now();
    IFolderPass::Paths changed = _watcher.HandOutPaths();
    if (!_lookedAtAll || begin - *_lookedAtAll >= PathsHoldFor) {
        changed.reset();
    }
    if (!changed) {
        _lookedAtAll = begin;
    }
    const PassResult result = pass.Run(_isStopped, *this, changed);
    if (EndOf(result.end) != FolderSchedule::End::Done || result.end == PassResult::End::Busy) {
        _watcher.Doubt();
    }
    if (result.end == PassResult::End::Stopped) {
        return;
    }
    if (result.end == PassResult::End::Busy) {
        _WaitForOther();
        return;
    }
    const auto end = Now();
    FolderSchedule::End scheduled = EndOf(result.end);
    if (scheduled == FolderSchedule::End::Done && (!_asked || end - *_asked >= WishesHoldFor)) {
        if (const std::optional<ServiceWishes> wishes = pass.AskWishes()) {
            _asked = end;
            _schedule.SetIntervals(wishes->frequency, wishes->delayAfterFailure);
            _Tell([&wishes](FolderStatus& status) { status.newVersion = wishes->newVersion; });
        } else {
            // It has just gone away.
            scheduled = FolderSchedule::End::Failed;
        }
    }
    _schedule.EndPass(Now(), scheduled);
    _Finish(result, end - begin);
    // What a pass needed of memory is not needed until the next one.
    malloc_trim(0);
}

void FolderWorker::_WaitForOther() {
    const FolderSchedule::Time now = Now();
    _schedule.EndPass(now, FolderSchedule::End::Done);
    // What it does is a change that is not over yet.
    _schedule.NoteChange(now);
    _Tell([](FolderStatus& status) {
        status.state = status.lastPass.isValid() ? FolderStatus::State::Waiting : FolderStatus::State::Starting;
        status.nextPass =
            QDateTime::currentDateTimeUtc().addMSecs(std::chrono::milliseconds(FolderSchedule::SettlingTime).count());
    });
}

void FolderWorker::_Finish(const PassResult& result, std::chrono::milliseconds duration) {
    _pass.error = result.error;
    _pass.seconds = static_cast<double>(duration.count()) / 1000;
    if (const std::optional<SyncEvent> waiting = _waiting.Told()) {
        _AddProblem(*waiting);
    }
    _Log(result);
    const std::optional<FolderSchedule::Time> due = _schedule.Due();
    _Tell([&](FolderStatus& status) {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        status.state = due ? FolderStatus::State::Waiting : FolderStatus::State::Stopped;
        status.lastPass = now;
        status.lastEnd = result.end;
        status.fetched = _pass.fetched;
        status.sent = _pass.sent;
        status.moved = _pass.moved;
        status.deleted = _pass.deleted;
        status.bytes = _pass.bytes;
        status.seconds = _pass.seconds;
        status.problems = _pass.problems;
        status.problemCount = _pass.problemCount;
        status.conflictCount = _pass.conflictCount;
        status.error = _pass.error;
        status.progress.reset();
        status.nextPass = due ? now.addMSecs((*due - Now()).count()) : QDateTime();
    });
}

void FolderWorker::_Log(const PassResult& result) {
    const log4cplus::Logger logger = AgentLogger();
    const auto loggedBefore = _loggedProblems;
    // A failed pass may not have come to what was left before.
    if (EndOf(result.end) == FolderSchedule::End::Done) {
        _loggedProblems.clear();
    }
    for (const SyncEvent& problem : qAsConst(_pass.problems)) {
        const auto key = std::make_pair(problem.path, problem.kind);
        _loggedProblems.insert(key);
        if (loggedBefore.count(key) == 0) {
            LogLine(logger, log4cplus::WARN_LOG_LEVEL,
                    QStringLiteral("%1: %2: %3").arg(_folder.directory, problem.path, problem.detail));
        }
    }
    if (!result.error.isEmpty() && result.error != _loggedError) {
        LogLine(logger, log4cplus::ERROR_LOG_LEVEL, QStringLiteral("%1: %2").arg(_folder.directory, result.error));
    }
    if (result.error.isEmpty() && !_loggedError.isEmpty()) {
        LogLine(logger, log4cplus::INFO_LOG_LEVEL, QStringLiteral("%1: works again").arg(_folder.directory));
    }
    _loggedError = result.error;
    if (_pass.fetched + _pass.sent + _pass.moved + _pass.deleted > 0) {
        LogLine(logger, log4cplus::INFO_LOG_LEVEL,
                QStringLiteral("%1: %2 fetched, %3 sent, %4 moved, %5 deleted in %6 s")
                    .arg(_folder.directory, QString::number(_pass.fetched), QString::number(_pass.sent),
                         QString::number(_pass.moved), QString::number(_pass.deleted),
                         QString::number(_pass.seconds, 'f', 1)));
    }
}

void FolderWorker::OnEvent(const SyncEvent& event) {
    _pass.bytes += event.bytes;
    switch (event.kind) {
        case SyncEvent::Kind::Fetched:
        case SyncEvent::Kind::Updated:
            ++_pass.fetched;
            break;
        case SyncEvent::Kind::Sent:
            ++_pass.sent;
            break;
        case SyncEvent::Kind::Moved:
        case SyncEvent::Kind::MovedThere:
            ++_pass.moved;
            break;
        case SyncEvent::Kind::Deleted:
        case SyncEvent::Kind::DeletedThere:
            ++_pass.deleted;
            break;
        default:
            break;
    }
    // The two directions of a pass may both tell of a path.
    if (!event.IsProblem() || _problemPaths.contains(event.path)) {
        return;
    }
    if (event.kind == SyncEvent::Kind::Waiting) {
        _waiting.Add(event);
        return;
    }
    _problemPaths.insert(event.path);
    _AddProblem(event);
}

void FolderWorker::_AddProblem(const SyncEvent& event) {
    ++_pass.problemCount;
    _pass.conflictCount += event.kind == SyncEvent::Kind::Conflict ? 1 : 0;
    if (_pass.problems.size() < FolderStatus::MostProblems) {
        SyncEvent told = event;
        if (told.error) {
            told.detail = ErrorTextOf(_folder.location).Below(told.path).Of(told.error).text;
            told.error = nullptr;
        }
        _pass.problems.append(told);
    }
}

void FolderWorker::OnProgress(const SyncProgress& progress) {
    // Each direction of a pass counts its own transfers.
    if (!_transfers.isValid() || progress.doneFiles < _pass.progress->doneFiles) {
        _transfers.start();
    }
    _pass.progress = progress;
    _Tell([this](FolderStatus& status) {
        status.progress = _pass.progress;
        status.progressSeconds = static_cast<double>(_transfers.elapsed()) / 1000;
    });
}

void FolderWorker::_Tell(const std::function<void(FolderStatus&)>& change) {
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        change(_status);
    }
    _onStatus();
}

}  // namespace agent
}  // namespace ovsync
