#include "client/cli/offline/ConflictsCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "client/cli/offline/SyncedFolder.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalTree.h"

namespace ovsync {
namespace offline {

using commands::CommandRegistry;
using input::Arguments;
using local::LocalTree;
using output::ExitCode;
using output::Output;
using store::ConflictCopy;
using store::RecordDatabase;

namespace {

/// Those whose copy is still there, in path order.
QList<ConflictCopy> OpenConflicts(const QString& root) {
    RecordDatabase records(root, RecordDatabase::Access::Try);
    LocalTree tree(root);
    QList<ConflictCopy> copies = records.Copies();
    const auto isOver = [&tree](const ConflictCopy& copy) { return !tree.Look(copy.copy); };
    copies.erase(std::remove_if(copies.begin(), copies.end(), isOver), copies.end());
    std::sort(copies.begin(), copies.end(), [](const ConflictCopy& a, const ConflictCopy& b) {
        return a.path < b.path || (a.path == b.path && a.copy < b.copy);
    });
    return copies;
}

void PrintConflicts(const QList<ConflictCopy>& copies, Output& output) {
    for (const ConflictCopy& copy : copies) {
        output.Write(output.Shown(copy.path) + "\n    the service's version: " + output.Shown(copy.copy) + '\n');
    }
    if (!copies.isEmpty()) {
        output.Write(
            "To keep yours, delete the service's version here. To keep the service's, delete yours, or give the "
            "service's its name.\nTo keep both, give the service's another name. The next sync does the rest.\n");
    }
}

void PrintJson(const QList<ConflictCopy>& copies, Output& output) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const ConflictCopy& copy : copies) {
        json.push_back({{"path", copy.path.toStdString()}, {"serviceVersion", copy.copy.toStdString()}});
    }
    output.Write(QByteArray::fromStdString(json.dump()) + '\n');
}

}  // namespace

void AddConflictsCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddLocal(
        "conflicts", "Lists the files that both sides changed, and how to end these conflicts.",
        [](const Arguments& given, Output& output) {
            const QList<ConflictCopy> copies = OpenConflicts(SyncedFolder(QString::fromStdString(given.directory)));
            given.isJson ? PrintJson(copies, output) : PrintConflicts(copies, output);
            return ExitCode::Done;
        });
    CommandRegistry::AddText(command, "DIR", "The local folder", registry.Given().directory);
}

}  // namespace offline
}  // namespace ovsync
