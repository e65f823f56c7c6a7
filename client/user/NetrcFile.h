#pragma once

#include <QByteArray>
#include <QString>

namespace ovsync {
namespace user {

/// Writes the password of `user` at `host` to ~/.netrc, or to the file that the environment variable NETRC names, which
/// is for this user alone from then on. All else in the file stays as it is. Throws library::NetrcError when it cannot
/// be read or would not say so afterwards, and local::LocalError when it cannot be written.
void WriteToNetrc(const QString& host, const QString& user, const QString& password);

/// That file, as a user knows it.
QString NetrcName();

/// `text`, a netrc, with that password in it. A host that it does not know comes before what it says of all others.
QByteArray NetrcWith(const QByteArray& text, const QString& host, const QString& user, const QString& password);

}  // namespace user
}  // namespace ovsync
