#pragma once

#include <QHash>
#include <QString>

#include "client/sync/RemoteTree.h"
#include "client/sync/ServiceFolder.h"

namespace ovsync {
namespace syncing {

/// Asks the service by name for what its listing lacks: listings have been shorter than the truth. For one pass. Not
/// thread-safe.
class GoneCheck {
public:
    /// The arguments outlive this object.
    GoneCheck(const ServiceFolder& service, const RemoteTree& remote) : _service(service), _remote(remote) {}

    /// Whether the service says of `path`, or of a folder above it, that it is not there. Throws what the library
    /// throws.
    bool IsGone(const QString& path);

private:
    bool _Ask(const QString& path);

    const ServiceFolder& _service;
    const RemoteTree& _remote;
    QHash<QString, bool> _answers;
};

}  // namespace syncing
}  // namespace ovsync
