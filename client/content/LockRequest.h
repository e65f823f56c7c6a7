#pragma once

#include <chrono>

#include "client/content/ContentTransaction.h"

namespace ovsync {
namespace content {

/// Asks that nobody else may change a file, if it still has an entity tag, or any when that is empty. Takes every
/// answer. Not thread-safe.
class LockRequest : public ContentTransaction {
public:
    /// `owner` is what others are told of who has it, `longest` how long the lock lasts if nobody ends it.
    LockRequest(const QUrl& url, const QByteArray& entityTag, const QString& owner, std::chrono::seconds longest);

    /// In angle brackets, as requests name it; empty when there is no lock.
    const QByteArray& Token() const { return _token; }

    Headers RequestHeaders() const override;
    QByteArray RequestBody() const override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;

private:
    const QByteArray _entityTag;
    const QString _owner;
    const std::chrono::seconds _longest;
    QByteArray _token;
};

}  // namespace content
}  // namespace ovsync
