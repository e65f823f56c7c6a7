#pragma once

#include <QHash>
#include <QString>

#include "client/sync/pass/RemoteTree.h"
#include "client/sync/pass/ServiceFolder.h"

namespace ovsync {
namespace pull {

/// Asks the service by name for what its listing lacks: listings have been shorter than the truth. For one pass. Not
/// thread-safe.
class GoneCheck {
public:
    /// The arguments outlive this object.
    GoneCheck(const pass::ServiceFolder& service, const pass::RemoteTree& remote)
        : _service(service), _remote(remote) {}

    /// Whether the service says of `path`, or of a folder above it, that it is not there. Throws what the library
    /// throws.
    bool IsGone(const QString& path);

private:
    bool _Ask(const QString& path);

    const pass::ServiceFolder& _service;
    const pass::RemoteTree& _remote;
    QHash<QString, bool> _answers;
};

}  // namespace pull
}  // namespace ovsync
