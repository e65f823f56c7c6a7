#include "dvsync/ResourceMapping.h"

#include <QUrl>

#include "host/core/QtCompat.h"

namespace sync {
namespace dv {
namespace dvsync {

using config::FileConfiguration;
using config::FolderConfiguration;
using http::DAVPropfindResponse;
using http::DAVPropfindResult;

namespace {

bool HasClassType(const DAVPropfindResponse& response, const char* classType) {
    return QString::compare(response.getResourceClassType(), QLatin1String(classType), Qt::CaseInsensitive) == 0;
}

QString PathOfHref(const QString& href) {
    // Qt would take what follows two slashes for a host, but the service means a path.
    int extraSlashes = 0;
    while (href.startsWith(QLatin1Char('/')) && extraSlashes + 1 < href.size() &&
           href.at(extraSlashes + 1) == QLatin1Char('/')) {
        ++extraSlashes;
    }
    return QString(extraSlashes, QLatin1Char('/')) + core::compat::DecodedPath(href.mid(extraSlashes).toUtf8());
}

QString WithoutLeadingSlash(const QString& path) {
    return path.startsWith(QLatin1Char('/')) ? path.mid(1) : path;
}

}  // namespace

bool IsFileClassType(const DAVPropfindResponse& response) {
    return HasClassType(response, "drovane.objects.File");
}

bool IsFormClassType(const DAVPropfindResponse& response) {
    return HasClassType(response, "drovane.objects.Form");
}

bool IsFolderClassType(const DAVPropfindResponse& response) {
    return HasClassType(response, "drovane.objects.Folder") || HasClassType(response, "drovane.objects.Project");
}

FileConfiguration BuildFileConfigFromFindResponse(const FolderConfiguration& folder,
                                                  const DAVPropfindResponse& response) {
    FileConfiguration file;
    file.name = QUrl::fromPercentEncoding(response.getFilename().toUtf8());
    file.attribute = QLatin1Char(response.attribute);
    file.serverPath = WithoutLeadingSlash(PathOfHref(response.getHref()));
    file.localPath = file.serverPath;
    file.localPath.replace(0, folder.serverRootPath.size(), folder.localPath);
    file.customProperties.insert(QLatin1String("version"), QString::number(response.versionNumber));
    file.customProperties.insert(QLatin1String("versionId"), response.getVersionId());
    file.customProperties.insert(QLatin1String("resourceId"), QString::number(response.resourceId));
    const bool isHidden = QString::compare(response.getVisibility(), QLatin1String("hide"), Qt::CaseInsensitive) == 0;
    file.customProperties.insert(QLatin1String("visibility"), QLatin1String(isHidden ? "0" : "1"));
    file.size = response.contentLength;
    file.lastModifiedDate = response.getLastModifiedDate();
    file.createdDate = response.getCreatedDate();
    file.ownerId = response.getOwnerId();
    file.serverId = folder.serverId;
    file.setPrivileges(response.getPrivileges());
    file.itemId = response.getItemId();
    file.versionId = response.getVersionId();
    file.md5Checksum = response.getCheckSumMD5();
    file.linksExtractedAtTime = response.getLinksExtractedAtFileTime();
    file.setSyncOptionPersistentAcrossMachines(
        core::compat::SplitSkippingEmptyParts(response.getSyncOption(), QLatin1Char(',')));
    return file;
}

std::shared_ptr<QVector<FileConfiguration>> BuildFileConfigsFromFindResult(FolderConfiguration& folder,
                                                                           std::shared_ptr<DAVPropfindResult> result) {
    auto files = std::make_shared<QVector<FileConfiguration>>();
    if (!result) {
        return files;
    }
    // The non-const begin() detaches the map, so that the walk never touches a copy held elsewhere.
    for (auto entry = result->fileResponses.begin(); entry != result->fileResponses.end(); ++entry) {
        if (IsFileClassType(entry.value())) {
            files->append(BuildFileConfigFromFindResponse(folder, entry.value()));
        }
    }
    return files;
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
