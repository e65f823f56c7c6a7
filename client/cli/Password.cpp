#include "client/cli/Password.h"

#include <bsd/readpassphrase.h>

#include <QByteArray>
#include <optional>

#include "client/cli/UsageError.h"
#include "client/http/Netrc.h"

namespace ovsync {
namespace cli {

namespace {

std::optional<QString> PasswordFromPrompt(const QString& user, const QString& host) {
    const QByteArray prompt = QStringLiteral("Password of %1 at %2: ").arg(user, host).toUtf8();
    char password[1024];
    if (readpassphrase(prompt.constData(), password, sizeof(password), RPP_REQUIRE_TTY) == nullptr) {
        return std::nullopt;
    }
    return QString::fromUtf8(password);
}

}  // namespace

QString FindPassword(const QString& user, const QString& host) {
    if (qEnvironmentVariableIsSet("OVSYNC_PASSWORD")) {
        return qEnvironmentVariable("OVSYNC_PASSWORD");
    }
    const QAuthenticator listed = http::NetrcCredentials(host, user);
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

}  // namespace cli
}  // namespace ovsync
