#include "client/cli/offline/ConflictsCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <nlohmann/json.hpp>
#include <optional>

#include "client/cli/offline/SyncedFolder.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalContent.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/LocalTree.h"

namespace ovsync {
namespace offline {

using commands::CommandRegistry;
using input::Arguments;
using local::LocalContent;
using local::LocalTree;
using output::ExitCode;
using output::Output;
using store::ConflictCopy;
using store::RecordDatabase;

namespace {

struct OpenConflict {
    ConflictCopy copy;
    /// Whether somebody wrote into it since, so that it is the service's version no more.
    bool isChanged = false;
};

bool IsChanged(LocalTree& tree, const ConflictCopy& copy) {
    try {
        const std::atomic<bool> isStopped(false);
        const std::optional<LocalContent> content = LocalContent::Of(tree, copy.copy, isStopped);
        return !content || content->md5 != copy.contentMd5;
    } catch (const local::LocalError&) {
        // Nobody can write into what nobody can read.
        return false;
    }
}

/// Those whose copy is still there, in path order.
QVector<OpenConflict> OpenConflicts(const QString& root) {
    RecordDatabase records(root, RecordDatabase::Access::Try);
    LocalTree tree(root);
    QList<ConflictCopy> copies = records.Copies();
    std::sort(copies.begin(), copies.end(), [](const ConflictCopy& a, const ConflictCopy& b) {
        return a.path < b.path || (a.path == b.path && a.copy < b.copy);
    });
    QVector<OpenConflict> conflicts;
    for (const ConflictCopy& copy : qAsConst(copies)) {
        const std::optional<local::LocalEntry> there = tree.Look(copy.copy);
        if (there && there->kind == local::LocalEntry::Kind::File) {
            conflicts.append({copy, IsChanged(tree, copy)});
        }
    }
    return conflicts;
}

void PrintConflicts(const QVector<OpenConflict>& conflicts, Output& output) {
    for (const OpenConflict& conflict : conflicts) {
        output.Write(output.Shown(conflict.copy.path) +
                     (conflict.isChanged ? "\n    a copy of the service's version, changed here since: "
                                         : "\n    the service's version: ") +
                     output.Shown(conflict.copy.copy) + '\n');
    }
    if (!conflicts.isEmpty()) {
        output.Write(
            "To keep yours, delete the service's version here. To keep the service's, delete yours, or give the "
            "service's its name.\nTo keep both, give the service's another name. The next sync does the rest.\n");
    }
}

void PrintJson(const QVector<OpenConflict>& conflicts, Output& output) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const OpenConflict& conflict : conflicts) {
        json.push_back({{"path", conflict.copy.path.toStdString()},
                        {"serviceVersion", conflict.copy.copy.toStdString()},
                        {"isChanged", conflict.isChanged}});
    }
    output.Write(QByteArray::fromStdString(json.dump()) + '\n');
}

}  // namespace

void AddConflictsCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddLocal("conflicts", "Lists the files that both sides changed, and how to end these conflicts.",
                          [](const Arguments& given, Output& output) {
                              const QVector<OpenConflict> conflicts =
                                  OpenConflicts(SyncedFolder(QString::fromStdString(given.directory)));
                              given.isJson ? PrintJson(conflicts, output) : PrintConflicts(conflicts, output);
                              return ExitCode::Done;
                          });
    CommandRegistry::AddText(command, "DIR", "The local folder", registry.Given().directory);
}

}  // namespace offline
}  // namespace ovsync
