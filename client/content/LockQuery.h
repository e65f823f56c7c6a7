#pragma once

#include <QByteArray>
#include <QVector>

#include "client/content/ContentTransaction.h"

namespace ovsync {
namespace content {

/// Asks which locks there are on what lies in a folder. Takes every answer. Not thread-safe.
class LockQuery : public ContentTransaction {
public:
    struct HeldLock {
        QUrl url;
        /// In angle brackets, as requests name it.
        QByteArray token;
    };

    explicit LockQuery(const QUrl& folder);

    /// Those that were made for `owner`; none when the answer cannot be read.
    QVector<HeldLock> LocksOf(const QString& owner) const;

    Headers RequestHeaders() const override;
    QByteArray RequestBody() const override;
    void Forget() override;
    void OnBody(const char* bytes, size_t size) override;

private:
    /// What the server names is asked for at the server that was asked, whatever it calls itself.
    QUrl _Resolved(const QString& href) const;

    QByteArray _answer;
};

}  // namespace content
}  // namespace ovsync
