#include "client/cli/input/Credentials.h"

#include <bsd/readpassphrase.h>

#include <QByteArray>
#include <optional>

#include "client/cli/input/UsageError.h"
#include "client/library/Netrc.h"

namespace ovsync {
namespace input {

namespace {

std::optional<QString> PasswordFromPrompt(const QString& user, const QString& host) {
    const QByteArray prompt = QStringLiteral("Password of %1 at %2: ").arg(user, host).toUtf8();
    char password[1024];
    if (readpassphrase(prompt.constData(), password, sizeof(password), RPP_REQUIRE_TTY) == nullptr) {
        return std::nullopt;
    }
    return QString::fromUtf8(password);
}

QString FindPassword(const QString& user, const QString& host) {
    if (qEnvironmentVariableIsSet("OVSYNC_PASSWORD")) {
        return qEnvironmentVariable("OVSYNC_PASSWORD");
    }
    const QAuthenticator listed = library::NetrcCredentials(host, user);
    if (!listed.isNull()) {
        return listed.password();
    }
    if (const std::optional<QString> password = PasswordFromPrompt(user, host)) {
        return *password;
    }
    throw UsageError(
        QStringLiteral("No password for %1 at %2: OVSYNC_PASSWORD is not set, ~/.netrc has none, and there is "
                       "no terminal to ask at.")
            .arg(user, host));
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

}  // namespace input
}  // namespace ovsync
