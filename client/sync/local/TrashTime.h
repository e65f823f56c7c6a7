#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

namespace ovsync {
namespace local {

/// Which folder of the trash something lies in: when its pass began, and a number where that second needed more than
/// one. A plain value.
struct TrashTime {
    /// In UTC.
    QDateTime time;
    int number = 1;

    /// None for a name that no pass gives to a folder.
    static std::optional<TrashTime> FromFolderName(const QString& name);
    QString FolderName() const;
};

bool operator==(const TrashTime& a, const TrashTime& b);
/// The earlier one first.
bool operator<(const TrashTime& a, const TrashTime& b);

}  // namespace local
}  // namespace ovsync
