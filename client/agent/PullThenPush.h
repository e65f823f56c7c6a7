#pragma once

#include <QAuthenticator>
#include <memory>

#include "client/agent/IFolderPass.h"
#include "client/library/ServiceConnection.h"
#include "client/sync/report/SyncOutcome.h"

namespace ovsync {
namespace agent {

/// A pull, and a push when that went well.
class PullThenPush : public IFolderPass {
public:
    /// Null `credentials` are none.
    PullThenPush(const folders::SyncedFolder& folder, const QAuthenticator& credentials);

    PassResult Run(const std::atomic<bool>& isStopped, report::ISyncObserver& observer) override;
    ServiceWishes AskWishes() override;

private:
    /// Kept from pass to pass, so that a poll does not begin with asking the server what it knows.
    library::ServiceConnection& _Connection();
    report::SyncOutcome _Sync(const std::atomic<bool>& isStopped, report::ISyncObserver& observer);

    const folders::SyncedFolder _folder;
    const QAuthenticator _credentials;
    const std::atomic<bool>* _isStopped = nullptr;
    std::unique_ptr<library::ServiceConnection> _connection;
};

}  // namespace agent
}  // namespace ovsync
