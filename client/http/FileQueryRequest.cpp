#include "client/http/FileQueryRequest.h"

namespace ovsync {
namespace http {

FileQueryRequest::FileQueryRequest(const QUrl& url) : WholeAnswerRequest("HEAD", url) {}

bool FileQueryRequest::IsAnswer(int status) const {
    return status == 200;
}

}  // namespace http
}  // namespace ovsync
