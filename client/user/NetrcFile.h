#pragma once

#include <QByteArray>
#include <QString>

namespace ovsync {
namespace user {

/// Writes the password of `user` at `host` to ~/.netrc, or to the file that the environment variable NETRC names, which
/// is for this user alone from then on. All else in the file stays as it is. Throws SyncException, and changes nothing,
/// when the file cannot be read or written, or would not say so afterwards.
void WriteToNetrc(const QString& host, const QString& user, const QString& password);

/// `text`, a netrc, with that password in it. A host that it does not know comes before what it says of all others.
QByteArray NetrcWith(const QByteArray& text, const QString& host, const QString& user, const QString& password);

}  // namespace user
}  // namespace ovsync
