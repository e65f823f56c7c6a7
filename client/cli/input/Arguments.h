#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <optional>
#include <string>

#include "client/cli/input/Location.h"
#include "client/cli/input/SyncArguments.h"
#include "client/cli/output/Complaint.h"
#include "client/cli/output/ListingOutput.h"
#include "client/sync/local/Exclusion.h"
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
    std::optional<std::string> bandwidth;
    /// What is left out, each valid, in the order in which it was said.
    QStringList rules;
    /// How many levels of folders have a line of their own.
    int depth = 0;
    bool inBytes = false;
    bool isQuiet = false;
    bool isVerbose = false;
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
    pass::SyncOptions::Conflicts conflicts = pass::SyncOptions::Conflicts::KeepBoth;
    std::optional<std::string> maxDelete;
    int daysKept = local::Trash::DefaultDays;
    bool isStrict = false;
    bool isDryRun = false;
    bool isWatching = false;
    bool isUntried = false;
    int transfers = pass::SyncOptions().transfers;

    /// Throws UsageError for a bandwidth that is not valid, and when the environment names certificates that are
    /// missing.
    wire::ConnectionSettings Connecting() const;

    /// Who is to log in at `location`; empty when neither that nor an option names anybody. Throws UsageError when they
    /// name two.
    QString UserAt(const Location& location) const;

    output::ListFormat Format() const;
    output::ErrorStyle Errors() const { return {isJson, isVerbose}; }

    /// Throws UsageError when it is not a valid time.
    QDateTime Since() const;

    local::Exclusion Excluded() const { return local::Exclusion(rules); }

    /// Adds the rule that `option` gave, with `mark` before it. Throws UsageError when it is not valid.
    void AddRule(const char* option, const char* mark, const std::string& pattern);
    /// Adds the rules in `file`. Throws UsageError when it cannot be read, or one is not valid.
    void AddRulesOf(const std::string& file);

    /// Throws UsageError for a limit that is not valid.
    SyncArguments Syncing() const;
};

}  // namespace input
}  // namespace ovsync
