#pragma once

#include <QUrl>

#include "host/http/HttpException.h"

namespace ovsync {
namespace report {

/// The service has the folder no more that a synced folder was in step with. The message is for people, and says what
/// they can do.
class FolderGone : public sync::http::HttpException {
public:
    explicit FolderGone(const QString& message) : HttpException(message, 404, QUrl()) {}
};

}  // namespace report
}  // namespace ovsync
