#include "client/sync/push/Upload.h"

#include <QScopeGuard>
#include <chrono>
#include <thread>
#include <utility>

#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/report/Cancelled.h"
#include "client/wire/HttpStatus.h"
#include "host/core/SyncException.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace push {

using content::LockOutcome;
using content::UploadCondition;
using content::UploadOutcome;
using local::ILocalTree;
using pass::EntityTagOf;
using pass::KnownVersionOf;
using report::Cancelled;
using wire::HttpStatus;

namespace {

// Of what was changed within the last second some servers have no strong tag, and some say what a cache says.
const std::chrono::milliseconds Patience(1200);
const std::chrono::milliseconds WaitStep(50);

// For how long a file is locked by somebody who died: about as long as it takes to send it over a slow line.
const std::chrono::seconds LeastLock(300);
const qint64 BytesASecond = qint64(64) * 1024;

}  // namespace

Upload::Upload(ILocalTree& tree, PushOrder order, const QUrl& url, Asking asking, const Shared& shared)
    : _tree(tree), _order(std::move(order)), _url(url), _asking(asking), _shared(shared) {}

void Upload::Run(content::IContentConnection& session) noexcept {
    try {
        const bool isFirst = !_order.isNew && !_isToBeSent && !_isToBeAsked && EntityTagOf(_order.remote).isEmpty();
        _isToBeSent = isFirst;
        if (isFirst) {
            _version = _LookForTag(session);
        } else if (_isToBeAsked) {
            _Ask(session);
        } else {
            _Send(session);
        }
    } catch (...) {
        _error = std::current_exception();
    }
    _file.reset();
}

std::optional<content::ContentVersion> Upload::_LookForTag(content::IContentConnection& session) {
    _WaitUntil(_order.notBefore);
    std::optional<content::ContentVersion> version = session.Look(_url);
    if (!version || version->weakTag.isEmpty()) {
        return version;
    }
    _WaitUntil(std::chrono::steady_clock::now() + Patience);
    return session.Look(_url);
}

void Upload::_WaitUntil(std::chrono::steady_clock::time_point end) const {
    while (std::chrono::steady_clock::now() < end) {
        Cancelled::ThrowIf(_shared.isStopped);
        std::this_thread::sleep_for(WaitStep);
    }
}

void Upload::_Send(content::IContentConnection& session) {
    content::ContentVersion known = KnownVersionOf(_order.remote);
    if (!_order.isNew && known.entityTag.isEmpty()) {
        known.entityTag = _version->entityTag;
        known.lastModified = KnownDate();
    }
    if (_order.IsToBeLocked()) {
        _SendLocked(session, known);
    } else {
        _SendOver(session, known);
    }
}

void Upload::_SendLocked(content::IContentConnection& session, const content::ContentVersion& known) {
    {
        std::unique_lock<std::mutex> asking(_shared.locking);
        const auto unlocking = qScopeGuard([&] {
            if (!asking.owns_lock()) {
                asking.lock();
            }
            _isLockLeft = !session.Unlock();
        });
        const std::chrono::seconds longest = LeastLock + std::chrono::seconds(_order.size / BytesASecond);
        const LockOutcome lock = session.Lock(_url, known.entityTag, _shared.lockOwner, longest);
        asking.unlock();
        if (lock == LockOutcome::Gone) {
            _answer.outcome = UploadOutcome::Refused;
            return;
        }
        try {
            _SendOver(session, known);
        } catch (const sync::http::HttpException& e) {
            const bool mayBeForLock = e.StatusCode() == HttpStatus::BadRequest || e.StatusCode() == HttpStatus::Locked;
            if (lock == LockOutcome::NotLocked || !mayBeForLock) {
                throw;
            }
            _answer.outcome = UploadOutcome::Refused;
        }
        if (lock == LockOutcome::NotLocked || _answer.outcome == UploadOutcome::Stored) {
            return;
        }
    }
    // Some servers do not take what they have locked, or forget that they have before all of it came.
    _SendOver(session, known);
    if (_answer.outcome == UploadOutcome::Stored) {
        session.DoWithoutLocks();
    }
}

