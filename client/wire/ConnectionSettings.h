#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <memory>

#include "client/wire/Bandwidth.h"
#include "client/wire/DigestHosts.h"
#include "client/wire/ListingLimits.h"

namespace ovsync {
namespace wire {

/// How a HttpConnection connects. A plain value, but for the bandwidth and the hosts, which its copies
/// share.
///
/// \code
/// ovsync::wire::ConnectionSettings settings;
/// settings.caFile = QStringLiteral("/etc/ssl/certs/our-own.pem");
/// settings.silenceLimit = std::chrono::seconds(20);
/// settings.bandwidth = std::make_shared<ovsync::wire::Bandwidth>(qint64(1024) * 1024);
/// \endcode
struct ConnectionSettings {
    /// A file of PEM certificates to trust in place of the system's; empty for the system's.
    QString caFile;
    /// How long neither side may send a single byte.
    std::chrono::milliseconds silenceLimit = std::chrono::seconds(60);
    /// The same between the last byte of a streamed body and the first one of the answer, where a server puts a large
    /// file in its place, copies or scans it. The longer one of the two counts.
    std::chrono::milliseconds answerLimit = std::chrono::minutes(30);
    /// For how long an answer's body may come at less than `leastRate`, in bytes a second, uncompressed. A transaction
    /// that comes faster may take as long as it likes. Zero bytes a second are no limit.
    std::chrono::milliseconds slownessLimit = std::chrono::minutes(10);
    qint64 leastRate = 1024;
    /// What may be moved; null for as much as there is. Shared by the copies of these settings.
    std::shared_ptr<Bandwidth> bandwidth;
    ListingLimits listing;
    /// How long it may take to reach the server, TLS included.
    std::chrono::milliseconds connectLimit = std::chrono::seconds(30);
    std::shared_ptr<DigestHosts> digestHosts = std::make_shared<DigestHosts>();
    /// Called several times a second while an answer is waited for and received, and once more when the transaction is
    /// over, on its thread, with the bytes of the body so far, uncompressed. May be empty; must not throw.
    std::function<void(qint64 bodyBytes, bool isOver)> onProgress;
};

}  // namespace wire
}  // namespace ovsync
