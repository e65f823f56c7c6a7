#pragma once

#include "client/requests/WholeAnswerRequest.h"

namespace ovsync {
namespace requests {

/// Moves what is at one URL to another of the same server, where nothing may be. Below 400 there are 201 and 204 for
/// moved, and 207 for not all of it moved. Not thread-safe.
class MoveRequest : public WholeAnswerRequest {
public:
    MoveRequest(const QUrl& source, const QUrl& destination);

    Headers RequestHeaders() const override;

protected:
    bool IsAnswer(int status) const override;

private:
    const QUrl _destination;
};

}  // namespace requests
}  // namespace ovsync
