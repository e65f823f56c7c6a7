#include "client/cli/Password.h"

#include <bsd/readpassphrase.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <optional>

#include "client/cli/UsageError.h"

namespace ovsync {
namespace cli {

namespace {

std::optional<QString> PasswordFromNetrc(const QString& user, const QString& host) {
    const QString named = qEnvironmentVariable("NETRC");
    QFile file(named.isEmpty() ? QDir::home().filePath(QStringLiteral(".netrc")) : named);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QStringList words = QString::fromUtf8(file.readAll()).split(QRegularExpression(QStringLiteral("\\s+")));
    bool isHost = false;
    bool isUser = false;
    for (int i = 0; i < words.size(); ++i) {
        const QString& word = words.at(i);
        const QString value = words.value(i + 1);
        if (word == QLatin1String("machine")) {
            isHost = value.compare(host, Qt::CaseInsensitive) == 0;
            isUser = false;
            ++i;
        } else if (word == QLatin1String("default")) {
            isHost = true;
            isUser = false;
        } else if (word == QLatin1String("login")) {
            isUser = value == user;
            ++i;
        } else if (word == QLatin1String("password")) {
            if (isHost && isUser) {
                return value;
            }
            ++i;
        }
    }
    return std::nullopt;
}

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
    if (const std::optional<QString> password = PasswordFromNetrc(user, host)) {
        return *password;
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
