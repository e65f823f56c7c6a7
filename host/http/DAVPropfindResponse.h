#pragma once

#include <QDateTime>
#include <QString>

#include "host/core/OvSyncExport.h"
#include "host/http/DAVResponse.h"

namespace sync {
namespace http {

/// The properties of a resource that a DAVPropfindResponse gives out through its getters. What the answer did not hold
/// is empty, or an invalid date. A plain value.
struct DAVPropfindProperties {
    /// Of a file with the escapes of its href, which a library decodes; of a collection decoded, because a library
    /// takes that as it stands.
    QString filename;
    QString resourceClassType;
    QString versionId;
    QString itemId;
    QString ownerId;
    QString privileges;
    QString visibility;
    QString checkSumMD5;
    /// Texts separated by commas.
    QString syncOption;
    QDateTime createdDate;
    QDateTime lastModifiedDate;
    QDateTime linksExtractedAtFileTime;
};

/// One entry of a PROPFIND answer. A value with a meta-object; the QObject part is not copied. Not thread-safe.
class OVSYNC_HTTP_EXPORT DAVPropfindResponse : public DAVResponse {
    Q_OBJECT

public:
    DAVPropfindResponse();
    DAVPropfindResponse(const QString& href, const DAVPropfindProperties& properties);
    DAVPropfindResponse(const DAVPropfindResponse& other);
    DAVPropfindResponse& operator=(const DAVPropfindResponse& other);
    ~DAVPropfindResponse() override;

    /// Replaces the href and the properties of the getters.
    void Describe(const QString& href, DAVPropfindProperties properties);

    const QString& getFilename() const { return _properties.filename; }
    const QString& getResourceClassType() const { return _properties.resourceClassType; }
    const QString& getVersionId() const { return _properties.versionId; }
    const QString& getItemId() const { return _properties.itemId; }
    const QString& getOwnerId() const { return _properties.ownerId; }
    const QString& getPrivileges() const { return _properties.privileges; }
    const QString& getVisibility() const { return _properties.visibility; }
    const QString& getCheckSumMD5() const { return _properties.checkSumMD5; }
    const QString& getSyncOption() const { return _properties.syncOption; }
    const QDateTime& getCreatedDate() const { return _properties.createdDate; }
    const QDateTime& getLastModifiedDate() const { return _properties.lastModifiedDate; }
    const QDateTime& getLinksExtractedAtFileTime() const { return _properties.linksExtractedAtFileTime; }

    /// In bytes. A size above 2147483647 is held as a negative number.
    int contentLength = 0;
    int versionNumber = 0;
    int resourceId = 0;
    int parentResourceId = 0;
    char attribute = '\0';

private:
    DAVPropfindProperties _properties;
};

}  // namespace http
}  // namespace sync
