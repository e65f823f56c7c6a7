#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <memory>

#include "host/configuration/ServerConfiguration.h"
#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// Builds the URLs of a service.
class OVSYNC_INTERFACES_EXPORT IUrlBuilder : public QObject {
    Q_OBJECT

public:
    /// The URL of the resource at the decoded path `serverPath`; empty when there can be none.
    virtual std::shared_ptr<QUrl> BuildUrl(const config::ServerConfiguration& server, const QString& serverPath) = 0;
};

}  // namespace interf
}  // namespace sync
