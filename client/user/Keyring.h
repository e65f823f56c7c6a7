#pragma once

#include <QString>
#include <memory>
#include <optional>

namespace QKeychain {
class Job;
}

namespace ovsync {
namespace user {

/// The keyring of the desktop. Where there is no session bus it is asked nothing. One that does not answer within three
/// seconds counts as none, and is not asked again by this object. To be used on the main thread of a process that has a
/// QCoreApplication, whose event loop it runs meanwhile. Not thread-safe.
class Keyring {
public:
    /// None when there is none, or no keyring.
    std::optional<QString> Read(const QString& host, const QString& user);
    /// False when there is no keyring that would keep it.
    [[nodiscard]] bool Write(const QString& host, const QString& user, const QString& password);

private:
    /// Whether it was done.
    bool _Run(const std::shared_ptr<QKeychain::Job>& job, const QString& host, const QString& user);

    bool _isSilent = false;
};

}  // namespace user
}  // namespace ovsync
