#include "client/requests/MoveRequest.h"
#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace requests {

using wire::HttpStatus;
using wire::HttpTransaction;

MoveRequest::MoveRequest(const QUrl& source, const QUrl& destination)
    : WholeAnswerRequest("MOVE", source), _destination(destination) {}

HttpTransaction::Headers MoveRequest::RequestHeaders() const {
    Headers headers = WholeAnswerRequest::RequestHeaders();
    const QByteArray destination = _destination.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    headers.append(qMakePair(QByteArrayLiteral("Destination"), destination));
    headers.append(qMakePair(QByteArrayLiteral("Overwrite"), QByteArrayLiteral("F")));
    return headers;
}

bool MoveRequest::IsAnswer(int status) const {
    return status == HttpStatus::Created || status == HttpStatus::NoContent || status == HttpStatus::MultiStatus;
}

}  // namespace requests
}  // namespace ovsync
