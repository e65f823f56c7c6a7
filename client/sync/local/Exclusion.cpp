#include "client/sync/local/Exclusion.h"

#include <QTextCodec>

#include "client/sync/local/PathNames.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace local {

using sync::core::SyncException;

namespace {

const QByteArray ByteOrderMark("\xEF\xBB\xBF");

/// Without the spaces at its end, but for one that a '\' stands before.
QByteArray WithoutTrailingSpaces(const QByteArray& line) {
    int end = 0;
    for (int i = 0; i < line.size(); ++i) {
        i += line[i] == '\\' ? 1 : 0;
        if (i >= line.size() || line[i] != ' ' || (i > 0 && line[i - 1] == '\\')) {
            end = i + 1;
        }
    }
    return line.left(end);
}

bool TakesBack(const QString& rule) {
    return rule.startsWith(QLatin1Char('!'));
}

PathPattern PatternOf(const QString& rule) {
    try {
        return PathPattern::Read(TakesBack(rule) ? rule.mid(1) : rule);
    } catch (const SyncException& e) {
        throw SyncException(QStringLiteral("\"%1\" is not a valid pattern: %2").arg(rule, e.Message()));
    }
}

}  // namespace

Exclusion::Exclusion(const QStringList& rules) : _rules(rules) {
    for (const QString& rule : rules) {
        _patterns.append({PatternOf(rule), !TakesBack(rule)});
    }
}

QStringList Exclusion::RulesIn(const QByteArray& file) {
    QStringList rules;
    int number = 0;
    const QByteArray text = file.startsWith(ByteOrderMark) ? file.mid(ByteOrderMark.size()) : file;
    for (QByteArray line : text.split('\n')) {
        ++number;
        if (line.endsWith('\r')) {
            line.chop(1);
        }
        line = WithoutTrailingSpaces(line);
        if (!line.isEmpty() && !line.startsWith('#')) {
            try {
                rules.append(RuleIn(line));
            } catch (const SyncException& e) {
                throw SyncException(QStringLiteral("line %1: %2").arg(QString::number(number), e.Message()));
            }
        }
    }
    return rules;
}

QString Exclusion::RuleIn(const QByteArray& text) {
    QTextCodec::ConverterState reading(QTextCodec::IgnoreHeader);
    QString rule = QTextCodec::codecForName("UTF-8")->toUnicode(text.constData(), text.size(), &reading);
    if (reading.invalidChars > 0 || reading.remainingChars > 0) {
        throw SyncException(
            QStringLiteral("\"%1\" is not a valid pattern: it is not UTF-8").arg(QString::fromUtf8(text)));
    }
    PatternOf(rule);
    return rule;
}

bool Exclusion::HasFileAt(const QString& path) const {
    return !_patterns.isEmpty() && (HasFile(path) || HasFolderAt(FolderOf(path)));
}

bool Exclusion::HasFolderAt(const QString& path) const {
    for (QString folder = path; !_patterns.isEmpty() && !folder.isEmpty(); folder = FolderOf(folder)) {
        if (HasFolder(folder)) {
            return true;
        }
    }
    return false;
}

bool Exclusion::_Has(const QString& path, bool isFolder) const {
    for (int i = _patterns.size() - 1; i >= 0; --i) {
        if (_patterns[i].pattern.Matches(path, isFolder)) {
            return _patterns[i].excludes;
        }
    }
    return false;
}

}  // namespace local
}  // namespace ovsync
