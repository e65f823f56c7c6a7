#include "client/sync/Trash.h"

#include <cerrno>

#include "client/store/RecordDatabase.h"
#include "client/sync/LocalError.h"
#include "client/sync/Names.h"

namespace ovsync {
namespace syncing {

namespace {

QString TrashFolder() {
    return store::RecordDatabase::HiddenFolder() + QStringLiteral("/trash");
}

}  // namespace

void Trash::Take(const QString& file, const QString& path) {
    if (_days == 0) {
        _tree.Remove(file);
        return;
    }
    const QString folder = TrashFolder() + QLatin1Char('/') + _now.toString(QStringLiteral("yyyy-MM-dd HH.mm.ss"));
    // A pass can take the same path twice, as a file and as a folder, and two passes can begin within one second.
    QString place = folder;
    for (int number = 2; !_TakeInto(place, file, path); ++number) {
        place = folder + QLatin1Char(' ') + QString::number(number);
    }
}

bool Trash::_TakeInto(const QString& folder, const QString& file, const QString& path) {
    const QString place = folder + QLatin1Char('/') + path;
    if (!_MakeFolders(FolderOf(place))) {
        return false;
    }
    try {
        return _tree.Move(file, place);
    } catch (const LocalError& e) {
        // Another disk is mounted below the folder. To copy what is kept could take more space than there is.
        if (e.Code() != EXDEV) {
            throw;
        }
        _tree.Remove(file);
        return true;
    }
}

bool Trash::_MakeFolders(const QString& path) {
    if (const std::optional<LocalEntry> there = _tree.Look(path)) {
        return there->kind == LocalEntry::Kind::Folder;
    }
    if (!_MakeFolders(FolderOf(path))) {
        return false;
    }
    _tree.MakeFolder(path);
    return true;
}

}  // namespace syncing
}  // namespace ovsync
