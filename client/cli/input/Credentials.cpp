#include "client/cli/input/Credentials.h"

#include <bsd/readpassphrase.h>

#include <QByteArray>
#include <optional>

#include "client/cli/input/Application.h"
#include "client/cli/input/UsageError.h"
#include "client/library/Netrc.h"
#include "client/user/NetrcFile.h"
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

FoundCredentials With(const QString& user, const std::optional<QString>& password) {
    FoundCredentials found;
    if (password) {
        found.credentials.setUser(user);
        found.credentials.setPassword(*password);
    }
    return found;
}

FoundCredentials KeptForHost(const QString& host) {
    try {
        return {library::NetrcCredentials(host), true, QString()};
    } catch (const library::NetrcError& e) {
        // Other programs have it for other servers.
        if (qEnvironmentVariableIsEmpty("NETRC")) {
            return {QAuthenticator(), false, e.Message()};
        }
        throw;
    }
}

}  // namespace

FoundCredentials FindCredentials(const QString& user, const QString& host) {
    const Application application;
    FoundCredentials found = FindCredentialsForAgent(user, host);
    if (found.credentials.isNull() && !user.isEmpty()) {
        ThrowNoPassword(user, host);
    }
    return found;
}

FoundCredentials FindCredentialsForAgent(const QString& user, const QString& host) {
    const std::optional<QString> given = GivenPassword();
    if (user.isEmpty()) {
        const FoundCredentials found = KeptForHost(host);
        return given && !found.credentials.isNull() ? With(found.credentials.user(), given) : found;
    }
    if (given) {
        return With(user, given);
    }
    const QAuthenticator kept = user::Passwords().Find(host, user);
    return kept.isNull() ? With(user, PasswordFromPrompt(user, host)) : FoundCredentials{kept, true, QString()};
}

FoundCredentials NewCredentials(const QString& user, const QString& host) {
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
    return With(user, password);
}

void ThrowNoPassword(const QString& user, const QString& host) {
    throw UsageError(QStringLiteral("No password for %1 at %2: OVSYNC_PASSWORD is not set, neither the keyring nor "
                                    "%3 has one, and there is no terminal to ask at.")
                         .arg(user, host, user::NetrcName()));
}

}  // namespace input
}  // namespace ovsync
