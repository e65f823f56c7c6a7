#include "client/sync/pass/PassCommand.h"

namespace ovsync {
namespace pass {

namespace {

/// As a shell takes it for one word, whatever is in it.
QString InQuotes(QString word) {
    const QLatin1Char quote('\'');
    return quote + word.replace(quote, QLatin1String("'\\''")) + quote;
}

}  // namespace

QString PassCommand(const QString& command, const ServiceFolder& service, const SyncOptions& options) {
    QString line = QStringLiteral("ovsync ") + command;
    const auto add = [&line](const char* option, const QString& value) {
        // A value may begin with a '-'.
        line += QLatin1Char(' ') + QLatin1String(option) + QLatin1Char('=') + value;
    };
    if (!service.user.isEmpty()) {
        add("--user", InQuotes(service.user));
    }
    if (!service.caFile.isEmpty()) {
        add("--ca-file", InQuotes(service.caFile));
    }
    if (options.daysKept != SyncOptions().daysKept) {
        add("--keep-deleted", QString::number(options.daysKept));
    }
    for (const QString& rule : options.exclusion.Rules()) {
        add("--exclude", InQuotes(rule));
    }
    const QString here = InQuotes(service.folder.localPath);
    const QString there = InQuotes(service.address);
    const bool isPull = command.startsWith(QLatin1String("pull"));
    return line + QLatin1Char(' ') + (isPull ? there : here) + QLatin1Char(' ') + (isPull ? here : there);
}

}  // namespace pass
}  // namespace ovsync
