#include "client/cli/input/Credentials.h"

#include <bsd/readpassphrase.h>

#include <QByteArray>
#include <optional>

#include "client/cli/input/Application.h"
#include "client/cli/input/UsageError.h"
#include "client/library/Netrc.h"
#include "client/user/Passwords.h"

namespace ovsync {
namespace input {

namespace {

std::optional<QString> PasswordFromPrompt(const QString& user, const QString& host) {
    const QByteArray prompt = QStringLiteral("Password of %1 at %2: ").arg(user, host).toUtf8();
    char password[1024];
    if (readpassphrase(prompt.constData(), password, sizeof(password), RPP_REQUIRE_TTY) == nullptr) {
        return std::nullopt;
    }
    if (*password == '\0') {
        throw UsageError(QStringLiteral("No password was typed."));
    }
    return QString::fromUtf8(password);
}

std::optional<QString> GivenPassword() {
    static const char* const variable = "OVSYNC_PASSWORD";
    return qEnvironmentVariableIsSet(variable) ? std::make_optional(qEnvironmentVariable(variable)) : std::nullopt;
}

QString FindPassword(const QString& user, const QString& host) {
    if (const std::optional<QString> password = GivenPassword()) {
        return *password;
    }
    const Application application;
    const QAuthenticator kept = user::Passwords().Find(host, user);
    if (!kept.isNull()) {
        return kept.password();
    }
    if (const std::optional<QString> password = PasswordFromPrompt(user, host)) {
        return *password;
    }
    ThrowNoPassword(user, host);
}

}  // namespace

QAuthenticator FindCredentials(const QString& user, const QString& host) {
    if (user.isEmpty()) {
        return library::NetrcCredentials(host);
    }
    QAuthenticator credentials;
    credentials.setUser(user);
    credentials.setPassword(FindPassword(user, host));
    return credentials;
}

QAuthenticator NewCredentials(const QString& user, const QString& host) {
    if (user.isEmpty()) {
        throw UsageError(QStringLiteral("Give a user name with -u, or before an @ in the URL."));
    }
    std::optional<QString> password = GivenPassword();
    if (!password) {
        password = PasswordFromPrompt(user, host);
    }
    if (!password) {
        throw UsageError(
            QStringLiteral("No password for %1 at %2: OVSYNC_PASSWORD is not set, and there is no terminal "
                           "to ask at.")
                .arg(user, host));
    }
    QAuthenticator credentials;
    credentials.setUser(user);
    credentials.setPassword(*password);
    return credentials;
}

CredentialsForAgent FindCredentialsForAgent(const QString& user, const QString& host) {
    std::optional<QString> password = user.isEmpty() ? std::nullopt : GivenPassword();
    if (!password) {
        const QAuthenticator kept = user::Passwords().Find(host, user);
        if (!kept.isNull() || user.isEmpty()) {
            return {kept, true};
        }
        password = PasswordFromPrompt(user, host);
    }
    CredentialsForAgent found;
    if (password) {
        found.credentials.setUser(user);
        found.credentials.setPassword(*password);
    }
    return found;
}

void ThrowNoPassword(const QString& user, const QString& host) {
    throw UsageError(QStringLiteral("No password for %1 at %2: OVSYNC_PASSWORD is not set, neither the keyring nor "
                                    "~/.netrc has one, and there is no terminal to ask at.")
                         .arg(user, host));
}

}  // namespace input
}  // namespace ovsync
