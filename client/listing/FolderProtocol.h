#pragma once

namespace ovsync {
namespace listing {

/// What the client and the service call things when they speak of folders.

const char VersionHeader[] = "x-ovs-version";
/// Of this client.
const char ProtocolVersion[] = "1";
const char IdHeader[] = "x-ovs-id";
const char OwnerIdHeader[] = "x-ovs-ownerid";

/// In front of an id that the client made up for a server without ids. The key of the resource (see Href) follows.
const char MadeUpIdPrefix[] = "path:";

}  // namespace listing
}  // namespace ovsync
