#include "client/requests/FolderDeletionRequest.h"
#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace requests {

using wire::HttpStatus;

FolderDeletionRequest::FolderDeletionRequest(const QUrl& url) : WholeAnswerRequest("DELETE", url) {}

bool FolderDeletionRequest::IsAnswer(int status) const {
    return status == HttpStatus::Ok || status == HttpStatus::Accepted || status == HttpStatus::NoContent ||
           status == HttpStatus::MultiStatus;
}

}  // namespace requests
}  // namespace ovsync
