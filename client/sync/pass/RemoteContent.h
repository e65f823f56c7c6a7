#pragma once

#include <QString>

#include "client/sync/pass/ServiceFolder.h"

namespace ovsync {
namespace pass {

/// The MD5 of what the service has at `path` below its folder and lists with the size `listed`, in hexadecimal; empty
/// when there is more than that. Reads all of it, and keeps nothing. Throws what IContentConnection::Download throws.
QString Md5OnService(const ServiceFolder& service, const QString& path, qint64 listed);

}  // namespace pass
}  // namespace ovsync
