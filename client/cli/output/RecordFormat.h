#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <nlohmann/json_fwd.hpp>

namespace ovsync {
namespace output {

/// What the formats of files and of folders have in common. Thread-safe.

/// A line of a long listing. Without a valid date it has "-".
QByteArray LongColumns(const QByteArray& size, const QDateTime& date, const QByteArray& version,
                       const QByteArray& name);

/// Appends a line to `lines`, or nothing when there is no value.
void AddField(QByteArray& lines, const char* label, const QByteArray& value);

/// Sets a member of `json`, or nothing when there is no value.
void AddMember(nlohmann::ordered_json& json, const char* key, const QString& value);
void AddMember(nlohmann::ordered_json& json, const char* key, const QDateTime& value);

}  // namespace output
}  // namespace ovsync
