#include "client/cli/output/FileFormat.h"

#include <QStringList>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "client/cli/output/DateText.h"
#include "client/cli/output/RecordFormat.h"

namespace ovsync {
namespace output {

using sync::config::FileConfiguration;

namespace {

const qint64 UnsignedRange = Q_INT64_C(1) << 32;

// Nothing for a file whose size did not fit.
std::optional<qint64> SizeOf(const FileConfiguration& file) {
    if (file.size >= 0) {
        return file.size;
    }
    return file.size == -1 ? std::nullopt : std::optional<qint64>(file.size + UnsignedRange);
}

QByteArray SizeText(const FileConfiguration& file) {
    const std::optional<qint64> size = SizeOf(file);
    return size ? QByteArray::number(*size) : QByteArrayLiteral(">=4294967295");
}

QString Property(const FileConfiguration& file, const char* name) {
    return file.customProperties.value(QLatin1String(name));
}

// A server that knows no versions gives neither a number nor an id.
bool HasVersion(const FileConfiguration& file) {
    return !file.versionId.isEmpty() || Property(file, "version") != QLatin1String("0");
}

}  // namespace

QByteArray LongLine(const FileConfiguration& file, const Output& output) {
    static const QString versionKey = QStringLiteral("version");
    const QByteArray version = file.customProperties.value(versionKey).toLatin1();
    const bool hasVersion = !file.versionId.isEmpty() || version != "0";
    return LongColumns(SizeText(file), file.lastModifiedDate, hasVersion ? version : QByteArrayLiteral("-"),
                       output.Shown(file.name));
}

QByteArray FieldLines(const FileConfiguration& file, const Output& output) {
    QByteArray lines;
    AddField(lines, "Name", output.Shown(file.name));
    AddField(lines, "Server path", output.Shown(file.serverPath));
    AddField(lines, "Size", SizeText(file));
    AddField(lines, "Modified", DateText(file.lastModifiedDate));
    AddField(lines, "Created", DateText(file.createdDate));
    if (HasVersion(file)) {
        AddField(lines, "Version", output.Shown(Property(file, "version")));
    }
    AddField(lines, "Version id", output.Shown(file.versionId));
    AddField(lines, "Resource id", output.Shown(Property(file, "resourceId")));
    AddField(lines, "Item id", output.Shown(file.itemId));
    AddField(lines, "Owner", output.Shown(file.ownerId));
    AddField(lines, "Privileges", output.Shown(file.getPrivileges()));
    AddField(lines, "Hidden", Property(file, "visibility") == QLatin1String("0") ? "yes" : "no");
    AddField(lines, "MD5", output.Shown(file.md5Checksum));
    AddField(lines, "Sync options",
             output.Shown(file.getSyncOptionPersistentAcrossMachines().join(QStringLiteral(", "))));
    AddField(lines, "Links extracted", DateText(file.linksExtractedAtTime));
    return lines;
}

QByteArray JsonObject(const FileConfiguration& file) {
    nlohmann::ordered_json json;
    json["type"] = "file";
    json["name"] = file.name.toStdString();
    json["serverPath"] = file.serverPath.toStdString();
    if (const std::optional<qint64> size = SizeOf(file)) {
        json["size"] = *size;
    } else {
        json["size"] = nullptr;
    }
    AddMember(json, "modified", file.lastModifiedDate);
    AddMember(json, "created", file.createdDate);
    if (HasVersion(file)) {
        json["version"] = Property(file, "version").toInt();
    }
    AddMember(json, "versionId", file.versionId);
    json["resourceId"] = Property(file, "resourceId").toInt();
    AddMember(json, "itemId", file.itemId);
    AddMember(json, "ownerId", file.ownerId);
    AddMember(json, "privileges", file.getPrivileges());
    json["hidden"] = Property(file, "visibility") == QLatin1String("0");
    AddMember(json, "md5", file.md5Checksum);
    const QStringList options = file.getSyncOptionPersistentAcrossMachines();
    if (!options.isEmpty()) {
        for (const QString& option : options) {
            json["syncOptions"].push_back(option.toStdString());
        }
    }
    AddMember(json, "linksExtracted", file.linksExtractedAtTime);
    return QByteArray::fromStdString(json.dump());
}

}  // namespace output
}  // namespace ovsync
