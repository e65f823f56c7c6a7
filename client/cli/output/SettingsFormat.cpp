#include "client/cli/output/SettingsFormat.h"

#include <nlohmann/json.hpp>

namespace ovsync {
namespace output {

using nlohmann::ordered_json;
using sync::dv::dvsync::ExternalSyncConfig;
using sync::interf::ISyncConfiguration;

namespace {

// The shortest decimal of the number: 0.7, not 0.699999988.
double Shortest(float number) {
    return QByteArray::number(static_cast<double>(number)).toDouble();
}

ordered_json Limits(bool isLimited, const ordered_json& limits) {
    return isLimited ? limits : ordered_json();
}

ordered_json LibraryObject(ISyncConfiguration& tuning, const QString& path) {
    int first = 0;
    int second = 0;
    int third = 0;
    ordered_json json;
    json["syncFrequency"] = tuning.GetSyncFrequency();
    json["incrementalSync"] = tuning.IsIncrementalSyncEnabled();
    json["incrementalSyncOfPath"] = tuning.IsIncrementalSyncEnabledForFile(path);
    json["minIncrementalFileSize"] = tuning.GetMinFileSizeForIncrementalSync();
    json["maxIncrementalChange"] = Shortest(tuning.GetMaxChangeForIncrementalSync());
    json["maxIncrementalDelta"] = Shortest(tuning.GetMaxDeltaForIncrementalSync());
    bool isLimited = tuning.GetLimitsForUploadFinishedEvent(first, second);
    json["uploadFinishedLimits"] = Limits(isLimited, {{"files", first}, {"delay", second}});
    isLimited = tuning.GetLimitsForCreateDeleteReferences(first, second, third, false);
    json["referenceChangeLimits"] = Limits(isLimited, {{"created", first}, {"deleted", second}, {"delay", third}});
    isLimited = tuning.GetLimitsForGetParentsChildrenReferences(first, second, false);
    json["referenceQueryLimits"] = Limits(isLimited, {{"parents", first}, {"children", second}});
    json["maxParallelTransfers"] = tuning.GetMaxParallelTransfers();
    json["maxTransferRetries"] = tuning.GetMaxTransferRetries();
    json["delayAfterServerError"] = tuning.GetSyncDelayAfterServerError();
    json["maxFailedPasses"] = tuning.GetMaxFailedPasses();
    return json;
}

ordered_json ServiceObject(const std::optional<ExternalSyncConfig>& published) {
    if (!published) {
        return nullptr;
    }
    return {{"syncFrequency", published->syncFrequency},
            {"mostCurrentVersion", published->mostCurrentVersion.toStdString()},
            {"installerUrl", published->installerUrl.toStdString()}};
}

QByteArray Text(const ordered_json& json, const Output& output) {
    if (json.is_boolean()) {
        return json.get<bool>() ? "yes" : "no";
    }
    if (json.is_string()) {
        const QString text = QString::fromStdString(json.get<std::string>());
        return text.isEmpty() ? "none" : output.Shown(text);
    }
    if (json.is_object()) {
        QByteArray text;
        for (const auto& item : json.items()) {
            text += (text.isEmpty() ? "" : ", ") + QByteArray::fromStdString(item.key() + ' ' + item.value().dump());
        }
        return text;
    }
    return json.is_null() ? "none" : QByteArray::fromStdString(json.dump());
}

}  // namespace

QByteArray SettingsTable(ISyncConfiguration& tuning, const std::optional<ExternalSyncConfig>& published,
                         const QString& path, const Output& output) {
    struct Row {
        const char* label;
        const char* key;
    };
    static constexpr Row rows[] = {
        {"Sync frequency", "syncFrequency"},
        {"Newest version", "mostCurrentVersion"},
        {"Installer", "installerUrl"},
        {"Incremental sync", "incrementalSync"},
        {"  of this path", "incrementalSyncOfPath"},
        {"  from a size of, bytes", "minIncrementalFileSize"},
        {"  up to a change of", "maxIncrementalChange"},
        {"  up to a difference of", "maxIncrementalDelta"},
        {"Limits of finished uploads", "uploadFinishedLimits"},
        {"Limits of changed references", "referenceChangeLimits"},
        {"Limits of asked references", "referenceQueryLimits"},
        {"Parallel transfers", "maxParallelTransfers"},
        {"Retries of a transfer", "maxTransferRetries"},
        {"Delay after a server error", "delayAfterServerError"},
        {"Failed passes in a row", "maxFailedPasses"},
    };
    const ordered_json library = LibraryObject(tuning, path);
    const ordered_json service = ServiceObject(published);
    const auto line = [](const QByteArray& label, const QByteArray& left, const QByteArray& right) {
        return label.leftJustified(30) + left.leftJustified(10) + "  " + right + '\n';
    };
    const auto cell = [&output](const ordered_json& side, const char* key) {
        return side.contains(key) ? Text(side[key], output) : QByteArray("-");
    };
    QByteArray table = published ? "" : "This server publishes no settings. Those of the library count.\n";
    table += line(QByteArray(), "library", "service");
    for (const Row& row : rows) {
        table += line(row.label, cell(library, row.key), cell(service, row.key));
    }
    return table;
}

QByteArray SettingsJson(ISyncConfiguration& tuning, const std::optional<ExternalSyncConfig>& published,
                        const QString& path) {
    const ordered_json json{{"library", LibraryObject(tuning, path)}, {"service", ServiceObject(published)}};
    return QByteArray::fromStdString(json.dump()) + '\n';
}

}  // namespace output
}  // namespace ovsync
