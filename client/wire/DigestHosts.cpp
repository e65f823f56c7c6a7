#include "client/wire/DigestHosts.h"

namespace ovsync {
namespace wire {

void DigestHosts::Add(const QUrl& url) {
    const std::lock_guard<std::mutex> lock(_mutex);
    _hosts.insert(url.host());
}

bool DigestHosts::ForbidBasic(const QUrl& url) const {
    const std::lock_guard<std::mutex> lock(_mutex);
    return url.scheme() == QLatin1String("http") && _hosts.contains(url.host());
}

}  // namespace wire
}  // namespace ovsync
