#include "client/requests/FileQueryRequest.h"

namespace ovsync {
namespace requests {

FileQueryRequest::FileQueryRequest(const QUrl& url) : WholeAnswerRequest("HEAD", url) {}

bool FileQueryRequest::IsAnswer(int status) const {
    return status == 200;
}

}  // namespace requests
}  // namespace ovsync
