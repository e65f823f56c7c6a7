#pragma once

#include "client/requests/WholeAnswerRequest.h"

namespace ovsync {
namespace requests {

/// Creates a folder. Below 400 there is 201 for created, whose body names the folder's id and owner.
///
/// A 201 of the service, which is known by its header x-ovs-id, has to have that body: what is no XML, is not complete
/// or names no id is refused. A 201 of another server gets the body that the service would have sent, with the id that
/// the client makes up for the folder. A 405, by which other servers say that something is there, becomes what the
/// service would have said, where that is a folder. Not thread-safe.
class FolderCreationRequest : public WholeAnswerRequest {
public:
    explicit FolderCreationRequest(const QUrl& url);

    /// The folder was found to be there already, after a 405.
    void TakeAsThere();

    void OnEnd() override;
};

}  // namespace requests
}  // namespace ovsync
