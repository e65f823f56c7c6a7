#pragma once

#include "client/requests/WholeAnswerRequest.h"

namespace ovsync {
namespace requests {

/// Asks whether there is a file. Below 400 there is 200 for yes. Not thread-safe.
class FileQueryRequest : public WholeAnswerRequest {
public:
    explicit FileQueryRequest(const QUrl& url);

protected:
    bool IsAnswer(int status) const override;
};

}  // namespace requests
}  // namespace ovsync
