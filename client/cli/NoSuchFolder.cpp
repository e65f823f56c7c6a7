#include "client/cli/NoSuchFolder.h"

#include "host/http/HttpException.h"

namespace ovsync {
namespace cli {

void ThrowNoSuchFolder(const Location& location) {
    throw sync::http::HttpException(QStringLiteral("The service has no folder /%1").arg(location.serverPath), 404,
                                    QUrl());
}

}  // namespace cli
}  // namespace ovsync
