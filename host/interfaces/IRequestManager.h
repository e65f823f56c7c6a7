#pragma once

#include <QList>
#include <QObject>
#include <memory>

#include "host/core/OvSyncExport.h"
#include "host/interfaces/IHttpRequest.h"

namespace sync {
namespace interf {

/// Executes requests on the caller's thread.
class OVSYNC_INTERFACES_EXPORT IRequestManager : public QObject {
    Q_OBJECT

public:
    /// Sends the requests and returns when every one of them has been answered or has failed. Authentication is its
    /// affair.
    virtual void Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) = 0;
};

}  // namespace interf
}  // namespace sync
