#pragma once

#include "client/requests/WholeAnswerRequest.h"

namespace ovsync {
namespace requests {

/// Deletes a folder and what lies in it. Below 400 there are 200, 202 and 204 for deleted, and 207 for not all of it
/// deleted. Not thread-safe.
class FolderDeletionRequest : public WholeAnswerRequest {
public:
    explicit FolderDeletionRequest(const QUrl& url);

protected:
    bool IsAnswer(int status) const override;
};

}  // namespace requests
}  // namespace ovsync
