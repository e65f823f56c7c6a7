#pragma once

#include <QString>
#include <functional>

#include "client/folders/FoldersText.h"

/// The folders file of this user, see user::FoldersFilePath. Changes throw Refusal when the file has a mistake or
/// cannot be changed by a program, UsageError when the folder is not the one to be changed, and local::LocalError when
/// the disk fails; nothing is changed then. Thread-safe.

namespace ovsync {
namespace folders {

/// A missing file names no folder; that it cannot be read is a mistake.
FoldersReading ReadFoldersFile();
/// Whether it is another one by now than ReadFoldersFile has read.
bool HasFoldersFileChanged(const FoldersReading& since);

/// Throws what AddToFoldersFile would, and changes nothing.
void RequireAddable(const SyncedFolder& folder);

/// `folder` is not in it yet, and its directory is there. Throws also pass::WrongFolder when it is in step with another
/// URL, and store::StoreError when nobody can tell that now. `keepPassword` is called when nothing but itself can fail
/// any more; what it throws leaves the file as it is.
void AddToFoldersFile(const SyncedFolder& folder, const std::function<void()>& keepPassword);

/// `directory` is absolute, as FoldersReading has it.
void RemoveFromFoldersFile(const QString& directory);
void PauseInFoldersFile(const QString& directory, bool isPaused);

}  // namespace folders
}  // namespace ovsync
