#include "client/cli/input/Arguments.h"

#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
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
const qint64 LeastBandwidth = 1024;

/// The file of certificates that the environment names, as other programs take it; empty for none.
QString CertificatesOfEnvironment() {
    for (const char* name : {"CURL_CA_BUNDLE", "SSL_CERT_FILE"}) {
        QString file = qEnvironmentVariable(name);
        if (!file.isEmpty() && !QFileInfo(file).isReadable()) {
            throw UsageError(QStringLiteral("%1=%2: there is no such file, or it cannot be read")
                                 .arg(QString::fromLatin1(name), file));
        }
        if (!file.isEmpty()) {
            return file;
        }
    }
    return QString();
}

/// Null for none.
std::shared_ptr<wire::Bandwidth> ReadBandwidth(const std::optional<std::string>& text) {
    if (!text) {
        return nullptr;
    }
    static const QRegularExpression form(QStringLiteral("\\A([0-9]{1,9}(?:\\.[0-9]{1,3})?)([KMGkmg]?)\\z"));
    const QRegularExpressionMatch match = form.match(QString::fromStdString(*text));
    const QString unit = match.captured(2).toUpper();
    const int index = unit.isEmpty() ? 0 : QStringLiteral("KMG").indexOf(unit) + 1;
    const auto rate =
        static_cast<qint64>(match.captured(1).toDouble() * static_cast<double>(qint64(1) << (10 * index)));
    if (rate < LeastBandwidth) {
        throw UsageError(
            QStringLiteral("--bandwidth \"%1\": not a valid rate; it should look like 500K or 2.5M, bytes a "
                           "second, and be at least 1K")
                .arg(QString::fromStdString(*text)));
    }
    return std::make_shared<wire::Bandwidth>(rate);
}

pass::DeletionLimit ReadLimit(const std::optional<std::string>& maxDelete) {
    if (!maxDelete) {
        return {};
    }
    const std::optional<pass::DeletionLimit> limit = pass::DeletionLimit::Read(QString::fromStdString(*maxDelete));
    if (!limit) {
        throw UsageError(
            QStringLiteral("--max-delete \"%1\": this is neither a number of files from 0 to %2, as 12, nor a part of "
                           "them from 0% to 100%, as 30%")
                .arg(QString::fromStdString(*maxDelete), QString::number(pass::DeletionLimit::MostFiles)));
    }
    return *limit;
}

}  // namespace

wire::ConnectionSettings Arguments::Connecting() const {
    wire::ConnectionSettings settings;
    settings.caFile = caFile.empty() ? CertificatesOfEnvironment() : QString::fromStdString(caFile);
    settings.bandwidth = ReadBandwidth(bandwidth);
    settings.silenceLimit =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(silenceLimit));
    settings.answerLimit = SilenceLimitsOfAnswer * settings.silenceLimit;
    settings.slownessLimit = SilenceLimitsOfSlowness * settings.silenceLimit;
    settings.listing.entries = {maxListingEntries, QString::fromLatin1(EntriesOption)};
    settings.listing.bytes = {maxListingBytes, QString::fromLatin1(BytesOption)};
    if (!isQuiet && isatty(STDERR_FILENO) == 1) {
        const auto progress = std::make_shared<Progress>();
        settings.onProgress = [progress](qint64 bytes, bool isOver) { progress->Show(bytes, isOver); };
    }
    return settings;
}

QString Arguments::UserAt(const Location& location) const {
    const QString named = QString::fromStdString(user);
    if (!named.isEmpty() && !location.user.isEmpty() && location.user != named) {
        throw UsageError(QStringLiteral("The URL names another user than -u does."));
    }
    return named.isEmpty() ? location.user : named;
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

void Arguments::AddRule(const char* option, const char* mark, const std::string& pattern) {
    try {
        rules.append(QLatin1String(mark) + local::Exclusion::RuleIn(QByteArray::fromStdString(pattern)));
    } catch (const sync::core::SyncException& e) {
        throw UsageError(QStringLiteral("%1: %2").arg(QLatin1String(option), e.Message()));
    }
}

void Arguments::AddRulesOf(const std::string& file) {
    QFile source(QString::fromStdString(file));
    if (!source.open(QIODevice::ReadOnly)) {
        throw UsageError(QStringLiteral("--exclude-from %1: %2").arg(source.fileName(), source.errorString()));
    }
    try {
        rules += local::Exclusion::RulesIn(source.readAll());
    } catch (const sync::core::SyncException& e) {
        throw UsageError(QStringLiteral("--exclude-from %1, %2").arg(source.fileName(), e.Message()));
    }
}

SyncArguments Arguments::Syncing() const {
    return {QString::fromStdString(directory),
            local::Exclusion(rules),
            deletes,
            conflicts,
            isDryRun,
            Errors(),
            isQuiet,
            transfers,
            isStrict,
            isForced,
            ReadLimit(maxDelete),
            daysKept,
            QString::fromStdString(caFile)};
}

}  // namespace input
}  // namespace ovsync
