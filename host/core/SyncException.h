#pragma once

#include <QString>
#include <exception>
#include <string>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace core {

/// A failure that reaches the host. Thrown by value, caught by reference. A value: copies are independent.
class OVSYNC_CORE_EXPORT SyncException : public std::exception {
public:
    explicit SyncException(const QString& message);
    SyncException(const SyncException& other);
    SyncException& operator=(const SyncException& other);
    ~SyncException() noexcept override;

    /// The message in UTF-8; valid as long as this object.
    const char* what() const noexcept override;

    const QString& Message() const { return _message; }
    const std::string& Utf8Message() const { return _utf8Message; }

private:
    QString _message;
    std::string _utf8Message;
};

}  // namespace core
}  // namespace sync
