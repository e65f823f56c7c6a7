#include "client/sync/pass/HeldLocks.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>

namespace ovsync {
namespace pass {

namespace {

QString OwnerSetting() {
    return QStringLiteral("owner of locks");
}

QString FoldersSetting() {
    return QStringLiteral("folders with locks");
}

}  // namespace

QString HeldLocks::Owner() {
    QString owner = _records.Setting(OwnerSetting());
    if (owner.isEmpty()) {
        owner = QStringLiteral("ovsync ") + QUuid::createUuid().toString().mid(1, 36);
        _records.WriteSetting(OwnerSetting(), owner);
    }
    return owner;
}

void HeldLocks::Expect(const QSet<QString>& folders) {
    QJsonArray paths;
    for (const QString& folder : _Folders() + folders) {
        paths.append(folder);
    }
    _records.WriteSetting(FoldersSetting(), QString::fromUtf8(QJsonDocument(paths).toJson(QJsonDocument::Compact)));
}

void HeldLocks::Forget() {
    _records.WriteSetting(FoldersSetting(), QString());
}

void HeldLocks::Release(const ServiceFolder& service) {
    const QSet<QString> folders = _Folders();
    if (folders.isEmpty()) {
        return;
    }
    const std::unique_ptr<content::IContentConnection> connection = service.newConnection();
    try {
        for (const QString& folder : folders) {
            connection->Release(service.UrlAt(folder), Owner());
        }
        Forget();
    } catch (const sync::core::SyncException&) {
        // The pass itself tells what is wrong there.
    }
}

QSet<QString> HeldLocks::_Folders() const {
    QSet<QString> folders;
    const QJsonArray paths = QJsonDocument::fromJson(_records.Setting(FoldersSetting()).toUtf8()).array();
    for (const auto& path : paths) {
        folders.insert(path.toString());
    }
    return folders;
}

}  // namespace pass
}  // namespace ovsync
