#include "client/sync/Upload.h"

#include <chrono>
#include <thread>
#include <utility>

#include "client/sync/Stopped.h"
#include "client/sync/Version.h"

namespace ovsync {
namespace syncing {

using http::UploadCondition;
using http::UploadOutcome;

namespace {

// Some servers have no strong tag for what was changed within the last second.
const std::chrono::milliseconds TagPatience(1200);
const std::chrono::milliseconds WaitStep(50);

}  // namespace

Upload::Upload(ILocalTree& tree, PushOrder order, const QUrl& url, std::atomic<qint64>& bytes,
               const std::atomic<bool>& isStopped)
    : _tree(tree), _order(std::move(order)), _url(url), _bytes(bytes), _isStopped(isStopped) {}

void Upload::Run(http::IContentSession& session) noexcept {
    try {
        const bool isFirst = !_order.isNew && !_isToBeSent && EntityTagOf(_order.remote).isEmpty();
        _isToBeSent = isFirst;
        if (isFirst) {
            _version = _LookForTag(session);
        } else {
            _Send(session);
        }
    } catch (...) {
        _error = std::current_exception();
    }
    _file.reset();
}

std::optional<http::ContentVersion> Upload::_LookForTag(http::IContentSession& session) {
    std::optional<http::ContentVersion> version = session.Look(_url);
    if (!version || !version->entityTag.isEmpty()) {
        return version;
    }
    const auto end = std::chrono::steady_clock::now() + TagPatience;
    while (std::chrono::steady_clock::now() < end) {
        Stopped::ThrowIf(_isStopped);
        std::this_thread::sleep_for(WaitStep);
    }
    return session.Look(_url);
}

void Upload::_Send(http::IContentSession& session) {
    QByteArray tag = EntityTagOf(_order.remote);
    if (!_order.isNew && tag.isEmpty()) {
        tag = _version->entityTag;
    }
    if (_order.looksBefore && _IsForestalled(session, tag)) {
        _outcome = UploadOutcome::Refused;
        return;
    }
    _file = _tree.Open(_order.path);
    _before = _file->Look();
    _outcome = session.Upload(_url, *this, _before.size,
                              _order.isNew ? UploadCondition::New : UploadCondition::Unchanged, tag);
    if (_outcome == UploadOutcome::Refused) {
        return;
    }
    _after = _file->Look();
    _md5Text = QString::fromLatin1(_md5.result().toHex());
    _version = session.Look(_url);
}

bool Upload::_IsForestalled(http::IContentSession& session, const QByteArray& tag) const {
    const std::optional<http::ContentVersion> now = session.Look(_url);
    return _order.isNew ? now.has_value() : !now || now->entityTag != tag;
}

void Upload::Restart() {
    _bytes -= _size;
    _size = 0;
    _md5.reset();
    _file->Rewind();
}

size_t Upload::Read(char* bytes, size_t size) {
    const size_t count = _file->Read(bytes, size);
    _md5.addData(bytes, static_cast<int>(count));
    _size += static_cast<qint64>(count);
    _bytes += static_cast<qint64>(count);
    return count;
}

}  // namespace syncing
}  // namespace ovsync
