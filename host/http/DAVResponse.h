#pragma once

#include <QObject>
#include <QString>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace http {

/// One response element of a WebDAV multistatus. A value with a meta-object; the QObject part is not copied. Not
/// thread-safe.
class OVSYNC_HTTP_EXPORT DAVResponse : public QObject {
    Q_OBJECT

public:
    DAVResponse();
    explicit DAVResponse(const QString& href);
    DAVResponse(const DAVResponse& other);
    DAVResponse& operator=(const DAVResponse& other);
    ~DAVResponse() override;

    /// Percent-encoded, as it stands in the answer.
    const QString& getHref() const { return _href; }

protected:
    void _SetHref(const QString& href) { _href = href; }

private:
    QString _href;
};

}  // namespace http
}  // namespace sync
