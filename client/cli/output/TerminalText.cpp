#include "client/cli/output/TerminalText.h"

#include <QRegularExpression>
#include <algorithm>

namespace ovsync {
namespace output {

namespace {

const QString MarkEscape = QStringLiteral("%EF%BB%BF");

bool IsHarmful(QChar character) {
    const ushort code = character.unicode();
    const bool isTurning = (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
    return isTurning || character.category() == QChar::Other_Control;
}

bool IsHarmfulInLines(QChar character) {
    return character != QLatin1Char('\n') && IsHarmful(character);
}

}  // namespace

QString TerminalText(const QString& text) {
    QString shown = text;
    std::replace_if(shown.begin(), shown.end(), IsHarmful, QChar(QLatin1Char('?')));
    return shown;
}

QString VisiblePath(QString path) {
    static const QRegularExpression mark(QStringLiteral("(?<=^|/)\\x{FEFF}"));
    return path.contains(QChar(QChar::ByteOrderMark)) ? path.replace(mark, MarkEscape) : path;
}

QString VisibleText(QString text) {
    return text.replace(QChar(QChar::ByteOrderMark), MarkEscape);
}

QByteArray TerminalJson(const QByteArray& text) {
    const QString characters = QString::fromUtf8(text);
    if (std::none_of(characters.begin(), characters.end(), IsHarmfulInLines)) {
        return text;
    }
    QString shown;
    for (const QChar character : characters) {
        if (IsHarmfulInLines(character)) {
            shown += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        } else {
            shown += character;
        }
    }
    return shown.toUtf8();
}

}  // namespace output
}  // namespace ovsync
