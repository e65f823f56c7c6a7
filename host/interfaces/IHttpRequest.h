#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>
#include <QUrl>

#include "host/core/OvSyncExport.h"
#include "host/core/Tr1SharedPtr.h"

namespace sync {
namespace interf {

/// An HTTP request and, once it was executed, its answer. Not thread-safe.
class OVSYNC_INTERFACES_EXPORT IHttpRequest : public QObject {
    Q_OBJECT

public:
    enum RequestState {
        StateNone = 0,
        StateQueued = 1,
        StateRunning = 2,
        /// An answer came, whatever it says.
        StateAnswered = 3,
        StateAborted = 4,
        /// No answer came.
        StateFailed = 5
    };

    /// The HTTP status of the answer; 0 when none came.
    virtual int GetStatusCode() = 0;

    virtual QUrl GetUrl() = 0;

    /// Of the answer, in the order in which they came; empty when none came.
    virtual QList<QPair<QByteArray, QByteArray>> GetResponseHeaders() = 0;

    /// The body of the answer; empty when none came, and for a request whose body is read while it arrives.
    virtual QByteArray GetResponseBody() = 0;

Q_SIGNALS:
    /// Emitted once per execution, when `request` is over. IRequestExecutor has the same signal for all of its
    /// requests.
    // Written out in full because connections are made by this text.
    void RequestCompleted(std::tr1::shared_ptr<sync::interf::IHttpRequest> request,
                          sync::interf::IHttpRequest::RequestState state);
};

}  // namespace interf
}  // namespace sync
