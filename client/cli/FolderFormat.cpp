#include "client/cli/FolderFormat.h"

#include <nlohmann/json.hpp>
#include <string>

#include "client/cli/DateText.h"

namespace ovsync {
namespace cli {

using sync::config::FolderConfiguration;

QByteArray LongLine(const FolderConfiguration& folder, const Output& output) {
    const QByteArray date = DateText(folder.lastModifiedDate);
    QByteArray line;
    line += QByteArrayLiteral("-").rightJustified(12);
    line += "  ";
    line += (date.isEmpty() ? QByteArrayLiteral("-") : date).leftJustified(20);
    line += "     -  ";
    line += output.Shown(folder.name);
    line += "/\n";
    return line;
}

QByteArray FieldLines(const FolderConfiguration& folder, const Output& output) {
    QByteArray lines;
    const auto add = [&lines](const char* label, const QByteArray& value) {
        if (!value.isEmpty()) {
            lines += QByteArray(label).leftJustified(18) + value + '\n';
        }
    };
    add("Name", output.Shown(folder.name) + '/');
    add("Server path", output.Shown(folder.serverPath));
    add("Modified", DateText(folder.lastModifiedDate));
    add("Resource id", output.Shown(folder.resourceId));
    add("Folder id", output.Shown(folder.getServerFolderId()));
    add("Owner", output.Shown(folder.ownerId));
    add("Privileges", output.Shown(folder.getPrivileges()));
    return lines;
}

QByteArray JsonObject(const FolderConfiguration& folder) {
    nlohmann::ordered_json json;
    const auto add = [&json](const char* key, const std::string& value) {
        if (!value.empty()) {
            json[key] = value;
        }
    };
    json["type"] = "folder";
    json["name"] = folder.name.toStdString();
    json["serverPath"] = folder.serverPath.toStdString();
    add("modified", DateText(folder.lastModifiedDate).toStdString());
    if (!folder.resourceId.isEmpty()) {
        json["resourceId"] = folder.resourceId.toInt();
    }
    add("folderId", folder.getServerFolderId().toStdString());
    add("ownerId", folder.ownerId.toStdString());
    add("privileges", folder.getPrivileges().toStdString());
    return QByteArray::fromStdString(json.dump());
}

}  // namespace cli
}  // namespace ovsync
