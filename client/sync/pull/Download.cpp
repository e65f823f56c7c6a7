#include "client/sync/pull/Download.h"

#include <utility>
#include <vector>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/report/Cancelled.h"

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

// How often what has come of a large file is flushed, so that a process that is killed leaves it for the next one.
const std::chrono::seconds KeepInterval(2);
const size_t PieceSize = 256UL * 1024UL;

}  // namespace

Download::Download(ILocalTree& tree, PullOrder order, const QUrl& url, const Shared& shared,
                   std::shared_ptr<ReceivedPart> part)
    : _tree(tree), _order(std::move(order)), _url(url), _shared(shared), _part(std::move(part)) {}

Download::~Download() {
    if (_temporary.isEmpty() || (_part && _part->Get())) {
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
        _keptAt = std::chrono::steady_clock::now();
        if (_order.part && _ReadPart()) {
            _Reopen();
        } else {
            _CreateAnew();
        }
        _version = session.Download(_url, *this);
        _md5Text = QString::fromLatin1(_md5.result().toHex());
        _file->SetModified(_order.attributes.DateOf(_md5Text, _order.remote.lastModifiedDate));
        _SetMode();
        _Flush();
        _fresh = _file->Look();
        _ForgetPart();
    } catch (const TooLarge&) {
        _isTooLarge = true;
        _ForgetPart();
    } catch (const LocalError&) {
        _error = std::current_exception();
        _ForgetPart();
    } catch (...) {
        _error = std::current_exception();
        _KeepPartOfFailed();
    }
    _file.reset();
}

bool Download::_ReadPart() {
    const store::PartialDownload& part = *_order.part;
    try {
        const std::optional<LocalEntry> entry = _tree.Look(part.temporary);
        if (entry && entry->kind == LocalEntry::Kind::File && entry->fingerprint.size >= part.size) {
            const std::unique_ptr<local::IReadableFile> file = _tree.Open(part.temporary);
            std::vector<char> piece(PieceSize);
            while (_size < part.size) {
                report::Cancelled::ThrowIf(_shared.isStopped);
                const auto wanted = static_cast<size_t>(qMin(part.size - _size, static_cast<qint64>(piece.size())));
                const size_t count = file->Read(piece.data(), wanted);
                if (count == 0) {
                    break;
                }
                _md5.addData(piece.data(), static_cast<int>(count));
                _size += static_cast<qint64>(count);
            }
            if (QString::fromLatin1(_md5.result().toHex()) == part.md5) {
                return true;
            }
        }
        _tree.Remove(part.temporary);
    } catch (const LocalError&) {
        // It is fetched anew; what is left there the next pass removes.
    }
    _md5.reset();
    _size = 0;
    _ForgetPart();
    return false;
}

void Download::_Reopen() {
    _temporary = _order.part->temporary;
    _file = _tree.Reopen(_temporary);
    _file->Truncate(_size);
    _entityTag = _order.part->entityTag.toUtf8();
    _keptSize = _size;
    _isResumed = true;
    _shared.bytes += _size;
}

void Download::_CreateAnew() {
    const QString temporary = TemporaryBeside(_order.path);
    _file = _tree.Create(temporary);
    _temporary = temporary;
}

void Download::_KeepPart() {
    _file->Sync();
    _keptSize = _size;
    _keptAt = std::chrono::steady_clock::now();
    _part->Set(store::PartialDownload{_order.path, _temporary, pass::IdentityOf(_order.remote),
                                      QString::fromUtf8(_entityTag), _size,
                                      QString::fromLatin1(_md5.result().toHex())});
}

void Download::_KeepPartOfFailed() {
    if (!_part || !_file || _entityTag.isEmpty() || _size < LargeSize) {
        return;
    }
    try {
        _KeepPart();
    } catch (const LocalError&) {
        _ForgetPart();
    }
}

void Download::_ForgetPart() {
    if (_part) {
        _part->Set(std::nullopt);
    }
}

void Download::_SetMode() {
    const bool replaces = _order.target == PullOrder::Target::Replace;
    const std::optional<bool> bit = _version.isExecutable ? _version.isExecutable : _order.attributes.isExecutable;
    // A new file has it off.
    if (!replaces && !bit.value_or(false)) {
        return;
    }
    const unsigned mode = replaces ? _order.here->mode : _tree.Look(_temporary).value_or(LocalEntry()).mode;
    _file->SetMode(bit ? WithExecutableBit(mode, *bit) : mode);
}

void Download::_Flush() {
    if (_shared.flushing == Flushing::Alone || _size >= LargeSize || !_file->IsSyncedWithAll()) {
        _file->Sync();
        _isFlushed = true;
    }
}

content::ContentPart Download::Received() {
    return _isResumed ? content::ContentPart{_size, _entityTag} : content::ContentPart();
}

void Download::TakeVersion(const content::ContentVersion& version) {
    _entityTag = version.entityTag;
}

void Download::Restart(qint64 size) {
    if (_size > 0) {
        _ForgetPart();
        _isResumed = false;
        _shared.bytes -= _size;
        _size = 0;
        _keptSize = 0;
        _md5.reset();
        _file->Truncate(0);
    }
    _announced = size;
    _CheckSize(size);
}

void Download::Write(const char* bytes, size_t size) {
    _CheckSize(_size + static_cast<qint64>(size));
    _file->Write(bytes, size);
    _md5.addData(bytes, static_cast<int>(size));
    _size += static_cast<qint64>(size);
    _shared.bytes += static_cast<qint64>(size);
    const bool isDue = _part && !_entityTag.isEmpty() && _size - _keptSize >= LargeSize;
    if (isDue && std::chrono::steady_clock::now() - _keptAt >= KeepInterval) {
        _KeepPart();
    }
}

void Download::_CheckSize(qint64 size) const {
    if (size > SizeLimit(_order.remote.size, _announced)) {
        throw TooLarge();
    }
}

}  // namespace pull
}  // namespace ovsync
