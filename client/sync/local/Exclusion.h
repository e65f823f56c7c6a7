#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include "client/sync/local/PathPattern.h"

namespace ovsync {
namespace local {

/// What of a tree is left alone, by the rules of .gitignore: each rule is a PathPattern, with a '!' before it where it
/// takes back what those before it exclude. The last rule that matches a path decides. What lies in an excluded folder
/// is excluded with it, whatever rule matches it. Paths are relative to the tree and have no '/' at either end. A plain
/// value; thread-safe.
class Exclusion {
public:
    /// Excludes nothing.
    Exclusion() = default;
    /// Throws SyncException, which names the rule, for one that no path can match.
    explicit Exclusion(const QStringList& rules);

    /// One rule, as somebody gave it. Throws SyncException, which names it and says why, when it is not UTF-8 or no
    /// path can match it.
    static QString RuleIn(const QByteArray& text);
    /// The rules in a file, a line each. Empty lines, those that begin with '#', and spaces at the end of a line that
    /// no '\' keeps, do not count. Throws SyncException, which names the line, too, where RuleIn does.
    static QStringList RulesIn(const QByteArray& file);

    /// Where the folders above are known not to be excluded.
    bool HasFolder(const QString& path) const { return _Has(path, true); }
    bool HasFile(const QString& path) const { return _Has(path, false); }

    /// By the path and all folders above it.
    bool HasFileAt(const QString& path) const;
    bool HasFolderAt(const QString& path) const;

    const QStringList& Rules() const { return _rules; }

    /// Differs where the rules do; empty where there are none.
    QString Text() const { return _rules.join(QLatin1Char('\n')); }

private:
    struct Rule {
        PathPattern pattern;
        bool excludes = true;
    };

    bool _Has(const QString& path, bool isFolder) const;

    QStringList _rules;
    QVector<Rule> _patterns;
};

}  // namespace local
}  // namespace ovsync
