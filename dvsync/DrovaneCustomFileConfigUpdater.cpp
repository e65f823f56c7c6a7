#include "dvsync/DrovaneCustomFileConfigUpdater.h"

#include <QDir>
#include <QFileInfo>
#include <utility>

#include "dvsync/Filled.h"
#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"

namespace sync {
namespace dv {
namespace dvsync {

using config::FileConfiguration;
using config::FileLink;
using config::FolderConfiguration;

namespace {

// Letter case is folded code point by code point, which never changes how many units a text has: the text that matches
// `prefix` is as long as `prefix` is. Only half a code point at the end of `prefix` could match half of one.
bool StartsWith(const QString& text, const QString& prefix) {
    if (!text.startsWith(prefix, Qt::CaseInsensitive)) {
        return false;
    }
    const bool splitsCodePoint = text.size() > prefix.size() && text.at(prefix.size()).isLowSurrogate() &&
                                 text.at(prefix.size() - 1).isHighSurrogate();
    return !splitsCodePoint;
}

// The directory of the file at `filePath`, with its beginning spelled as `root` is; empty when it is not below `root`.
QString DirectoryBelow(QString root, const QString& filePath) {
    QString directory = QFileInfo(filePath).path();
    if (root.isEmpty() || !StartsWith(directory, root) || directory.compare(root, Qt::CaseInsensitive) == 0) {
        return QString();
    }
    directory.remove(0, root.size());
    if (directory.startsWith(QLatin1Char('/'))) {
        directory.remove(0, 1);
    }
    if (root.endsWith(QLatin1Char('/'))) {
        root.chop(1);
    }
    return directory.isEmpty() ? QString() : root + QLatin1Char('/') + directory;
}

// `folder`, placed on the directory in which `file` lies.
FolderConfiguration FolderOf(const FolderConfiguration& folder, const FileConfiguration& file) {
    FolderConfiguration working = folder;
    const QString serverPath = DirectoryBelow(folder.serverPath, file.serverPath);
    if (!serverPath.isEmpty()) {
        working.serverPath = serverPath;
        working.companionServerPath = serverPath;
    }
    const QString localPath = DirectoryBelow(folder.localPath, file.localPath);
    if (!localPath.isEmpty()) {
        working.localPath = localPath;
    }
    if (file.serverId != -1) {
        working.serverId = file.serverId;
    }
    return working;
}

// The absolute path of what a link in the file at `filePath` leads to.
QString LinkTarget(const QString& linkPath, const QString& filePath) {
    if (!QDir::isRelativePath(linkPath)) {
        return QDir::cleanPath(linkPath);
    }
    const QString directory = QDir::cleanPath(QFileInfo(filePath).absolutePath());
    return QDir::cleanPath(Filled("%1/%2", directory, linkPath));
}

QString VersionKey() {
    return QLatin1String("version");
}

QString VersionAfter(const QString& version) {
    return QString::number(qint64(version.toInt()) + 1);
}

}  // namespace

DrovaneCustomFileConfigUpdater::DrovaneCustomFileConfigUpdater(
    std::shared_ptr<interf::factory::IRemoteFileManagerFactory> factory)
    : remoteFileManagerFactory(std::move(factory)),
      fileConfigManager(sync::factory::ConfigurationFactory().CreateFileConfigManager()) {}

DrovaneCustomFileConfigUpdater::~DrovaneCustomFileConfigUpdater() = default;

void DrovaneCustomFileConfigUpdater::UpdateCustomFileConfigAfterUpload(const FolderConfiguration& folder,
                                                                       FileConfiguration& file,
                                                                       const QFileInfo& uploaded) {
    const std::shared_ptr<interf::IRemoteFileManager> remoteFiles =
        remoteFileManagerFactory->CreateRemoteFileManager(folder.serverKey);
    const FileConfiguration remote = remoteFiles->GetFileByName(FolderOf(folder, file), file.name);
    if (remote.name.isEmpty() && remote.localPath.isEmpty() && remote.serverPath.isEmpty()) {
        throw core::SyncException(Filled("Failed to update file config for %0", file.localPath));
    }

    const QString versionIdKey = QLatin1String("versionId");
    file.size = uploaded.size();
    // The service still names the version before the one that the upload has just made.
    file.customProperties[VersionKey()] = VersionAfter(remote.customProperties.value(VersionKey()));
    file.customProperties[versionIdKey] = remote.customProperties.value(versionIdKey);
    file.ownerId = remote.ownerId;
    file.ownerAttribute = remote.ownerAttribute;
    file.itemId = remote.itemId;
    file.versionId = remote.versionId;
    file.md5Checksum = remote.md5Checksum;
    for (FileLink& link : file.links) {
        if (link.targetId.isEmpty()) {
            const QString target = LinkTarget(link.path, file.localPath);
            link.targetId = fileConfigManager->GetFileConfiguration(target, folder.serverKey).itemId;
        }
    }
}

void DrovaneCustomFileConfigUpdater::UpdateCustomFileConfigBeforeDownload(const FolderConfiguration& folder,
                                                                          FileConfiguration& file,
                                                                          const FileConfiguration& remote) {
    Q_UNUSED(folder);
    const QString resourceIdKey = QLatin1String("resourceId");
    file.customProperties[VersionKey()] = remote.customProperties.value(VersionKey());
    file.customProperties[resourceIdKey] = remote.customProperties.value(resourceIdKey);
    file.size = remote.size;
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
