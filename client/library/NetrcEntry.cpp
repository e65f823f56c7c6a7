#include "client/library/NetrcEntry.h"

#include <QUrl>

#include "host/core/SyncException.h"

namespace ovsync {
namespace library {

using sync::core::SyncException;

namespace {

const QByteArray ByteOrderMark("\xEF\xBB\xBF");

bool IsBlank(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

/// The end of the line that `position` is in.
int LineEnd(const QByteArray& text, int position) {
    const int end = text.indexOf('\n', position);
    return end < 0 ? text.size() : end;
}

NetrcWord ReadWord(const QByteArray& text, int position) {
    NetrcWord word{QByteArray(), position, position};
    if (text.at(position) != '"') {
        for (; word.end < text.size() && !IsBlank(text.at(word.end)); ++word.end) {
            word.text += text.at(word.end);
        }
        return word;
    }
    const int lineEnd = LineEnd(text, position);
    for (++word.end; word.end < lineEnd && text.at(word.end) != '"'; ++word.end) {
        char character = text.at(word.end);
        if (character == '\\' && word.end + 1 < lineEnd) {
            character = text.at(++word.end);
            character = character == 'n' ? '\n' : character == 'r' ? '\r' : character == 't' ? '\t' : character;
        }
        word.text += character;
    }
    if (word.end == lineEnd) {
        throw SyncException(
            QStringLiteral("a quote in line %1 is not closed").arg(text.left(position).count('\n') + 1));
    }
    ++word.end;
    return word;
}

/// Whether a value follows, also where that looks like a key or a comment.
bool HasValue(const QByteArray& key) {
    return key == "machine" || key == "login" || key == "password" || key == "account";
}

/// Where the first empty line from `position` on begins.
int MacroEnd(const QByteArray& text, int position) {
    while (position < text.size()) {
        position = LineEnd(text, position) + 1;
        const int size = LineEnd(text, position) - position;
        if (text.mid(position, size).trimmed().isEmpty()) {
            break;
        }
    }
    return position;
}

/// Keys and values. Without comments, and without macros, which end at an empty line.
QVector<NetrcWord> WordsOf(const QByteArray& text) {
    QVector<NetrcWord> words;
    bool isValue = false;
    for (int position = text.startsWith(ByteOrderMark) ? ByteOrderMark.size() : 0; position < text.size();) {
        if (IsBlank(text.at(position))) {
            ++position;
        } else if (text.at(position) == '#' && !isValue) {
            position = LineEnd(text, position);
        } else {
            const NetrcWord word = ReadWord(text, position);
            position = word.end;
            if (word.text == "macdef" && !isValue) {
                position = MacroEnd(text, position);
                continue;
            }
            words.append(word);
            isValue = !isValue && HasValue(word.text.toLower());
        }
    }
    return words;
}

}  // namespace

bool NetrcEntry::Names(const QString& searched) const {
    const auto isNamed = [this](const QString& name) {
        return !name.isEmpty() && QString::fromUtf8(host->text).compare(name, Qt::CaseInsensitive) == 0;
    };
    return host && (isNamed(searched) || isNamed(QString::fromLatin1(QUrl::toAce(searched))));
}

QVector<NetrcEntry> ReadNetrc(const QByteArray& text) {
    QVector<NetrcEntry> entries;
    const QVector<NetrcWord> words = WordsOf(text);
    for (int i = 0; i < words.size(); ++i) {
        const QByteArray key = words[i].text.toLower();
        if (key == "default") {
            entries.append(NetrcEntry{words[i].begin, std::nullopt, std::nullopt, std::nullopt});
            continue;
        }
        if (!HasValue(key) || i + 1 == words.size()) {
            continue;
        }
        const NetrcWord& value = words[++i];
        if (key == "machine") {
            entries.append(NetrcEntry{words[i - 1].begin, value, std::nullopt, std::nullopt});
        } else if (key == "login" && !entries.isEmpty()) {
            entries.last().login = value;
        } else if (key == "password" && !entries.isEmpty()) {
            entries.last().password = value;
        }
    }
    return entries;
}

}  // namespace library
}  // namespace ovsync
