#include "client/sync/local/PathPattern.h"

#include <QStringList>
#include <QVector>
#include <algorithm>
#include <utility>

#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace local {

namespace {

QString Code(uint character) {
    return QStringLiteral("\\x{%1}").arg(character, 0, 16);
}

/// Turns a pattern into a regular expression, character by character.
class PatternReader {
public:
    explicit PatternReader(const QString& pattern) : _pattern(pattern.toUcs4()) {}

    std::optional<QString> Expression() {
        while (_at < _pattern.size()) {
            switch (_pattern[_at]) {
                case '*':
                    _TakeStars();
                    break;
                case '?':
                    ++_at;
                    _expression += QLatin1String("[^/]");
                    _name += Wildcard;
                    break;
                case '[':
                    ++_at;
                    if (!_TakeBrackets()) {
                        return std::nullopt;
                    }
                    _name += Wildcard;
                    break;
                default:
                    const std::optional<uint> character = _TakeCharacter();
                    if (!character || (*character == '/' && !_EndName())) {
                        return std::nullopt;
                    }
                    _expression += Code(*character);
                    if (*character != '/') {
                        _name += QString::fromUcs4(&*character, 1);
                    }
            }
        }
        return _EndName() ? std::make_optional(_expression) : std::nullopt;
    }

private:
    /// False when no path has such a name in it.
    bool _EndName() {
        const QString name = std::exchange(_name, QString());
        return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..");
    }

    bool _Has(int at, char character) const {
        return at < _pattern.size() && _pattern[at] == static_cast<uint>(character);
    }

    void _TakeStars() {
        const int start = _at;
        while (_Has(_at, '*')) {
            ++_at;
        }
        const bool isWholeName = (start == 0 || _Has(start - 1, '/')) && (_at == _pattern.size() || _Has(_at, '/'));
        if (_at - start == 1 || !isWholeName) {
            _expression += QLatin1String("[^/]*");
            _name += Wildcard;
        } else if (_at == _pattern.size()) {
            _expression += QLatin1String(".*");
            _name += Wildcard;
        } else {
            ++_at;
            _expression += QLatin1String("(?:.*/)?");
        }
    }

    /// None at the end.
    std::optional<uint> _TakeCharacter() {
        if (_Has(_at, '\\')) {
            ++_at;
        }
        return _at < _pattern.size() ? std::make_optional(_pattern[_at++]) : std::nullopt;
    }

    /// What follows a '['. False when it does not end, cannot be read or stands for no character of a name.
    bool _TakeBrackets() {
        const bool isNegated = _Has(_at, '!') || _Has(_at, '^');
        _at += isNegated ? 1 : 0;
        QString members;
        do {
            if (!_TakeClass(members) && !_TakeRange(members)) {
                return false;
            }
        } while (!_Has(_at, ']'));
        ++_at;
        static const QString slash = Code('/');
        if (!isNegated && members.count(slash) * slash.size() == members.size()) {
            return false;
        }
        _expression +=
            QLatin1String("(?!/)[") + (isNegated ? QLatin1String("^") : QLatin1String("")) + members + QLatin1Char(']');
        return true;
    }

    /// "[:digit:]" and the like. False, and nothing is taken, when there is no such class.
    bool _TakeClass(QString& members) {
        static const QStringList names{QStringLiteral("alnum"), QStringLiteral("alpha"), QStringLiteral("blank"),
                                       QStringLiteral("cntrl"), QStringLiteral("digit"), QStringLiteral("graph"),
                                       QStringLiteral("lower"), QStringLiteral("print"), QStringLiteral("punct"),
                                       QStringLiteral("space"), QStringLiteral("upper"), QStringLiteral("xdigit")};
        const int end = _pattern.indexOf(']', _at);
        if (!_Has(_at, '[') || !_Has(_at + 1, ':') || end - 1 < _at + 2 || !_Has(end - 1, ':')) {
            return false;
        }
        const QString name = QString::fromUcs4(_pattern.constData() + _at + 2, end - 1 - (_at + 2));
        if (!names.contains(name)) {
            _at = _pattern.size();
            return false;
        }
        members += QLatin1String("[:") + name + QLatin1String(":]");
        _at = end + 1;
        return true;
    }

    /// A character or a range of them. False at the end.
    bool _TakeRange(QString& members) {
        const std::optional<uint> first = _TakeCharacter();
        if (!first) {
            return false;
        }
        members += Code(*first);
        if (!_Has(_at, '-') || _at + 1 == _pattern.size() || _Has(_at + 1, ']')) {
            return true;
        }
        ++_at;
        const std::optional<uint> last = _TakeCharacter();
        if (last && *first <= *last) {
            members += Code(*first) + QLatin1Char('-') + Code(*last);
        }
        return last.has_value();
    }

    static constexpr QChar Wildcard{QChar::ObjectReplacementCharacter};

    const QVector<uint> _pattern;
    int _at = 0;
    /// What was read since the last '/', with a Wildcard for whatever may stand for several names.
    QString _name;
    QString _expression;
};

}  // namespace

std::optional<PathPattern> PathPattern::Read(const QString& text) {
    PathPattern pattern;
    QString rest = text;
    pattern._isOfFolders = rest.endsWith(QLatin1Char('/'));
    rest.chop(pattern._isOfFolders ? 1 : 0);
    pattern._isOfName = !rest.contains(QLatin1Char('/'));
    if (rest.startsWith(QLatin1Char('/'))) {
        rest.remove(0, 1);
    }
    const std::optional<QString> expression = PatternReader(rest).Expression();
    if (!expression || expression->isEmpty()) {
        return std::nullopt;
    }
    pattern._expression = QRegularExpression(QRegularExpression::anchoredPattern(*expression),
                                             QRegularExpression::DotMatchesEverythingOption);
    return pattern;
}

bool PathPattern::Matches(const QString& path, bool isFolder) const {
    return (isFolder || !_isOfFolders) && _expression.match(_isOfName ? NameOf(path) : path).hasMatch();
}

}  // namespace local
}  // namespace ovsync
