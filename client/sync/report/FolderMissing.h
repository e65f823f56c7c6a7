#pragma once

#include <QUrl>

#include "host/http/HttpException.h"

namespace ovsync {
namespace report {

/// The service does not have a folder that there has to be, such as the one that a synced folder was in step with. The
/// message is for people, and says what they can do.
class FolderMissing : public sync::http::HttpException {
public:
    explicit FolderMissing(const QString& message) : HttpException(message, 404, QUrl()) {}
};

}  // namespace report
}  // namespace ovsync
