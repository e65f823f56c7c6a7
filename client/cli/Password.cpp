#include "client/cli/Password.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

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

/// The terminal, with its echo switched off as long as this object lives.
class SilentTerminal {
public:
    explicit SilentTerminal(int fd) : _fd(fd) {
        _isSilenced = tcgetattr(_fd, &_before) == 0;
        if (_isSilenced) {
            termios silent = _before;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            tcsetattr(_fd, TCSAFLUSH, &silent);
        }
    }
    ~SilentTerminal() {
        if (_isSilenced) {
            tcsetattr(_fd, TCSAFLUSH, &_before);
        }
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

private:
    const int _fd;
    termios _before{};
    bool _isSilenced = false;
};

std::optional<QString> PasswordFromPrompt(const QString& user, const QString& host) {
    QFile terminal(QStringLiteral("/dev/tty"));
    if (!terminal.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        return std::nullopt;
    }
    terminal.write(QStringLiteral("Password of %1 at %2: ").arg(user, host).toUtf8());
    QByteArray line;
    {
        const SilentTerminal silent(terminal.handle());
        line = terminal.readLine();
    }
    terminal.write("\n");
    if (line.endsWith('\n')) {
        line.chop(1);
    }
    return QString::fromUtf8(line);
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
