#pragma once

#include <QByteArray>
#include <QDateTime>
#include <optional>

namespace ovsync {
namespace content {

/// What a server says of the content of a file. A plain value.
struct ContentVersion {
    /// As it was sent, with its quotation marks; empty when there is none, and when it is a weak one.
    QByteArray entityTag;
    /// With its "W/"; empty when there is none. Some servers have no other for what was changed within the last second.
    QByteArray weakTag;
    /// In bytes; -1 when the server does not say.
    qint64 size = -1;
    /// In UTC; invalid when the server does not say.
    QDateTime lastModified;
    /// None when the server does not say, as most do not.
    std::optional<bool> isExecutable;
};

}  // namespace content
}  // namespace ovsync
