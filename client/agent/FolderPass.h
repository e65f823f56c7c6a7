#pragma once

#include <QAuthenticator>
#include <memory>

#include "client/agent/IFolderPass.h"
#include "client/library/ServiceConnection.h"
#include "client/sync/report/SyncOutcome.h"

namespace ovsync {
namespace agent {

/// Passes in both directions, over one connection.
class FolderPass : public IFolderPass {
public:
    /// Null `credentials` are none.
    FolderPass(const folders::SyncedFolder& folder, const QAuthenticator& credentials);

    PassResult Run(const std::atomic<bool>& isStopped, report::ISyncObserver& observer,
                   const Paths& changedHere) override;
    std::optional<ServiceWishes> AskWishes() override;

private:
    /// Kept from pass to pass, so that a poll does not begin with asking the server what it knows.
    library::ServiceConnection& _Connection();
    report::SyncOutcome _Sync(const std::atomic<bool>& isStopped, report::ISyncObserver& observer,
                              const Paths& changedHere);

    const folders::SyncedFolder _folder;
    const QAuthenticator _credentials;
    const std::atomic<bool>* _isStopped = nullptr;
    std::unique_ptr<library::ServiceConnection> _connection;
};

}  // namespace agent
}  // namespace ovsync
