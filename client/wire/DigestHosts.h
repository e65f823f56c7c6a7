#pragma once

#include <QSet>
#include <QString>
#include <QUrl>
#include <mutex>

namespace ovsync {
namespace wire {

/// The hosts that took a password as Digest, so that none of them is later given it in clear. Thread-safe.
class DigestHosts {
public:
    /// `url` was answered to credentials sent as Digest.
    void Add(const QUrl& url);

    /// Whether a Basic password in a request for `url` would tell whoever listens what was kept from them before.
    bool ForbidBasic(const QUrl& url) const;

private:
    mutable std::mutex _mutex;
    QSet<QString> _hosts;
};

}  // namespace wire
}  // namespace ovsync
