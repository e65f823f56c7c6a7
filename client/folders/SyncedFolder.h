#pragma once

#include <QString>
#include <QStringList>

#include "client/cli/input/Location.h"
#include "client/sync/local/Trash.h"
#include "client/sync/pass/DeletionLimit.h"
#include "client/sync/pass/SyncOptions.h"

namespace ovsync {
namespace folders {

/// A local folder that is kept in step with one of a service, as the folders file names it. A plain value.
struct SyncedFolder {
    /// Absolute.
    QString directory;
    /// As it was written, without a password.
    QString url;
    /// What `url` names.
    input::Location location;
    /// Empty for whom ~/.netrc names for the host, or nobody.
    QString user;
    /// What is left alone, as local::Exclusion takes it.
    QStringList rules;
    /// As it was written; empty for the usual limit.
    QString deletionLimitText;
    pass::DeletionLimit deletionLimit;
    int daysKept = local::Trash::DefaultDays;
    int transfers = pass::SyncOptions().transfers;
    /// Empty for the certificates of the system.
    QString caFile;
    bool isPaused = false;

    /// Whether the folder is synced in the same way.
    bool IsSyncedAs(const SyncedFolder& other) const {
        return directory == other.directory && url == other.url && user == other.user && rules == other.rules &&
               deletionLimitText == other.deletionLimitText && daysKept == other.daysKept &&
               transfers == other.transfers && caFile == other.caFile && isPaused == other.isPaused;
    }
};

}  // namespace folders
}  // namespace ovsync
