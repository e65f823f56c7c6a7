#include "client/sync/pull/Download.h"

#include <utility>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace pull {

using local::ILocalTree;
using local::LocalEntry;
using local::LocalError;
using local::TemporaryBeside;
using local::WithExecutableBit;
using pass::SizeLimit;

namespace {

struct TooLarge {};

// To have others wait while so much is written costs more than a flush of its own.
const qint64 LargeSize = qint64(1024) * 1024;

}  // namespace

Download::Download(ILocalTree& tree, PullOrder order, const QUrl& url, Flushing flushing, std::atomic<qint64>& bytes)
    : _tree(tree), _order(std::move(order)), _url(url), _flushing(flushing), _bytes(bytes) {}

Download::~Download() {
    if (_temporary.isEmpty()) {
        return;
    }
    _file.reset();
    try {
        _tree.Remove(_temporary);
    } catch (const LocalError&) {
        // The next pass tries again.
    }
}

void Download::Run(content::IContentConnection& session) noexcept {
    try {
        const QString temporary = TemporaryBeside(_order.path);
        _file = _tree.Create(temporary);
        _temporary = temporary;
        _version = session.Download(_url, *this);
        _file->SetModified(_order.remote.lastModifiedDate);
        _SetMode();
        _Flush();
        _fresh = _file->Look();
        _file.reset();
        _md5Text = QString::fromLatin1(_md5.result().toHex());
    } catch (const TooLarge&) {
        _isTooLarge = true;
        _file.reset();
    } catch (...) {
        _error = std::current_exception();
        _file.reset();
    }
}

void Download::_SetMode() {
    const bool replaces = _order.target == PullOrder::Target::Replace;
    const std::optional<bool> bit = _version.isExecutable ? _version.isExecutable : _order.isExecutable;
    // A new file has it off.
    if (!replaces && !bit.value_or(false)) {
        return;
    }
    const unsigned mode = replaces ? _order.here->mode : _tree.Look(_temporary).value_or(LocalEntry()).mode;
    _file->SetMode(bit ? WithExecutableBit(mode, *bit) : mode);
}

void Download::_Flush() {
    if (_flushing == Flushing::Alone || _size >= LargeSize || !_file->IsSyncedWithAll()) {
        _file->Sync();
        _isFlushed = true;
    }
}

QString Download::GiveTemporary() {
    return std::exchange(_temporary, QString());
}

void Download::Restart(qint64 size) {
    if (_size > 0) {
        _bytes -= _size;
        _size = 0;
        _md5.reset();
        _file->Truncate();
    }
    _announced = size;
    _CheckSize(size);
}

void Download::Write(const char* bytes, size_t size) {
    _CheckSize(_size + static_cast<qint64>(size));
    _file->Write(bytes, size);
    _md5.addData(bytes, static_cast<int>(size));
    _size += static_cast<qint64>(size);
    _bytes += static_cast<qint64>(size);
}

void Download::_CheckSize(qint64 size) const {
    if (size > SizeLimit(_order.remote.size, _announced)) {
        throw TooLarge();
    }
}

}  // namespace pull
}  // namespace ovsync
