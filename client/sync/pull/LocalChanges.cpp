#include "client/sync/pull/LocalChanges.h"

#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace pull {

using local::FolderOf;
using local::Installer;
using local::LocalEntry;
using local::LocalError;
using report::SyncEvent;

namespace {

const int RemovalsAtOnce = 256;

}  // namespace

void LocalChanges::MakeFolders(const QStringList& paths) {
    store::RecordChanges made;
    for (const QString& path : paths) {
        if (!_snapshot.HasFolder(FolderOf(path))) {
            continue;
        }
        LocalEntry folder;
        folder.kind = LocalEntry::Kind::Folder;
        try {
            _tree.MakeFolder(path);
            made.folders.append(path);
            folder = _tree.Look(path).value_or(folder);
        } catch (const LocalError&) {
            _report.TellFailure(path, std::current_exception());
            continue;
        }
        _snapshot.entries.insert(path, folder);
        _report.Tell(SyncEvent::Kind::FolderMade, path);
    }
    _records.Write(made);
}

void LocalChanges::Delete(const PullPlan::Gone& gone) {
    _DeleteFiles(gone.files);
    _DeleteFolders(gone.folders);
}

void LocalChanges::_DeleteFiles(const QVector<store::Placement>& files) {
    for (int start = 0; start < files.size(); start += RemovalsAtOnce) {
        _report.ThrowIfStopped();
        QVector<Installer::Request> requests;
        for (const store::Placement& removal : files.mid(start, RemovalsAtOnce)) {
            Installer::Request request;
            request.placement = removal;
            requests.append(request);
        }
        _installer.Install(requests);
        for (const Installer::Request& request : requests) {
            const QString& path = request.placement.record.path;
            switch (request.result) {
                case Installer::Result::Done:
                    _snapshot.entries.remove(path);
                    _report.Tell(SyncEvent::Kind::Deleted, path);
                    break;
                case Installer::Result::Occupied:
                    _report.Tell(SyncEvent::Kind::Kept, path,
                                 QStringLiteral("it was deleted on the service, but has just changed here"));
                    break;
                case Installer::Result::Failed:
                    _report.TellRefusal(path, request.error);
                    break;
            }
        }
    }
}

void LocalChanges::_DeleteFolders(const QStringList& folders) {
    store::RecordDatabase::Transaction transaction(_records);
    for (int i = folders.size() - 1; i >= 0; --i) {
        const QString& path = folders[i];
        try {
            if (_tree.RemoveFolder(path)) {
                _snapshot.entries.remove(path);
                _report.Tell(SyncEvent::Kind::Deleted, path);
                _records.ForgetFolder(path);
            } else {
                // Without its record it would be new, and a sync would make it there again for what is never synced.
                _report.LeaveOpen(path);
            }
        } catch (const LocalError&) {
            _report.TellFailure(path, std::current_exception());
        }
    }
    transaction.Commit();
}

}  // namespace pull
}  // namespace ovsync
