#include "client/cli/FileFormat.h"

#include <QStringList>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "client/cli/DateText.h"

namespace ovsync {
namespace cli {

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

// Columns of a long listing. A line is made for every file, and formatted output of the C library costs three times
// this.
void AppendRightAligned(QByteArray& line, const QByteArray& text, int width) {
    line.append(qMax(0, width - text.size()), ' ').append(text);
}

void AppendLeftAligned(QByteArray& line, const QByteArray& text, int width) {
    line.append(text).append(qMax(0, width - text.size()), ' ');
}

}  // namespace

QByteArray LongLine(const FileConfiguration& file, const Output& output) {
    static const QString versionKey = QStringLiteral("version");
    const QByteArray version = file.customProperties.value(versionKey).toLatin1();
    const bool hasVersion = !file.versionId.isEmpty() || version != "0";
    const QByteArray date = DateText(file.lastModifiedDate);
    const QByteArray name = output.Shown(file.name);
    QByteArray line;
    line.reserve(64 + name.size());
    AppendRightAligned(line, SizeText(file), 12);
    line.append("  ");
    AppendLeftAligned(line, date.isEmpty() ? QByteArrayLiteral("-") : date, 20);
    line.append(' ');
    AppendRightAligned(line, hasVersion ? version : QByteArrayLiteral("-"), 5);
    line.append("  ").append(name).append('\n');
    return line;
}

QByteArray FieldLines(const FileConfiguration& file, const Output& output) {
    QByteArray lines;
    const auto add = [&lines](const char* label, const QByteArray& value) {
        if (!value.isEmpty()) {
            lines += QByteArray(label).leftJustified(18) + value + '\n';
        }
    };
    add("Name", output.Shown(file.name));
    add("Server path", output.Shown(file.serverPath));
    add("Size", SizeText(file));
    add("Modified", DateText(file.lastModifiedDate));
    add("Created", DateText(file.createdDate));
    if (HasVersion(file)) {
        add("Version", output.Shown(Property(file, "version")));
    }
    add("Version id", output.Shown(file.versionId));
    add("Resource id", output.Shown(Property(file, "resourceId")));
    add("Item id", output.Shown(file.itemId));
    add("Owner", output.Shown(file.ownerId));
    add("Privileges", output.Shown(file.getPrivileges()));
    add("Hidden", Property(file, "visibility") == QLatin1String("0") ? "yes" : "no");
    add("MD5", output.Shown(file.md5Checksum));
    add("Sync options", output.Shown(file.getSyncOptionPersistentAcrossMachines().join(QStringLiteral(", "))));
    add("Links extracted", DateText(file.linksExtractedAtTime));
    return lines;
}

QByteArray JsonObject(const FileConfiguration& file) {
    nlohmann::ordered_json json;
    const auto add = [&json](const char* key, const std::string& value) {
        if (!value.empty()) {
            json[key] = value;
        }
    };
    json["type"] = "file";
    json["name"] = file.name.toStdString();
    json["serverPath"] = file.serverPath.toStdString();
    if (const std::optional<qint64> size = SizeOf(file)) {
        json["size"] = *size;
    } else {
        json["size"] = nullptr;
    }
    add("modified", DateText(file.lastModifiedDate).toStdString());
    add("created", DateText(file.createdDate).toStdString());
    if (HasVersion(file)) {
        json["version"] = Property(file, "version").toInt();
    }
    add("versionId", file.versionId.toStdString());
    json["resourceId"] = Property(file, "resourceId").toInt();
    add("itemId", file.itemId.toStdString());
    add("ownerId", file.ownerId.toStdString());
    add("privileges", file.getPrivileges().toStdString());
    json["hidden"] = Property(file, "visibility") == QLatin1String("0");
    add("md5", file.md5Checksum.toStdString());
    const QStringList options = file.getSyncOptionPersistentAcrossMachines();
    if (!options.isEmpty()) {
        for (const QString& option : options) {
            json["syncOptions"].push_back(option.toStdString());
        }
    }
    add("linksExtracted", DateText(file.linksExtractedAtTime).toStdString());
    return QByteArray::fromStdString(json.dump());
}

}  // namespace cli
}  // namespace ovsync
