#include "client/cli/output/FolderFormat.h"

#include <nlohmann/json.hpp>

#include "client/cli/output/DateText.h"
#include "client/cli/output/RecordFormat.h"

namespace ovsync {
namespace output {

using sync::config::FolderConfiguration;

QByteArray LongLine(const FolderConfiguration& folder, const Output& output) {
    return LongColumns("-", folder.lastModifiedDate, "-", output.Shown(folder.name) + '/');
}

QByteArray FieldLines(const FolderConfiguration& folder, const Output& output) {
    QByteArray lines;
    AddField(lines, "Name", output.Shown(folder.name) + '/');
    AddField(lines, "Server path", output.Shown(folder.serverPath));
    AddField(lines, "Modified", DateText(folder.lastModifiedDate));
    AddField(lines, "Resource id", output.Shown(folder.resourceId));
    AddField(lines, "Folder id", output.Shown(folder.getServerFolderId()));
    AddField(lines, "Owner", output.Shown(folder.ownerId));
    AddField(lines, "Privileges", output.Shown(folder.getPrivileges()));
    return lines;
}

QByteArray JsonObject(const FolderConfiguration& folder) {
    nlohmann::ordered_json json;
    json["type"] = "folder";
    json["name"] = folder.name.toStdString();
    json["serverPath"] = folder.serverPath.toStdString();
    AddMember(json, "modified", folder.lastModifiedDate);
    if (!folder.resourceId.isEmpty()) {
        json["resourceId"] = folder.resourceId.toInt();
    }
    AddMember(json, "folderId", folder.getServerFolderId());
    AddMember(json, "ownerId", folder.ownerId);
    AddMember(json, "privileges", folder.getPrivileges());
    return QByteArray::fromStdString(json.dump());
}

}  // namespace output
}  // namespace ovsync
