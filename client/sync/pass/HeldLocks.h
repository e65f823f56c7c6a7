#pragma once

#include <QSet>
#include <QString>

#include "client/store/RecordDatabase.h"
#include "client/sync/pass/ServiceFolder.h"

namespace ovsync {
namespace pass {

/// Remembers in which folders a pass has files locked on the service, so that the next pass ends the locks of one that
/// died. Not thread-safe.
class HeldLocks {
public:
    /// `records` outlive this object.
    explicit HeldLocks(store::RecordDatabase& records) : _records(records) {}

    /// By which the service knows the locks of this synced folder.
    QString Owner();

    /// Files in `folders` are going to be locked.
    void Expect(const QSet<QString>& folders);
    /// No file is locked any more.
    void Forget();

    /// Ends the locks that an earlier pass left. What cannot be reached is left to the next one.
    void Release(const ServiceFolder& service);

private:
    QSet<QString> _Folders() const;

    store::RecordDatabase& _records;
};

}  // namespace pass
}  // namespace ovsync
