#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "client/changes/ServiceChanges.h"

namespace ovsync {
namespace changes {

/// Tells what changed in one folder of a service since it was asked before, so that not all of it has to be listed. To
/// be used on one thread.
class IChangeSource {
public:
    virtual ~IChangeSource() = default;

    /// What the folder is like at this moment, to ask later what has changed since. To be asked for before the listing
    /// that it stands for, so that no change falls in between. Empty where the service does not tell changes, none when
    /// there is no such folder. Throws TransactionError when there is no answer at all.
    virtual std::optional<QString> StateNow() = 0;

    /// The same once everything was listed, which may have told more of it: what to ask with from then on. To be asked
    /// right after that listing.
    virtual QString Listed(const QString& state) = 0;

    /// Begins to ask for what changed since `state`, and returns at once.
    virtual void Ask(const QString& state) = 0;
    /// Waits for the answer to what was asked last. Throws TransactionError when there is no answer at all.
    virtual ServiceChanges Take() = 0;

    /// What is at these server paths, as if each had changed. Throws TransactionError, and HttpException when the
    /// service does not say it.
    virtual ServiceChanges LookAt(const QStringList& serverPaths) = 0;
};

}  // namespace changes
}  // namespace ovsync
