#include "client/content/ResourceConnection.h"

#include "client/wire/AnswerError.h"
#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace content {

using wire::ConnectionSettings;
using wire::HttpStatus;
using wire::HttpTransaction;

ResourceConnection::ResourceConnection(const ConnectionSettings& settings, const QAuthenticator& credentials)
    : _session(settings, credentials) {}

void ResourceConnection::Remove(const QUrl& url) {
    _Perform(ResourceChange("DELETE", url, {}));
}

void ResourceConnection::Move(const QUrl& from, const QUrl& to, Overwriting overwriting) {
    _Transfer("MOVE", from, to, overwriting, {});
}

void ResourceConnection::Copy(const QUrl& from, const QUrl& to, Overwriting overwriting) {
    _Transfer("COPY", from, to, overwriting, {{"Depth", "infinity"}});
}

void ResourceConnection::_Transfer(const QByteArray& method, const QUrl& from, const QUrl& to, Overwriting overwriting,
                                   const HttpTransaction::Headers& headers) {
    HttpTransaction::Headers all = headers;
    all.append(qMakePair(QByteArray("Destination"), to.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment)));
    all.append(qMakePair(QByteArray("Overwrite"), QByteArray(overwriting == Overwriting::Yes ? "T" : "F")));
    _Perform(ResourceChange(method, from, all));
}

void ResourceConnection::_Perform(ResourceChange change) {
    _session.Perform(change);
    switch (const int status = change.StatusCode()) {
        case HttpStatus::Ok:
        case HttpStatus::Created:
        case HttpStatus::Accepted:
        case HttpStatus::NoContent:
            return;
        default:
            throw wire::AnswerError(change.Method(), change.Url(),
                                    QStringLiteral("the service answered with %1").arg(status), _session.LastAnswer());
    }
}

}  // namespace content
}  // namespace ovsync
