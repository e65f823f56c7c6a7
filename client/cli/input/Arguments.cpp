#include "client/cli/input/Arguments.h"

#include <unistd.h>

#include <chrono>
#include <memory>

#include "client/cli/input/UsageError.h"
#include "client/cli/output/Progress.h"
#include "client/wire/DateReader.h"

namespace ovsync {
namespace input {

using output::ListFormat;
using output::Progress;

namespace {

const int SilenceLimitsOfAnswer = 30;
const int SilenceLimitsOfSlowness = 10;

pass::DeletionLimit ReadLimit(const std::string& maxDelete) {
    if (maxDelete.empty()) {
        return {};
    }
    const std::optional<pass::DeletionLimit> limit = pass::DeletionLimit::Read(QString::fromStdString(maxDelete));
    if (!limit) {
        throw UsageError(
            QStringLiteral("--max-delete \"%1\": this is neither a number of files, as 12, nor a part of them, as 30%")
                .arg(QString::fromStdString(maxDelete)));
    }
    return *limit;
}

}  // namespace

wire::ConnectionSettings Arguments::Connecting() const {
    wire::ConnectionSettings settings;
    settings.caFile = QString::fromStdString(caFile);
    settings.silenceLimit =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(silenceLimit));
    settings.answerLimit = SilenceLimitsOfAnswer * settings.silenceLimit;
    settings.slownessLimit = SilenceLimitsOfSlowness * settings.silenceLimit;
    settings.listing.entries = {maxListingEntries, QString::fromLatin1(EntriesOption)};
    settings.listing.bytes = {maxListingBytes, QString::fromLatin1(BytesOption)};
    if (isatty(STDERR_FILENO) == 1) {
        const auto progress = std::make_shared<Progress>();
        settings.onProgress = [progress](qint64 bytes, bool isOver) { progress->Show(bytes, isOver); };
    }
    return settings;
}

ListFormat Arguments::Format() const {
    const ListFormat plain = isLong ? ListFormat::Long : ListFormat::Names;
    return isJson ? ListFormat::Json : plain;
}

QDateTime Arguments::Since() const {
    QDateTime time = wire::ReadDate(since.data(), since.size());
    if (!since.empty() && !time.isValid()) {
        throw UsageError(QStringLiteral("--since \"%1\": not a valid time; it should look like 2026-11-20T10:15:30Z or "
                                        "\"Fri, 20 Nov 2026 10:15:30 GMT\"")
                             .arg(QString::fromStdString(since)));
    }
    return time;
}

QStringList Arguments::Excluded() const {
    QStringList globs;
    for (const std::string& glob : excluded) {
        globs.append(QString::fromStdString(glob));
    }
    return globs;
}

SyncArguments Arguments::Syncing() const {
    return {QString::fromStdString(directory),
            Excluded(),
            deletes,
            isDryRun,
            isJson,
            transfers,
            isStrict,
            ReadLimit(maxDelete),
            daysKept};
}

}  // namespace input
}  // namespace ovsync
