#pragma once

#include <QDateTime>
#include <QStringList>
#include <memory>

#include "host/core/OvSyncExport.h"
#include "host/http/DAVPropfindResult.h"
#include "host/interfaces/IHttpRequest.h"

namespace sync {
namespace http {

/// A PROPFIND and, once it was executed, its answer. Not thread-safe.
class OVSYNC_HTTP_EXPORT DAVPropfindRequest : public interf::IHttpRequest {
    Q_OBJECT

public:
    /// How deep a listing goes, as the library hands it to IHttpFactory.
    enum Depth { Resource = 0, Children = 1, Tree = 2 };

    /// Makes the request conditional: a collection that did not change since `time` is answered with 304. An invalid
    /// time leaves the request unconditional.
    virtual void SetModifiedSinceTime(const QDateTime& time) = 0;

    /// The properties to ask for, each as "{namespace}prefix:name". Without a call the request asks for what a
    /// DAVPropfindResponse holds.
    virtual void SetProperties(const QStringList& names) = 0;

    /// The parsed answer; empty before execution and when the answer was no listing. Shared with the caller, who may
    /// change it.
    virtual std::shared_ptr<DAVPropfindResult> GetResult() = 0;
};

}  // namespace http
}  // namespace sync
