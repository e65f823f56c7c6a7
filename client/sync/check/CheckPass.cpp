#include "client/sync/check/CheckPass.h"

#include <atomic>
#include <set>

#include "client/sync/check/ContentComparison.h"
#include "client/sync/local/LocalContent.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace check {

using local::Exclusion;
using local::ILocalTree;
using local::LocalContent;
using local::LocalEntry;
using local::LocalError;
using local::LocalSnapshot;
using pass::RemoteTree;
using pass::ServiceFolder;
using report::SyncEvent;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::http::HttpException;
using wire::HttpStatus;

using Kind = CheckFinding::Kind;

CheckPass::CheckPass(const ServiceFolder& service, ILocalTree& tree, const Exclusion& exclusion, bool downloads,
                     const Teller& tell)
    : _service(service), _tree(tree), _exclusion(exclusion), _downloads(downloads), _teller(tell) {}

void CheckPass::Run() {
    const LocalSnapshot snapshot = LocalSnapshot::Of(_tree, _exclusion);
    RemoteTree remote = _List();
    _TellRefused(snapshot.refused);
    _TellRefused(snapshot.closed);
    _TellRefused(remote.Refused());
    for (const SyncEvent& closed : snapshot.closed) {
        remote.LeaveOut(closed.path);
    }
    std::set<QString> paths = remote.AllFolders();
    for (const QString& path : remote.AllFiles().keys()) {
        paths.insert(path);
    }
    for (const QString& path : snapshot.entries.keys()) {
        paths.insert(path);
    }
    for (const QString& path : paths) {
        if (!remote.IsRefused(path)) {
            _Compare(path, snapshot, remote);
        }
    }
}

RemoteTree CheckPass::_List() const {
    FolderConfiguration folder = _service.folder;
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    const int status = _service.folders->GetAllFilesAndSubFoldersByFolder(folder, folders, files);
    if (status == HttpStatus::NotFound) {
        throw HttpException(QStringLiteral("There is no folder %1").arg(_service.address), status, QUrl());
    }
    return RemoteTree(_service, *folders, *files, _exclusion);
}

void CheckPass::_TellRefused(const QVector<SyncEvent>& refused) {
    for (const SyncEvent& event : refused) {
        _Tell(Kind::Unknown, event.path, event.detail);
    }
}

void CheckPass::_Compare(const QString& path, const LocalSnapshot& snapshot, const RemoteTree& remote) {
    const bool isFileThere = remote.HasFile(path);
    const bool isFolderThere = remote.HasFolder(path);
    const auto here = snapshot.entries.find(path);
    if (here == snapshot.entries.end()) {
        _Tell(Kind::OnlyThere, path);
    } else if (!isFileThere && !isFolderThere) {
        _Tell(here->kind == LocalEntry::Kind::Other ? Kind::Skipped : Kind::OnlyHere, path);
    } else if (here->kind == LocalEntry::Kind::Other) {
        _Tell(Kind::Different, path,
              QStringLiteral("neither a file nor a folder here, but a link, a device or the like"));
    } else if (isFolderThere != (here->kind == LocalEntry::Kind::Folder)) {
        _Tell(Kind::Different, path,
              isFolderThere ? QStringLiteral("a file here, a folder there")
                            : QStringLiteral("a folder here, a file there"));
    } else if (isFileThere) {
        _CompareFiles(path, *here, remote.AllFiles().value(path));
    }
}

void CheckPass::_CompareFiles(const QString& path, const LocalEntry& here, const FileConfiguration& there) {
    if (!pass::IsContentOf(there, here.fingerprint.size, QString())) {
        _Tell(Kind::Different, path,
              QStringLiteral("%1 bytes here, %2 there").arg(here.fingerprint.size).arg(pass::LikelySize(there.size)));
        return;
    }
    if (there.md5Checksum.isEmpty() && !_downloads) {
        ++_same;
        ++_sameBySizeAlone;
        return;
    }
    try {
        const std::optional<bool> isSame = _HasSameContent(path, there);
        if (!isSame) {
            _Tell(Kind::Unknown, path, QStringLiteral("it is being written"));
        } else if (*isSame) {
            ++_same;
        } else {
            _Tell(Kind::Different, path, QStringLiteral("the content"));
        }
    } catch (const LocalError& e) {
        _teller({Kind::Unknown, path, e.Message(), std::current_exception()});
    } catch (const HttpException& e) {
        if (e.StatusCode() == HttpStatus::Unauthorized || e.StatusCode() >= HttpStatus::InternalServerError ||
            !HttpStatus::IsRefusal(e.StatusCode())) {
            throw;
        }
        _teller({Kind::Unknown, path, e.Message(), std::current_exception()});
    }
}

std::optional<bool> CheckPass::_HasSameContent(const QString& path, const FileConfiguration& there) {
    if (there.md5Checksum.isEmpty()) {
        return _HasDownloadedContent(path);
    }
    // Nothing is left half done by who ends the program meanwhile.
    static const std::atomic<bool> isNeverStopped(false);
    const std::optional<LocalContent> content = LocalContent::Of(_tree, path, isNeverStopped);
    return content ? std::make_optional(pass::IsContentOf(there, content->fingerprint.size, content->md5))
                   : std::nullopt;
}

bool CheckPass::_HasDownloadedContent(const QString& path) {
    if (!_connection) {
        _connection = _service.newConnection();
    }
    const std::unique_ptr<local::IReadableFile> file = _tree.Open(path);
    ContentComparison comparison(*file);
    _connection->Download(_service.urlOf(_service.ServerPath(path)), comparison);
    return comparison.IsSame();
}

void CheckPass::_Tell(Kind kind, const QString& path, const QString& detail) const {
    _teller({kind, path, detail});
}

}  // namespace check
}  // namespace ovsync
