#include "client/agent/StatusJson.h"

#include <unistd.h>

#include <nlohmann/json.hpp>

namespace ovsync {
namespace agent {

using nlohmann::ordered_json;
using report::SyncEvent;

namespace {

ordered_json TextOrNull(const QString& text) {
    return text.isEmpty() ? ordered_json() : ordered_json(text.toStdString());
}

ordered_json TimeOrNull(const QDateTime& time) {
    return TextOrNull(time.isValid() ? time.toUTC().toString(Qt::ISODate) : QString());
}

const char* NameOf(FolderStatus::State state) {
    switch (state) {
        case FolderStatus::State::Starting:
            return "starting";
        case FolderStatus::State::Waiting:
            return "waiting";
        case FolderStatus::State::Syncing:
            return "syncing";
        case FolderStatus::State::Stopped:
            return "stopped";
        case FolderStatus::State::Paused:
            return "paused";
    }
    return "";
}

const char* NameOf(PassResult::End end) {
    switch (end) {
        case PassResult::End::InStep:
            return "inStep";
        case PassResult::End::LeftSome:
            return "leftSome";
        case PassResult::End::Failed:
            return "failed";
        case PassResult::End::Rejected:
            return "rejected";
        case PassResult::End::Busy:
        case PassResult::End::Stopped:
            return "stopped";
    }
    return "";
}

ordered_json LastPassOf(const FolderStatus& folder) {
    if (!folder.lastPass.isValid()) {
        return nullptr;
    }
    return {{"time", TimeOrNull(folder.lastPass)},
            {"outcome", NameOf(folder.lastEnd)},
            {"fetched", folder.fetched},
            {"sent", folder.sent},
            {"moved", folder.moved},
            {"deleted", folder.deleted},
            {"bytes", folder.bytes},
            {"seconds", folder.seconds}};
}

ordered_json ProgressOf(const FolderStatus& folder) {
    if (!folder.progress) {
        return nullptr;
    }
    const report::SyncProgress& progress = *folder.progress;
    ordered_json json = {
        {"files", progress.doneFiles},   {"allFiles", progress.allFiles},     {"bytes", progress.doneBytes},
        {"allBytes", progress.allBytes}, {"seconds", folder.progressSeconds}, {"bytesPerSecond", nullptr},
        {"secondsLeft", nullptr}};
    if (folder.progressSeconds > 0 && progress.doneBytes > 0) {
        const double rate = static_cast<double>(progress.doneBytes) / folder.progressSeconds;
        const auto left = static_cast<double>(qMax<qint64>(0, progress.allBytes - progress.doneBytes));
        json["bytesPerSecond"] = static_cast<qint64>(rate);
        json["secondsLeft"] = static_cast<qint64>(left / rate);
    }
    return json;
}

ordered_json ProblemsOf(const FolderStatus& folder) {
    ordered_json problems = ordered_json::array();
    for (const SyncEvent& problem : folder.problems) {
        problems.push_back({{"path", problem.path.toStdString()},
                            {"isConflict", problem.kind == SyncEvent::Kind::Conflict},
                            {"detail", problem.detail.toStdString()}});
    }
    return problems;
}

ordered_json JsonOf(const FolderStatus& folder) {
    return {{"path", folder.directory.toStdString()},
            {"url", folder.url.toStdString()},
            {"state", NameOf(folder.state)},
            {"lastPass", LastPassOf(folder)},
            {"nextPass", TimeOrNull(folder.nextPass)},
            {"progress", ProgressOf(folder)},
            {"conflicts", folder.conflictCount},
            {"problems", folder.problemCount},
            {"problemList", ProblemsOf(folder)},
            {"error", TextOrNull(folder.error)},
            {"notWatched", TextOrNull(folder.notWatched)}};
}

}  // namespace

QByteArray StatusLine(const AgentStatus& status) {
    ordered_json mistakes = ordered_json::array();
    for (const QString& mistake : status.mistakes) {
        mistakes.push_back(mistake.toStdString());
    }
    ordered_json folders = ordered_json::array();
    QString newVersion;
    for (const FolderStatus& folder : status.folders) {
        folders.push_back(JsonOf(folder));
        newVersion = folder.newVersion.isEmpty() ? newVersion : folder.newVersion;
    }
    const ordered_json json = {{"running", true},
                               {"process", getpid()},
                               {"foldersFile", status.foldersFile.toStdString()},
                               {"mistakes", mistakes},
                               {"foldersFileChanged", status.hasFoldersFileChanged},
                               {"newVersion", TextOrNull(newVersion)},
                               {"folders", folders}};
    return QByteArray::fromStdString(json.dump()) + '\n';
}

}  // namespace agent
}  // namespace ovsync
