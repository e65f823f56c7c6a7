#pragma once

#include <QString>

/// Where this user's files lie, by the XDG base directories. A variable that is not an absolute path counts as unset.
/// Thread-safe as long as nobody changes the environment.

namespace ovsync {
namespace user {

/// The file that names the folders to keep in step: ovsync/folders.toml in $XDG_CONFIG_HOME, or in ~/.config.
QString FoldersFilePath();

/// For logs: ovsync in $XDG_STATE_HOME, or in ~/.local/state.
QString StateFolder();

/// For what only lives as long as the user is logged in: ovsync in $XDG_RUNTIME_DIR, or StateFolder.
QString RuntimeFolder();

/// Makes the folder, for this user alone, and those above it. Throws local::LocalError.
void MakePrivateFolder(const QString& path);

}  // namespace user
}  // namespace ovsync
