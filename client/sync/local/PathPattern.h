#pragma once

#include <QRegularExpression>
#include <QString>

namespace ovsync {
namespace local {

/// One pattern of paths, by the rules of .gitignore. A plain value; thread-safe.
///
/// Without a '/', or with one at its end only, it is matched against the last name of a path, otherwise against the
/// whole path. A '/' at the end restricts it to folders, one at the beginning is only there to make it a pattern of
/// whole paths.
/// '*' stands for any characters but '/', '?' for one, [...] for one of several and [!...] for one of all others; "**/"
/// stands for any number of folders, none included, "/**" at the end for everything below. '\' makes the next character
/// an ordinary one. Letter case matters.
class PathPattern {
public:
    /// Throws SyncException, which says why, when no path can be like that: for an empty text,
    /// brackets that do not end or have a '/' alone, a class of characters that does not exist, a '\' at the end, two
    /// '/' next to each other, and the names "." and "..".
    static PathPattern Read(const QString& text);

    /// `path` has no '/' at either end.
    bool Matches(const QString& path, bool isFolder) const;

private:
    QRegularExpression _expression;
    bool _isOfName = false;
    bool _isOfFolders = false;
};

}  // namespace local
}  // namespace ovsync
