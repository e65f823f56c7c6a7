#include "client/sync/pass/PassCommand.h"

#include "client/sync/report/OfferedCommand.h"

namespace ovsync {
namespace pass {

using report::ShellWord;

namespace {

/// As --conflict takes it.
QString NameOf(SyncOptions::Conflicts conflicts) {
    switch (conflicts) {
        case SyncOptions::Conflicts::Newer:
            return QStringLiteral("newer");
        case SyncOptions::Conflicts::Here:
            return QStringLiteral("here");
        case SyncOptions::Conflicts::There:
            return QStringLiteral("there");
        case SyncOptions::Conflicts::KeepBoth:
            break;
    }
    return QString();
}

}  // namespace

QString PassCommand(const QString& command, const ServiceFolder& service, const SyncOptions& options) {
    QString line = report::OfferedCommand(command, service.user, service.caFile);
    const auto add = [&line](const char* option, const QString& value) {
        // A value may begin with a '-'.
        line += QLatin1Char(' ') + QLatin1String(option) + QLatin1Char('=') + value;
    };
    if (command.startsWith(QLatin1String("sync")) && options.conflicts != SyncOptions::Conflicts::KeepBoth) {
        add("--conflict", NameOf(options.conflicts));
    }
    if (options.daysKept != SyncOptions().daysKept) {
        add("--keep-deleted", QString::number(options.daysKept));
    }
    for (const QString& rule : options.exclusion.Rules()) {
        add("--exclude", ShellWord(rule));
    }
    const QString here = ShellWord(service.folder.localPath);
    const QString there = ShellWord(service.address);
    const bool isPull = command.startsWith(QLatin1String("pull"));
    return line + QLatin1Char(' ') + (isPull ? there : here) + QLatin1Char(' ') + (isPull ? here : there);
}

}  // namespace pass
}  // namespace ovsync
