#pragma once

#include <QList>
#include <QObject>
#include <memory>

#include "host/core/OvSyncExport.h"
#include "host/core/Tr1SharedPtr.h"
#include "host/interfaces/IHttpRequest.h"

namespace sync {
namespace interf {

/// Executes requests on the caller's thread and tells, request by request, how they ended. Made for one list.
class OVSYNC_INTERFACES_EXPORT IRequestExecutor : public QObject {
    Q_OBJECT

public:
    /// Sends the requests and returns when every one of them has been answered or has failed.
    virtual void Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) = 0;

Q_SIGNALS:
    /// Emitted for each request when it is over, before Execute returns.
    // Written out in full because connections are made by this text.
    void RequestCompleted(std::tr1::shared_ptr<sync::interf::IHttpRequest> request,
                          sync::interf::IHttpRequest::RequestState state);
};

}  // namespace interf
}  // namespace sync
