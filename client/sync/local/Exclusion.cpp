#include "client/sync/local/Exclusion.h"

#include "client/sync/local/PathNames.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace local {

using sync::core::SyncException;

namespace {

/// Without the spaces at its end, but for one that a '\' stands before.
QString WithoutTrailingSpaces(const QString& line) {
    int end = 0;
    for (int i = 0; i < line.size(); ++i) {
        i += line[i] == QLatin1Char('\\') ? 1 : 0;
        if (i >= line.size() || line[i] != QLatin1Char(' ') || (i > 0 && line[i - 1] == QLatin1Char('\\'))) {
            end = i + 1;
        }
    }
    return line.left(end);
}

}  // namespace

Exclusion::Exclusion(const QStringList& rules) : _rules(rules) {
    for (const QString& rule : rules) {
        const bool excludes = !rule.startsWith(QLatin1Char('!'));
        const std::optional<PathPattern> pattern = PathPattern::Read(excludes ? rule : rule.mid(1));
        if (!pattern) {
            throw SyncException(QStringLiteral("\"%1\" is not a valid pattern: no path can match it").arg(rule));
        }
        _patterns.append({*pattern, excludes});
    }
}

QStringList Exclusion::RulesIn(const QByteArray& file) {
    QStringList rules;
    QString text = QString::fromUtf8(file);
    if (text.startsWith(QChar::ByteOrderMark)) {
        text.remove(0, 1);
    }
    int number = 0;
    for (QString line : text.split(QLatin1Char('\n'))) {
        ++number;
        if (line.endsWith(QLatin1Char('\r'))) {
            line.chop(1);
        }
        line = WithoutTrailingSpaces(line);
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#'))) {
            try {
                Exclusion(QStringList(line));
            } catch (const SyncException& e) {
                throw SyncException(QStringLiteral("line %1: %2").arg(QString::number(number), e.Message()));
            }
            rules.append(line);
        }
    }
    return rules;
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
