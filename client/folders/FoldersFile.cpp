#include "client/folders/FoldersFile.h"

#include <QDir>
#include <algorithm>
#include <cstring>
#include <functional>

#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/Exclusion.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/pass/ServiceFolder.h"
#include "client/sync/pass/SyncOptions.h"
#include "client/sync/pass/SyncPass.h"
#include "client/user/Places.h"
#include "client/user/WholeFile.h"

namespace ovsync {
namespace folders {

using input::Refusal;
using input::UsageError;
using local::LocalError;
using user::EditWholeFile;
using user::FoldersFilePath;
using user::ReadWholeFile;

namespace {

const mode_t AsOthersInTheFolder = 0644;

const char Header[] =
    "# The folders that ovsync keeps in step. \"ovsync folders\" changes this file, and so may you.\n"
    "# The agent reads it when it starts, and after \"pkill -HUP OvSync.exe\".\n";

/// Throws WrongFolder when a pass would.
void RequireSameService(const SyncedFolder& folder) {
    if (!QDir(folder.directory).exists()) {
        return;
    }
    store::RecordDatabase records(folder.directory, store::RecordDatabase::Access::Try);
    pass::ServiceFolder service;
    service.folder.localPath = folder.directory;
    service.address = folder.location.Address();
    service.user = folder.user;
    service.caFile = folder.caFile;
    pass::SyncOptions options;
    options.daysKept = folder.daysKept;
    options.exclusion = local::Exclusion(folder.rules);
    pass::SyncPass::RequireSameService(records, service, options);
}

void RequireAddableTo(const QVector<SyncedFolder>& folders, const SyncedFolder& folder) {
    for (const SyncedFolder& known : folders) {
        if (RealDirectory(known) == RealDirectory(folder)) {
            throw UsageError(QStringLiteral("%1 is kept in step with %2 already").arg(known.directory, known.url));
        }
        const QString reason = ReasonAgainstBoth(known, folder);
        if (!reason.isEmpty()) {
            throw UsageError(
                QStringLiteral("%1 first: by --exclude when that is added, or in %2").arg(reason, FoldersFilePath()));
        }
    }
    RequireSameService(folder);
}

FoldersReading ReadHere(const QByteArray& text) {
    return ReadFolders(text, QDir::homePath());
}

void RequireNoMistake(const FoldersReading& reading) {
    if (!reading.mistakes.isEmpty()) {
        throw Refusal(QStringLiteral("%1 has a mistake in %2").arg(FoldersFilePath(), reading.mistakes.first()));
    }
}

void Edit(
    const std::function<QByteArray(const QByteArray&, const QVector<SyncedFolder>&)>& change,
    const std::function<void()>& beforePlacing = [] {}) {
    const auto edit = [&change](const QByteArray& text) {
        const FoldersReading before = ReadHere(text);
        RequireNoMistake(before);
        QByteArray changed = change(text, before.folders);
        if (changed.isEmpty() || !ReadHere(changed).mistakes.isEmpty()) {
            throw Refusal(QStringLiteral("%1: this folder does not stand in a [[folder]] block with lines of its own. "
                                         "Change it by hand")
                              .arg(FoldersFilePath()));
        }
        return changed;
    };
    EditWholeFile(FoldersFilePath(), AsOthersInTheFolder, edit, beforePlacing);
}

/// Throws UsageError when it is not there.
int IndexOf(const QString& directory, const QVector<SyncedFolder>& folders) {
    const auto found = std::find_if(folders.begin(), folders.end(), [&directory](const SyncedFolder& folder) {
        return folder.directory == directory || RealDirectory(folder) == directory;
    });
    if (found == folders.end()) {
        throw UsageError(QStringLiteral("%1 is none of the folders that \"ovsync folders list\" shows").arg(directory));
    }
    return static_cast<int>(found - folders.begin());
}

}  // namespace

FoldersReading ReadFoldersFile() {
    try {
        return ReadHere(ReadWholeFile(FoldersFilePath()));
    } catch (const LocalError& e) {
        FoldersReading reading;
        reading.mistakes.append(QStringLiteral("it cannot be read: ") +
                                QString::fromLocal8Bit(std::strerror(e.Code())));
        return reading;
    }
}

bool HasFoldersFileChanged(const FoldersReading& since) {
    try {
        return since.text != ReadWholeFile(FoldersFilePath());
    } catch (const LocalError&) {
        return since.text.has_value();
    }
}

void RequireAddable(const SyncedFolder& folder) {
    const FoldersReading reading = ReadHere(ReadWholeFile(FoldersFilePath()));
    RequireNoMistake(reading);
    RequireAddableTo(reading.folders, folder);
}

void AddToFoldersFile(const SyncedFolder& folder, const std::function<void()>& keepPassword) {
    Edit(
        [&folder](const QByteArray& text, const QVector<SyncedFolder>& folders) {
            RequireAddableTo(folders, folder);
            return WithFolder(text.isEmpty() ? QByteArray(Header) : text, folder);
        },
        keepPassword);
}

void RemoveFromFoldersFile(const QString& directory) {
    Edit([&directory](const QByteArray& text, const QVector<SyncedFolder>& folders) {
        return WithoutFolder(text, IndexOf(directory, folders));
    });
}

void PauseInFoldersFile(const QString& directory, bool isPaused) {
    Edit([&directory, isPaused](const QByteArray& text, const QVector<SyncedFolder>& folders) {
        return WithPause(text, IndexOf(directory, folders), isPaused);
    });
}

}  // namespace folders
}  // namespace ovsync
