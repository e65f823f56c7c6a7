#include "dvsync/ResourceMapping.h"

#include <optional>

#include "dvsync/HrefPath.h"
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
    const QString& actual = response.getResourceClassType();
    const QLatin1String expected(classType);
    // Services write the types one way, and comparing without regard to letter case is slow.
    return actual == expected || QString::compare(actual, expected, Qt::CaseInsensitive) == 0;
}

// Made once: what many files have in common, for 100,000 of them, is some 700,000 allocations.
struct CommonTexts {
    const QString version = QLatin1String("version");
    const QString versionId = QLatin1String("versionId");
    const QString resourceId = QLatin1String("resourceId");
    const QString visibility = QLatin1String("visibility");
    const QString zero = QLatin1String("0");
    const QString one = QLatin1String("1");
    const QString noAttribute = QString(QChar(0));
};

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
    static const CommonTexts texts;

    FileConfiguration file;
    file.name = PercentDecoded(response.getFilename());
    file.attribute = response.attribute == '\0' ? texts.noAttribute : QString(QLatin1Char(response.attribute));
    // A record of nothing must not name the folder.
    if (const std::optional<QString> path = PathOfHref(response.getHref())) {
        file.serverPath = WithoutLeadingSlash(*path);
        file.localPath = file.serverPath;
        file.localPath.replace(0, folder.serverRootPath.size(), folder.localPath);
    }
    file.customProperties.insert(texts.version,
                                 response.versionNumber == 0 ? texts.zero : QString::number(response.versionNumber));
    file.customProperties.insert(texts.versionId, response.getVersionId());
    file.customProperties.insert(texts.resourceId, QString::number(response.resourceId));
    const bool isHidden = QString::compare(response.getVisibility(), QLatin1String("hide"), Qt::CaseInsensitive) == 0;
    file.customProperties.insert(texts.visibility, isHidden ? texts.zero : texts.one);
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
    files->reserve(result->fileResponses.size());
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
