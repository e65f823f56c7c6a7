#include "client/sync/part/LastState.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ovsync {
namespace part {

using plan::Direction;

namespace {

const qint64 SecondsOfTrust = qint64(24) * 60 * 60;

QString SettingOf(Direction direction) {
    switch (direction) {
        case Direction::Pull:
            return QStringLiteral("state of pulls");
        case Direction::Push:
            return QStringLiteral("state of pushes");
        default:
            return QStringLiteral("state of both sides");
    }
}

}  // namespace

LastState LastState::Of(store::RecordDatabase& records, Direction direction, const QString& excluded) {
    const QJsonObject object = QJsonDocument::fromJson(records.Setting(SettingOf(direction)).toUtf8()).object();
    LastState state(direction);
    state.listed = QDateTime::fromString(object.value(QLatin1String("listed")).toString(), Qt::ISODate);
    state.excluded = object.value(QLatin1String("excluded")).toString();
    const qint64 age = state.listed.isValid() ? state.listed.secsTo(QDateTime::currentDateTimeUtc()) : -1;
    if (age < 0 || age >= SecondsOfTrust || state.excluded != excluded) {
        state = LastState(direction);
        state.excluded = excluded;
        return state;
    }
    state.there = object.value(QLatin1String("there")).toString();
    state.isUnable = object.value(QLatin1String("unable")).toBool();
    state.hasChecksums = object.value(QLatin1String("checksums")).toBool();
    state.needsLook = object.value(QLatin1String("look")).toBool();
    const QJsonArray open = object.value(QLatin1String("open")).toArray();
    for (const auto& path : open) {
        state.open.append(path.toString());
    }
    return state;
}

void LastState::Record(store::RecordDatabase& records) const {
    const QJsonObject object{{QStringLiteral("there"), there},
                             {QStringLiteral("listed"), listed.toUTC().toString(Qt::ISODate)},
                             {QStringLiteral("excluded"), excluded},
                             {QStringLiteral("unable"), isUnable},
                             {QStringLiteral("checksums"), hasChecksums},
                             {QStringLiteral("look"), needsLook},
                             {QStringLiteral("open"), QJsonArray::fromStringList(open)}};
    const QString text = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    const QString setting = SettingOf(_direction);
    if (records.Setting(setting) != text) {
        records.WriteSetting(setting, text);
    }
}

void LastState::Forget(store::RecordDatabase& records) {
    for (const Direction direction : {Direction::Pull, Direction::Push, Direction::Both}) {
        records.WriteSetting(SettingOf(direction), QString());
    }
}

}  // namespace part
}  // namespace ovsync
