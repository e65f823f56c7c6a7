#include "client/sync/local/TrashTime.h"

#include <QRegularExpression>
#include <tuple>

namespace ovsync {
namespace local {

std::optional<TrashTime> TrashTime::FromFolderName(const QString& name) {
    static const QRegularExpression pattern(
        QStringLiteral("\\A([0-9]{4}-[0-9]{2}-[0-9]{2}) ([0-9]{2}\\.[0-9]{2}\\.[0-9]{2})"
                       "(?: ([2-9]|[1-9][0-9]{1,8}))?\\z"));
    const QRegularExpressionMatch match = pattern.match(name);
    const QDate date = QDate::fromString(match.captured(1), QStringLiteral("yyyy-MM-dd"));
    const QTime time = QTime::fromString(match.captured(2), QStringLiteral("HH.mm.ss"));
    if (!date.isValid() || !time.isValid()) {
        return std::nullopt;
    }
    const QString number = match.captured(3);
    return TrashTime{QDateTime(date, time, Qt::UTC), number.isEmpty() ? 1 : number.toInt()};
}

QString TrashTime::FolderName() const {
    const QString name = time.toString(QStringLiteral("yyyy-MM-dd HH.mm.ss"));
    return number == 1 ? name : name + QLatin1Char(' ') + QString::number(number);
}

bool operator==(const TrashTime& a, const TrashTime& b) {
    return a.time == b.time && a.number == b.number;
}

bool operator<(const TrashTime& a, const TrashTime& b) {
    return std::tie(a.time, a.number) < std::tie(b.time, b.number);
}

}  // namespace local
}  // namespace ovsync
