#include "client/http/FolderDeletionRequest.h"

namespace ovsync {
namespace http {

FolderDeletionRequest::FolderDeletionRequest(const QUrl& url) : WholeAnswerRequest("DELETE", url) {}

bool FolderDeletionRequest::IsAnswer(int status) const {
    return status == 200 || status == 202 || status == 204 || status == 207;
}

}  // namespace http
}  // namespace ovsync