void Upload::_SendOver(content::IContentConnection& session, const content::ContentVersion& known) {
    const bool looksBefore = _order.looksBefore && !(_order.isNew && _shared.knowsConditions);
    if (looksBefore && _IsForestalled(session, known)) {
        _answer.outcome = UploadOutcome::Refused;
        return;
    }
    if (_order.isRemoval) {
        _answer.outcome = _Remove(session, known);
        return;
    }
    _file = _tree.Open(_order.path);
    _before = _file->Look();
    _answer = session.Upload(_url, *this, _before.size, _ConditionOf(known), known);
    if (_answer.outcome == UploadOutcome::Refused) {
        return;
    }
    _md5Text = Md5();
    if (_order.triesConditions) {
        _TryConditions(session);
    }
    _after = _file->Look();
    _isToBeAsked = true;
    if (_asking == Asking::AtOnce) {
        _Ask(session);
    }
}

void Upload::TakeAnswer(const content::ContentVersion& version) {
    _version = version;
    _isToBeAsked = false;
}

void Upload::_Ask(content::IContentConnection& session) {
    _isToBeAsked = false;
    _version = session.Look(_url);
    if (_version && _version->size >= 0 && _version->size != _size) {
        _WaitUntil(std::chrono::steady_clock::now() + Patience);
        _version = session.Look(_url);
    }
}

UploadOutcome Upload::_Remove(content::IContentConnection& session, const content::ContentVersion& known) const {
    const std::optional<local::LocalEntry> here = _tree.Look(_order.path);
    const bool isBack = here && here->kind == local::LocalEntry::Kind::File;
    return !isBack && session.Remove(_url, known) ? UploadOutcome::Stored : UploadOutcome::Refused;
}

UploadCondition Upload::_ConditionOf(const content::ContentVersion& known) const {
    if (_order.isNew) {
        return UploadCondition::New;
    }
    // Nothing tells versions apart only where that was said to be no reason to refuse.
    const bool isNamed = !known.entityTag.isEmpty() || known.lastModified.isValid();
    return isNamed ? UploadCondition::Unchanged : UploadCondition::Any;
}

void Upload::_TryConditions(content::IContentConnection& session) {
    try {
        const content::UploadAnswer answer =
            session.Upload(_url, *this, _before.size, UploadCondition::New, content::ContentVersion());
        _knowsConditions = answer.outcome == UploadOutcome::Refused;
        _answer = *_knowsConditions ? _answer : answer;
    } catch (const sync::core::SyncException&) {
        // Some other answer tells nothing, and the file is there already.
        return;
    }
    if (*_knowsConditions) {
        _shared.knowsConditions = true;
    } else {
        _md5Text = Md5();
    }
}

bool Upload::_IsForestalled(content::IContentConnection& session, const content::ContentVersion& known) const {
    const std::optional<content::ContentVersion> now = session.Look(_url);
    if (_order.isNew || !now) {
        return _order.isNew == now.has_value();
    }
    // Some servers tell versions in listings alone. Then the condition has to do.
    if (now->entityTag.isEmpty() && now->weakTag.isEmpty() && !now->lastModified.isValid()) {
        return false;
    }
    const bool isSameDate = now->lastModified == known.lastModified;
    return now->entityTag != known.entityTag || (known.entityTag.isEmpty() && !isSameDate);
}

void Upload::Restart() {
    _shared.bytes -= _size;
    _size = 0;
    _md5.reset();
    _file->Rewind();
}

size_t Upload::Read(char* bytes, size_t size) {
    const size_t count = _file->Read(bytes, size);
    _md5.addData(bytes, static_cast<int>(count));
    _size += static_cast<qint64>(count);
    if (_size > _before.size || (count == 0 && _size < _before.size)) {
        throw Written(QStringLiteral("%1 was written while it was sent").arg(_order.path));
    }
    _shared.bytes += static_cast<qint64>(count);
    return count;
}

QDateTime Upload::Modified() const {
    return _before.ModifiedDate();
}

}  // namespace push
}  // namespace ovsync
