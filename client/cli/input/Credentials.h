#pragma once

#include <QAuthenticator>
#include <QString>

namespace ovsync {
namespace input {

/// Those of `user` at `host`: the password from the environment variable OVSYNC_PASSWORD, else from where it is kept
/// (user::Passwords), else from a prompt on the terminal. Throws UsageError when there is none and no terminal to ask
/// at. Without a user, what ~/.netrc has for the host, which may be nothing.
QAuthenticator FindCredentials(const QString& user, const QString& host);

/// Those to be kept: the password from the environment variable OVSYNC_PASSWORD, else from a prompt. Throws UsageError
/// when there is neither, and without a user.
QAuthenticator NewCredentials(const QString& user, const QString& host);

/// What FindCredentials would find: those that an agent has, or would have if they were kept.
struct CredentialsForAgent {
    /// Null when there are none to be had.
    QAuthenticator credentials;
    bool areKept = false;
};
/// The process has a QCoreApplication meanwhile.
CredentialsForAgent FindCredentialsForAgent(const QString& user, const QString& host);

/// Throws the UsageError of FindCredentials.
[[noreturn]] void ThrowNoPassword(const QString& user, const QString& host);

}  // namespace input
}  // namespace ovsync
