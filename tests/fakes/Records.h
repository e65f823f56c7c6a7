#pragma once

#include <string>
#include <vector>

#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"
#include "tests/fakes/Text.h"

/// Records with a value of its own in every field, and their fields as texts, so that a test can say that all of a
/// record is as it should be.

namespace tests {

using RecordFields = std::vector<std::string>;

inline QDateTime TimeOf(qint64 milliseconds) {
    return QDateTime::fromMSecsSinceEpoch(milliseconds);
}

inline sync::config::FolderConfiguration FullFolder() {
    sync::config::FolderConfiguration folder;
    folder.serverKey = 11;
    folder.serverId = 12;
    folder.name = Text("folder name");
    folder.resourceId = Text("13");
    folder.serverPath = Text("Projects/A");
    folder.companionServerPath = Text("companion");
    folder.localPath = Text("/w/A");
    folder.serverRootPath = Text("Projects");
    folder.lastModifiedDate = TimeOf(1400000001001);
    folder.ownerId = Text("folder owner");
    folder.accessMask = 14;
    folder.setLastSyncTime(TimeOf(1400000002002));
    folder.setLastServerSyncRequestTime(TimeOf(1400000003003));
    folder.setPrivileges(Text("folder privileges"));
    folder.setServerFolderId(Text("folder id"));
    return folder;
}

inline sync::config::FileLink LinkTo(const char* path, const char* targetId = "") {
    sync::config::FileLink link;
    link.path = Text(path);
    link.targetId = Text(targetId);
    return link;
}

/// A file of FullFolder().
inline sync::config::FileConfiguration FullFile() {
    sync::config::FileConfiguration file;
    file.serverId = 21;
    file.name = Text("f.dwg");
    file.localPath = Text("/w/A/f.dwg");
    file.serverPath = Text("Projects/A/f.dwg");
    file.attribute = Text("q");
    file.md5Checksum = Text("md5");
    file.createdDate = TimeOf(1500000001001);
    file.lastModifiedDate = TimeOf(1500000002002);
    file.size = Q_INT64_C(5000000022);
    file.stateCode = 23;
    file.customProperties.insert(Text("version"), Text("7"));
    file.customProperties.insert(Text("versionId"), Text("version id property"));
    file.customProperties.insert(Text("resourceId"), Text("24"));
    file.customProperties.insert(Text("visibility"), Text("1"));
    file.customProperties.insert(Text("other"), Text("other property"));
    file.ownerId = Text("owner");
    file.ownerAttribute = 25;
    file.itemId = Text("item");
    file.versionId = Text("version id");
    file.linksExtractedAtTime = TimeOf(1500000003003);
    file.syncMode = 26;
    file.links.append(LinkTo("/w/B/known.dwg", "target"));
    file.setPrivileges(Text("privileges"));
    file.setSyncOptionPersistentAcrossMachines(QStringList() << Text("option"));
    return file;
}

inline std::string Described(const char* field, const QString& value) {
    return std::string(field) + " = '" + value.toUtf8().constData() + "'";
}

inline std::string Described(const char* field, qint64 value) {
    return Described(field, QString::number(value));
}

inline std::string Described(const char* field, const QDateTime& value) {
    return Described(field, value.isValid() ? QString::number(value.toMSecsSinceEpoch()) : Text("none"));
}

inline RecordFields FieldsOf(const sync::config::FolderConfiguration& folder) {
    return {Described("serverKey", folder.serverKey),
            Described("serverId", folder.serverId),
            Described("name", folder.name),
            Described("resourceId", folder.resourceId),
            Described("serverPath", folder.serverPath),
            Described("companionServerPath", folder.companionServerPath),
            Described("localPath", folder.localPath),
            Described("serverRootPath", folder.serverRootPath),
            Described("lastModifiedDate", folder.lastModifiedDate),
            Described("ownerId", folder.ownerId),
            Described("accessMask", folder.accessMask),
            Described("lastSyncTime", folder.getLastSyncTime()),
            Described("lastServerSyncRequestTime", folder.getLastServerSyncRequestTime()),
            Described("privileges", folder.getPrivileges()),
            Described("serverFolderId", folder.getServerFolderId())};
}

inline RecordFields FieldsOf(const sync::config::FileConfiguration& file) {
    RecordFields fields = {Described("serverId", file.serverId),
                           Described("name", file.name),
                           Described("localPath", file.localPath),
                           Described("serverPath", file.serverPath),
                           Described("attribute", file.attribute),
                           Described("md5Checksum", file.md5Checksum),
                           Described("createdDate", file.createdDate),
                           Described("lastModifiedDate", file.lastModifiedDate),
                           Described("size", file.size),
                           Described("stateCode", file.stateCode),
                           Described("ownerId", file.ownerId),
                           Described("ownerAttribute", file.ownerAttribute),
                           Described("itemId", file.itemId),
                           Described("versionId", file.versionId),
                           Described("linksExtractedAtTime", file.linksExtractedAtTime),
                           Described("syncMode", file.syncMode),
                           Described("privileges", file.getPrivileges()),
                           Described("syncOption", file.getSyncOptionPersistentAcrossMachines().join(Text(",")))};
    for (auto property = file.customProperties.constBegin(); property != file.customProperties.constEnd(); ++property) {
        fields.push_back(Described("property " + property.key().toUtf8(), property.value()));
    }
    for (const sync::config::FileLink& link : file.links) {
        fields.push_back(Described("link " + link.path.toUtf8(), link.targetId));
    }
    return fields;
}

}  // namespace tests
