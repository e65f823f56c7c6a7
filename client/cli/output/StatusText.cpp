#include "client/cli/output/StatusText.h"

#include <QDateTime>
#include <nlohmann/json.hpp>

#include "client/cli/output/ProgressLine.h"

namespace ovsync {
namespace output {

using nlohmann::json;

namespace {

QString StringOf(const json& value) {
    return value.is_string() ? QString::fromStdString(value.get<std::string>()) : QString();
}

/// Of the day where it is today.
QString ClockText(const json& value) {
    const QDateTime time = QDateTime::fromString(StringOf(value), Qt::ISODate).toLocalTime();
    const bool isToday = time.date() == QDate::currentDate();
    return time.toString(isToday ? QStringLiteral("HH:mm:ss") : QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString StateText(const json& folder) {
    const QString state = StringOf(folder["state"]);
    const json& last = folder["lastPass"];
    QString text;
    if (state == QLatin1String("paused")) {
        return QStringLiteral("paused");
    }
    if (last.is_null()) {
        text = state == QLatin1String("syncing") ? QStringLiteral("first pass under way") : QStringLiteral("starting");
    } else if (StringOf(last["outcome"]) == QLatin1String("inStep")) {
        text = QStringLiteral("in step at ") + ClockText(last["time"]);
    } else if (StringOf(last["outcome"]) == QLatin1String("leftSome")) {
        text = QStringLiteral("in step at %1 but for what is below").arg(ClockText(last["time"]));
    } else {
        text = QStringLiteral("failed at ") + ClockText(last["time"]);
    }
    if (state == QLatin1String("stopped")) {
        text += QStringLiteral(", stopped until that is changed");
    } else if (state == QLatin1String("syncing") && !last.is_null()) {
        text += QStringLiteral(", pass under way");
    } else if (!folder["nextPass"].is_null()) {
        text += QStringLiteral(", next pass at ") + ClockText(folder["nextPass"]);
    }
    return text;
}

QByteArray ProgressText(const json& progress) {
    report::SyncProgress known;
    known.doneFiles = progress["files"];
    known.allFiles = progress["allFiles"];
    known.doneBytes = progress["bytes"];
    known.allBytes = progress["allBytes"];
    const std::chrono::duration<double> elapsed(progress["seconds"].get<double>());
    return ProgressLine(known, std::chrono::duration_cast<std::chrono::milliseconds>(elapsed));
}

QByteArray FolderText(const json& folder, const Output& output) {
    QByteArray text = output.Shown(StringOf(folder["path"])) + "  " + output.Shown(StringOf(folder["url"])) + '\n';
    const auto add = [&](const QString& line) { text += "  " + output.Shown(line) + '\n'; };
    add(StateText(folder));
    if (!folder["progress"].is_null()) {
        text += "  " + ProgressText(folder["progress"]) + '\n';
    }
    if (!folder["error"].is_null()) {
        add(StringOf(folder["error"]));
    }
    if (!folder["notWatched"].is_null()) {
        add(QStringLiteral("changes here are noticed only by the clock: ") + StringOf(folder["notWatched"]));
    }
    const int conflicts = folder["conflicts"];
    const int problems = folder["problems"];
    if (problems > 0) {
        add(QStringLiteral("%1 left to you, %2 of them in conflict:").arg(problems).arg(conflicts));
    }
    for (const json& problem : folder["problemList"]) {
        add(QStringLiteral("  %1: %2").arg(StringOf(problem["path"]), StringOf(problem["detail"])));
    }
    const int untold = problems - static_cast<int>(folder["problemList"].size());
    if (untold > 0) {
        add(QStringLiteral("  and %1 more").arg(untold));
    }
    return text;
}

bool HasFileChanged(const json& status) {
    // An agent that was started before an update does not say it.
    return status.value("foldersFileChanged", false);
}

}  // namespace

QByteArray StatusText(const QByteArray& line, const Output& output) {
    const json status = json::parse(line.constData());
    QByteArray text;
    for (const json& mistake : status["mistakes"]) {
        text += output.Shown(StringOf(status["foldersFile"])) + ": " + output.Shown(StringOf(mistake)) + '\n';
    }
    if (HasFileChanged(status)) {
        text += output.Shown(StringOf(status["foldersFile"])) + " was changed after the agent read it; \"kill -HUP " +
                QByteArray::number(status["process"].get<int>()) + "\" has it read again\n";
    }
    if (!status["newVersion"].is_null()) {
        text += "There is a newer version: " + output.Shown(StringOf(status["newVersion"])) + '\n';
    }
    for (const json& folder : status["folders"]) {
        text += FolderText(folder, output);
    }
    if (text.isEmpty()) {
        text = "OvSync.exe runs, and has no folder to keep in step; \"ovsync folders add\" adds one\n";
    }
    return text;
}

bool IsAllWell(const QByteArray& line) {
    const json status = json::parse(line.constData());
    bool isWell = status["mistakes"].empty() && !HasFileChanged(status);
    for (const json& folder : status["folders"]) {
        const bool hasFailed =
            !folder["error"].is_null() || StringOf(folder["state"]) == QLatin1String("stopped") ||
            (!folder["lastPass"].is_null() && StringOf(folder["lastPass"]["outcome"]) != QLatin1String("inStep"));
        isWell = isWell && !hasFailed;
    }
    return isWell;
}

}  // namespace output
}  // namespace ovsync
