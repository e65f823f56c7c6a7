#include "host/core/SyncException.h"

#include <QByteArray>

namespace sync {
namespace core {

SyncException::SyncException(const QString& message) : _message(message) {
    const QByteArray utf8 = message.toUtf8();
    _utf8Message.assign(utf8.constData(), static_cast<size_t>(utf8.size()));
}

SyncException::SyncException(const SyncException& other) = default;
SyncException& SyncException::operator=(const SyncException& other) = default;
SyncException::~SyncException() noexcept = default;

const char* SyncException::what() const noexcept {
    return _utf8Message.c_str();
}

}  // namespace core
}  // namespace sync
