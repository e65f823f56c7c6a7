#pragma once

#include <QString>

#include "client/folders/FoldersText.h"

/// The folders file of this user, see user::FoldersFilePath. Changes throw Refusal when the file has a mistake or
/// cannot be changed by a program, UsageError when the folder is not the one to be changed, and SyncException when the
/// disk fails; nothing is changed then. Thread-safe.

namespace ovsync {
namespace folders {

/// Throws SyncException when the file cannot be read. A missing one names no folder.
FoldersReading ReadFoldersFile();

/// `folder` is not in it yet.
void AddToFoldersFile(const SyncedFolder& folder);

/// `directory` is absolute, as FoldersReading has it.
void RemoveFromFoldersFile(const QString& directory);
void PauseInFoldersFile(const QString& directory, bool isPaused);

}  // namespace folders
}  // namespace ovsync
