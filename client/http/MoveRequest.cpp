#include "client/http/MoveRequest.h"

namespace ovsync {
namespace http {

MoveRequest::MoveRequest(const QUrl& source, const QUrl& destination)
    : WholeAnswerRequest("MOVE", source), _destination(destination) {}

Exchange::Headers MoveRequest::RequestHeaders() const {
    Headers headers = WholeAnswerRequest::RequestHeaders();
    const QByteArray destination = _destination.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    headers.append(qMakePair(QByteArrayLiteral("Destination"), destination));
    headers.append(qMakePair(QByteArrayLiteral("Overwrite"), QByteArrayLiteral("F")));
    return headers;
}

bool MoveRequest::IsAnswer(int status) const {
    return status == 201 || status == 204 || status == 207;
}

}  // namespace http
}  // namespace ovsync
