#include "client/user/NetrcFile.h"

#include "client/library/Netrc.h"
#include "client/library/NetrcEntry.h"
#include "client/user/WholeFile.h"

namespace ovsync {
namespace user {

namespace {

const mode_t ForThisUserOnly = 0600;

/// As one word.
QByteArray Written(const QString& text) {
    QByteArray quoted = "\"";
    bool needsQuotes = text.isEmpty();
    for (const char character : text.toUtf8()) {
        needsQuotes = needsQuotes || QByteArray(" \t\n\r\"\\#").contains(character);
        switch (character) {
            case '\n':
                quoted += "\\n";
                break;
            case '\r':
                quoted += "\\r";
                break;
            case '\t':
                quoted += "\\t";
                break;
            case '"':
            case '\\':
                quoted += '\\';
                [[fallthrough]];
            default:
                quoted += character;
        }
    }
    return needsQuotes ? quoted + '"' : text.toUtf8();
}

}  // namespace

QByteArray NetrcWith(const QByteArray& text, const QString& host, const QString& user, const QString& password) {
    QByteArray result = text;
    int others = -1;
    for (const library::NetrcEntry& entry : library::ReadNetrc(text)) {
        if (!entry.host && others < 0) {
            others = entry.begin;
        }
        if (!entry.Names(host) || !entry.login || entry.login->text != user.toUtf8()) {
            continue;
        }
        if (entry.password) {
            return result.replace(entry.password->begin, entry.password->end - entry.password->begin,
                                  Written(password));
        }
        return result.insert(entry.login->end, " password " + Written(password));
    }
    const QByteArray entry =
        "machine " + Written(host) + " login " + Written(user) + " password " + Written(password) + '\n';
    if (others >= 0) {
        return result.insert(others, entry);
    }
    if (!text.isEmpty() && !text.endsWith('\n')) {
        result += '\n';
    }
    // A macro ends at an empty line.
    if (text.contains("macdef") && !result.endsWith("\n\n")) {
        result += '\n';
    }
    return result + entry;
}

QString NetrcName() {
    return qEnvironmentVariableIsEmpty("NETRC") ? QStringLiteral("~/.netrc") : library::NetrcPath();
}

void WriteToNetrc(const QString& host, const QString& user, const QString& password) {
    const QString path = library::NetrcPath();
    // What cannot be read is not edited either.
    library::NetrcCredentials(host, user);
    EditWholeFile(path, ForThisUserOnly, [&](const QByteArray& text) { return NetrcWith(text, host, user, password); });
    if (library::NetrcCredentials(host, user).password() != password) {
        throw library::NetrcError(
            QStringLiteral("%1: the password of %2 at %3 is in it now, but something above it is read "
                           "in its place")
                .arg(path, user, host));
    }
}

}  // namespace user
}  // namespace ovsync
