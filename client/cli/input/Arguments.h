#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <optional>
#include <string>
#include <vector>

#include "client/cli/input/SyncArguments.h"
#include "client/cli/output/ListingOutput.h"
#include "client/sync/pass/SyncOptions.h"
#include "client/wire/ConnectionSettings.h"

namespace ovsync {
namespace input {

/// What the options of the commands write to. A plain value.
struct Arguments {
    static constexpr const char* EntriesOption = "--max-listing-entries";
    static constexpr const char* BytesOption = "--max-listing-bytes";

    std::string url;
    std::string destination;
    std::string directory;
    std::string path;
    std::optional<std::string> from;
    std::optional<std::string> to;
    std::optional<int> olderThan;
    std::string user;
    std::string caFile;
    std::string since;
    std::vector<std::string> excluded;
    double silenceLimit = 60;
    qint64 maxListingEntries = wire::ListingLimits().entries.value;
    qint64 maxListingBytes = wire::ListingLimits().bytes.value;
    bool isLong = false;
    bool isJson = false;
    bool withParents = false;
    bool isRecursive = false;
    bool isForced = false;
    bool downloads = false;
    bool deletes = false;
    std::string maxDelete;
    int daysKept = local::Trash::DefaultDays;
    bool isStrict = false;
    bool isDryRun = false;
    bool isWatching = false;
    int transfers = pass::SyncOptions().transfers;

    wire::ConnectionSettings Connecting() const;

    output::ListFormat Format() const;

    /// Throws UsageError when it is no time.
    QDateTime Since() const;

    QStringList Excluded() const;

    /// Throws UsageError when there is a limit that is none.
    SyncArguments Syncing() const;
};

}  // namespace input
}  // namespace ovsync
