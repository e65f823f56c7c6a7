#include "client/user/NetrcFile.h"

#include <QDir>
#include <QVector>

#include "client/library/Netrc.h"
#include "client/user/WholeFile.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace user {

using sync::core::SyncException;

namespace {

const mode_t ForThisUserOnly = 0600;

struct Token {
    QByteArray text;
    int begin;
    int end;
};

bool IsBlank(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

/// The end of the line that `position` is in.
int LineEnd(const QByteArray& text, int position) {
    const int end = text.indexOf('\n', position);
    return end < 0 ? text.size() : end;
}

Token ReadToken(const QByteArray& text, int position) {
    Token token{QByteArray(), position, position};
    const bool isQuoted = text.at(position) == '"';
    for (token.end += isQuoted ? 1 : 0; token.end < text.size(); ++token.end) {
        char character = text.at(token.end);
        if (isQuoted ? character == '"' : IsBlank(character)) {
            token.end += isQuoted ? 1 : 0;
            break;
        }
        if (isQuoted && character == '\\' && token.end + 1 < text.size()) {
            character = text.at(++token.end);
            character = character == 'n' ? '\n' : character == 'r' ? '\r' : character == 't' ? '\t' : character;
        }
        token.text += character;
    }
    return token;
}

/// Without comments, and without macros, which end at an empty line.
QVector<Token> TokensOf(const QByteArray& text) {
    QVector<Token> tokens;
    for (int position = 0; position < text.size();) {
        if (IsBlank(text.at(position))) {
            ++position;
        } else if (text.at(position) == '#') {
            position = LineEnd(text, position);
        } else {
            const Token token = ReadToken(text, position);
            position = token.end;
            if (token.text == "macdef") {
                const int end = text.indexOf("\n\n", position);
                position = end < 0 ? text.size() : end;
            } else {
                tokens.append(token);
            }
        }
    }
    return tokens;
}

/// As one token.
QByteArray Written(const QString& text) {
    QByteArray quoted = "\"";
    bool needsQuotes = text.isEmpty();
    for (const char character : text.toUtf8()) {
        needsQuotes = needsQuotes || IsBlank(character) || character == '"' || character == '\\' || character == '#';
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

bool BeginsEntry(const QByteArray& word) {
    return word == "machine" || word == "default";
}

}  // namespace

QByteArray NetrcWith(const QByteArray& text, const QString& host, const QString& user, const QString& password) {
    const QVector<Token> tokens = TokensOf(text);
    QByteArray result = text;
    int others = -1;
    for (int i = 0; i < tokens.size();) {
        const int begin = i;
        const bool isHost = tokens[begin].text == "machine" && begin + 1 < tokens.size() &&
                            QString::fromUtf8(tokens[begin + 1].text).compare(host, Qt::CaseInsensitive) == 0;
        if (tokens[begin].text == "default") {
            others = others < 0 ? tokens[begin].begin : others;
        }
        i += tokens[begin].text == "machine" ? 2 : 1;
        const Token* login = nullptr;
        const Token* known = nullptr;
        for (; i < tokens.size() && !BeginsEntry(tokens[i].text); i += 2) {
            if (i + 1 < tokens.size() && tokens[i].text == "login") {
                login = &tokens[i + 1];
            } else if (i + 1 < tokens.size() && tokens[i].text == "password") {
                known = &tokens[i + 1];
            }
        }
        if (!isHost || login == nullptr || login->text != user.toUtf8()) {
            continue;
        }
        if (known != nullptr) {
            return result.replace(known->begin, known->end - known->begin, Written(password));
        }
        return result.insert(login->end, " password " + Written(password));
    }
    const QByteArray entry =
        "machine " + Written(host) + " login " + Written(user) + " password " + Written(password) + '\n';
    if (others >= 0) {
        return result.insert(others, entry);
    }
    return result + (text.isEmpty() || text.endsWith('\n') ? "" : "\n") + entry;
}

void WriteToNetrc(const QString& host, const QString& user, const QString& password) {
    const QString named = qEnvironmentVariable("NETRC");
    const QString path = named.isEmpty() ? QDir::homePath() + QLatin1String("/.netrc") : named;
    // What cannot be read is not edited either.
    library::NetrcCredentials(host, user);
    EditWholeFile(path, ForThisUserOnly, [&](const QByteArray& text) { return NetrcWith(text, host, user, password); });
    if (library::NetrcCredentials(host, user).password() != password) {
        throw SyncException(QStringLiteral("%1: the password of %2 at %3 is in it now, but something above it is read "
                                           "in its place")
                                .arg(path, user, host));
    }
}

}  // namespace user
}  // namespace ovsync
