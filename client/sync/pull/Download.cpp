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

}  // namespace

Download::Download(ILocalTree& tree, PullOrder order, const QUrl& url, std::atomic<qint64>& bytes)
    : _tree(tree), _order(std::move(order)), _url(url), _bytes(bytes) {}

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
        _file->Sync();
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
    if (!replaces && !bit) {
        return;
    }
    const unsigned mode = replaces ? _order.here->mode : _tree.Look(_temporary).value_or(LocalEntry()).mode;
    _file->SetMode(bit ? WithExecutableBit(mode, *bit) : mode);
}

QString Download::GiveTemporary() {
    return std::exchange(_temporary, QString());
}

void Download::Restart(qint64 size) {
    _bytes -= _size;
    _size = 0;
    _announced = size;
    _md5.reset();
    _file->Truncate();
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
