#pragma once

#include <QAuthenticator>
#include <QString>

namespace ovsync {
namespace input {

/// Who logs in. A plain value.
struct FoundCredentials {
    /// Null for nobody.
    QAuthenticator credentials;
    /// Whether they come from where they are kept.
    bool areKept = false;
    /// Why ~/.netrc, which may name somebody, could not be asked; empty where it was.
    QString problem;
};

/// Those of `user` at `host`: the password from the environment variable OVSYNC_PASSWORD, else from where it is kept
/// (user::Passwords), else from a prompt on the terminal. Throws UsageError when there is none and no terminal to ask
/// at, and library::NetrcError. Without a user, what ~/.netrc has for the host, which may be nothing; that it cannot be
/// read is only a problem then, unless the environment variable NETRC names it.
FoundCredentials FindCredentials(const QString& user, const QString& host);

/// The same, which may be nothing for a user, too: those that an agent has, or would have if they were kept. The
/// process has a QCoreApplication meanwhile.
FoundCredentials FindCredentialsForAgent(const QString& user, const QString& host);

/// Those to be kept: the password from the environment variable OVSYNC_PASSWORD, else from a prompt. Throws UsageError
/// when there is neither, and without a user.
FoundCredentials NewCredentials(const QString& user, const QString& host);

/// Throws the UsageError of FindCredentials.
[[noreturn]] void ThrowNoPassword(const QString& user, const QString& host);

}  // namespace input
}  // namespace ovsync
