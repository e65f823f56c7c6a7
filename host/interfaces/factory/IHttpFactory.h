#pragma once

#include <QObject>
#include <QUrl>
#include <memory>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace http {
class DAVPropfindRequest;
}  // namespace http
}  // namespace sync

namespace sync {
namespace interf {
namespace factory {

/// Makes requests. They are not sent before they are executed.
class OVSYNC_INTERFACES_EXPORT IHttpFactory : public QObject {
    Q_OBJECT

public:
    /// A PROPFIND of `url`. `serverId` is the one of the record that the request is made for, `depth` a
    /// DAVPropfindRequest::Depth.
    virtual std::shared_ptr<http::DAVPropfindRequest> CreatePropfindRequest(std::shared_ptr<QUrl> url, int serverId,
                                                                            int depth) = 0;
};

}  // namespace factory
}  // namespace interf
}  // namespace sync
