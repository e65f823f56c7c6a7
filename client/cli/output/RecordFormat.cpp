#include "client/cli/output/RecordFormat.h"

#include <nlohmann/json.hpp>

#include "client/cli/output/DateText.h"

namespace ovsync {
namespace output {

namespace {

// A line is made for every file, and formatted output of the C library costs three times this.
void AppendRightAligned(QByteArray& line, const QByteArray& text, int width) {
    line.append(qMax(0, width - text.size()), ' ').append(text);
}

void AppendLeftAligned(QByteArray& line, const QByteArray& text, int width) {
    line.append(text).append(qMax(0, width - text.size()), ' ');
}

}  // namespace

QByteArray LongColumns(const QByteArray& size, const QDateTime& date, const QByteArray& version,
                       const QByteArray& name) {
    const QByteArray dateText = DateText(date);
    QByteArray line;
    line.reserve(64 + name.size());
    AppendRightAligned(line, size, 12);
    line.append("  ");
    AppendLeftAligned(line, dateText.isEmpty() ? QByteArrayLiteral("-") : dateText, 20);
    line.append(' ');
    AppendRightAligned(line, version, 5);
    line.append("  ").append(name).append('\n');
    return line;
}

void AddField(QByteArray& lines, const char* label, const QByteArray& value) {
    if (!value.isEmpty()) {
        lines += QByteArray(label).leftJustified(18) + value + '\n';
    }
}

void AddMember(nlohmann::ordered_json& json, const char* key, const QString& value) {
    if (!value.isEmpty()) {
        json[key] = value.toStdString();
    }
}

void AddMember(nlohmann::ordered_json& json, const char* key, const QDateTime& value) {
    AddMember(json, key, QString::fromLatin1(DateText(value)));
}

}  // namespace output
}  // namespace ovsync
