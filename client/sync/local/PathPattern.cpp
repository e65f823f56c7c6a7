#include "client/sync/local/PathPattern.h"

#include <QStringList>
#include <QVector>
#include <algorithm>
#include <optional>
#include <utility>

#include "client/sync/local/PathNames.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace local {

using sync::core::SyncException;

namespace {

QString Code(uint character) {
    return QStringLiteral("\\x{%1}").arg(character, 0, 16);
}

[[noreturn]] void Refuse(const char* reason) {
    throw SyncException(QString::fromLatin1(reason));
}

/// Turns a pattern into a regular expression, character by character. Throws SyncException, which says why no path can
/// match it.
class PatternReader {
public:
    explicit PatternReader(const QString& pattern) : _pattern(pattern.toUcs4()) {}

    QString Expression() {
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
                    _TakeBrackets();
                    _name += Wildcard;
                    break;
                default:
                    const std::optional<uint> character = _TakeCharacter();
                    if (!character) {
                        Refuse("nothing follows the \"\\\" at its end");
                    }
                    _expression += Code(*character);
                    if (*character == '/') {
                        _EndName();
                    } else {
                        _name += QString::fromUcs4(&*character, 1);
                    }
            }
        }
        _EndName();
        return _expression;
    }

private:
    void _EndName() {
        const QString name = std::exchange(_name, QString());
        if (name.isEmpty()) {
            Refuse(_pattern.isEmpty() ? "it has no name in it" : "no path has two \"/\" next to each other");
        }
        if (name == QLatin1String(".") || name == QLatin1String("..")) {
            Refuse("no path has \".\" or \"..\" in it");
        }
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

    /// What follows a '['.
    void _TakeBrackets() {
        const bool isNegated = _Has(_at, '!') || _Has(_at, '^');
        _at += isNegated ? 1 : 0;
        QString members;
        do {
            if (!_TakeClass(members)) {
                _TakeRange(members);
            }
        } while (!_Has(_at, ']'));
        ++_at;
        static const QString slash = Code('/');
        if (!isNegated && members.count(slash) * slash.size() == members.size()) {
            Refuse("no name has a \"/\" in it");
        }
        _expression +=
            QLatin1String("(?!/)[") + (isNegated ? QLatin1String("^") : QLatin1String("")) + members + QLatin1Char(']');
    }

    /// "[:digit:]" and the like. False, and nothing is taken, when it is something else.
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
            Refuse("there is no such class of characters");
        }
        members += QLatin1String("[:") + name + QLatin1String(":]");
        _at = end + 1;
        return true;
    }

    /// A character or a range of them.
    void _TakeRange(QString& members) {
        const uint first = _TakeMember();
        members += Code(first);
        if (!_Has(_at, '-') || _at + 1 == _pattern.size() || _Has(_at + 1, ']')) {
            return;
        }
        ++_at;
        const uint last = _TakeMember();
        if (first <= last) {
            members += Code(first) + QLatin1Char('-') + Code(last);
        }
    }

    uint _TakeMember() {
        const std::optional<uint> character = _TakeCharacter();
        if (!character) {
            Refuse("a \"[\" has no \"]\"");
        }
        return *character;
    }

    static constexpr QChar Wildcard{QChar::ObjectReplacementCharacter};

    const QVector<uint> _pattern;
    int _at = 0;
    /// What was read since the last '/', with a Wildcard for whatever may stand for several names.
    QString _name;
    QString _expression;
};

}  // namespace

PathPattern PathPattern::Read(const QString& text) {
    PathPattern pattern;
    QString rest = text;
    pattern._isOfFolders = rest.endsWith(QLatin1Char('/'));
    rest.chop(pattern._isOfFolders ? 1 : 0);
    pattern._isOfName = !rest.contains(QLatin1Char('/'));
    if (rest.startsWith(QLatin1Char('/'))) {
        rest.remove(0, 1);
    }
    pattern._expression = QRegularExpression(QRegularExpression::anchoredPattern(PatternReader(rest).Expression()),
                                             QRegularExpression::DotMatchesEverythingOption);
    return pattern;
}

bool PathPattern::Matches(const QString& path, bool isFolder) const {
    return (isFolder || !_isOfFolders) && _expression.match(_isOfName ? NameOf(path) : path).hasMatch();
}

}  // namespace local
}  // namespace ovsync
