#include "client/folders/FoldersText.h"

#include <toml++/toml.h>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <string>

#include "client/cli/input/UsageError.h"
#include "client/sync/local/Exclusion.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace folders {

using input::UsageError;

namespace {

const char FolderKey[] = "folder";
const char PathKey[] = "path";
const char UrlKey[] = "url";
const char UserKey[] = "user";
const char ExcludeKey[] = "exclude";
const char MaxDeleteKey[] = "max-delete";
const char KeepDeletedKey[] = "keep-deleted";
const char TransfersKey[] = "transfers";
const char CaFileKey[] = "ca-file";
const char PausedKey[] = "paused";

const int MostDaysKeptOfFolder = 36500;
const int MostTransfers = 64;

int LineOf(const toml::node& node) {
    return static_cast<int>(node.source().begin.line);
}

QString TextOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/// `path`, which is absolute or empty, as far as it is there.
QString WithoutLinks(const QString& path) {
    const QFileInfo place(path);
    const QString real = place.canonicalFilePath();
    const bool isEnd = path.isEmpty() || place.path() == path;
    return isEnd || !real.isEmpty() ? real : QDir(WithoutLinks(place.path())).filePath(place.fileName());
}

/// For people.
QString Named(const SyncedFolder& folder) {
    const QString real = RealDirectory(folder);
    return folder.directory == real ? real : QStringLiteral("%1 (which is %2)").arg(folder.directory, real);
}

/// Reads one table, and adds what is wrong with it to the mistakes.
class FolderReader {
public:
    FolderReader(const toml::table& table, const QString& home, QStringList& mistakes)
        : _table(table), _home(home), _mistakes(mistakes) {}

    SyncedFolder Read() {
        SyncedFolder folder;
        const std::map<std::string_view, std::function<void(const toml::node&)>> readers{
            {PathKey, [&](const toml::node& node) { _ReadPath(node, folder); }},
            {UrlKey, [&](const toml::node& node) { _ReadUrl(node, folder); }},
            {UserKey, [&](const toml::node& node) { folder.user = _Text(UserKey, node); }},
            {ExcludeKey, [&](const toml::node& node) { _ReadExcluded(node, folder); }},
            {MaxDeleteKey, [&](const toml::node& node) { _ReadLimit(node, folder); }},
            {KeepDeletedKey,
             [&](const toml::node& node) { folder.daysKept = _Number(KeepDeletedKey, node, 0, MostDaysKeptOfFolder); }},
            {TransfersKey,
             [&](const toml::node& node) { folder.transfers = _Number(TransfersKey, node, 1, MostTransfers); }},
            {CaFileKey, [&](const toml::node& node) { folder.caFile = _Path(CaFileKey, node); }},
            {PausedKey, [&](const toml::node& node) { _ReadPause(node, folder); }},
        };
        for (const auto& [key, node] : _table) {
            const auto reader = readers.find(key.str());
            if (reader == readers.end()) {
                _Complain(static_cast<int>(key.source().begin.line),
                          QStringLiteral("a folder has no \"%1\"").arg(TextOf(key.str())));
            } else {
                reader->second(node);
            }
        }
        for (const char* key : {PathKey, UrlKey}) {
            if (!_table.contains(key)) {
                _Complain(LineOf(_table), QStringLiteral("the folder has no \"%1\"").arg(QLatin1String(key)));
            }
        }
        if (folder.user.isEmpty()) {
            folder.user = folder.location.user;
        } else if (!folder.location.user.isEmpty() && folder.location.user != folder.user) {
            _Complain(LineOf(_table), QStringLiteral("the URL names another user than \"user\" does"));
        }
        return folder;
    }

private:
    void _Complain(int line, const QString& mistake) {
        _mistakes.append(QStringLiteral("line %1: %2").arg(QString::number(line), mistake));
    }

    QString _Text(const char* key, const toml::node& node) {
        const auto text = node.value_exact<std::string>();
        if (!text || text->empty()) {
            _Complain(
                LineOf(node),
                QStringLiteral("\"%1\" has to be a text in quotes, and not an empty one").arg(QLatin1String(key)));
            return QString();
        }
        return TextOf(*text);
    }

    QString _Path(const char* key, const toml::node& node) {
        QString path = _Text(key, node);
        if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/"))) {
            path.replace(0, 1, _home);
        }
        if (!path.isEmpty() && !QDir::isAbsolutePath(path)) {
            _Complain(LineOf(node), QStringLiteral("\"%1\" has to begin with \"/\" or \"~/\"").arg(QLatin1String(key)));
            return QString();
        }
        return path.isEmpty() ? path : QDir::cleanPath(path);
    }

    int _Number(const char* key, const toml::node& node, int least, int most) {
        const auto number = node.value_exact<int64_t>();
        if (!number || *number < least || *number > most) {
            _Complain(LineOf(node), QStringLiteral("\"%1\" has to be a number from %2 to %3")
                                        .arg(QLatin1String(key), QString::number(least), QString::number(most)));
            return least;
        }
        return static_cast<int>(*number);
    }

    void _ReadPath(const toml::node& node, SyncedFolder& folder) {
        const QString directory = _Path(PathKey, node);
        const QString reason = local::ReasonAgainstRoot(WithoutLinks(directory));
        if (reason.isEmpty()) {
            folder.directory = directory;
        } else {
            _Complain(LineOf(node), QStringLiteral("the folder cannot be synced: ") + reason);
        }
    }

    void _ReadUrl(const toml::node& node, SyncedFolder& folder) {
        const QString url = _Text(UrlKey, node);
        if (QUrl(url).password().isEmpty()) {
            folder.url = url;
        } else {
            _Complain(LineOf(node), QStringLiteral("there is a password in the URL, where others can read it. Take it "
                                                   "out, and use \"ovsync login\""));
            return;
        }
        try {
            folder.location = url.isEmpty() ? input::Location() : input::Location::FromUrl(url);
        } catch (const UsageError& e) {
            _Complain(LineOf(node), e.Message());
        }
    }

    void _ReadExcluded(const toml::node& node, SyncedFolder& folder) {
        const toml::array* const patterns = node.as_array();
        if (patterns == nullptr) {
            _Complain(LineOf(node), QStringLiteral("\"exclude\" has to be a list, as [\"*.tmp\", \"cache\"]"));
            return;
        }
        for (const toml::node& pattern : *patterns) {
            const QString rule = _Text(ExcludeKey, pattern);
            if (rule.isEmpty()) {
                continue;
            }
            try {
                folder.rules.append(local::Exclusion::RuleIn(rule.toUtf8()));
            } catch (const sync::core::SyncException& e) {
                _Complain(LineOf(pattern), e.Message());
            }
        }
    }

    void _ReadLimit(const toml::node& node, SyncedFolder& folder) {
        folder.deletionLimitText = _Text(MaxDeleteKey, node);
        const auto limit = pass::DeletionLimit::Read(folder.deletionLimitText);
        if (limit) {
            folder.deletionLimit = *limit;
        } else if (!folder.deletionLimitText.isEmpty()) {
            _Complain(LineOf(node), QStringLiteral("\"max-delete\" has to be a number of files from 0 to %1, as "
                                                   "\"12\", or a part of them from 0% to 100%, as \"30%\"")
                                        .arg(pass::DeletionLimit::MostFiles));
        }
    }

    void _ReadPause(const toml::node& node, SyncedFolder& folder) {
        const auto isPaused = node.value_exact<bool>();
        if (!isPaused) {
            _Complain(LineOf(node), QStringLiteral("\"paused\" has to be true or false"));
        }
        folder.isPaused = isPaused.value_or(false);
    }

    const toml::table& _table;
    const QString& _home;
    QStringList& _mistakes;
};

toml::table Parsed(const QByteArray& text) {
    return toml::parse(std::string_view(text.constData(), static_cast<size_t>(text.size())));
}

/// By line: toml++ keeps the keys of a table by name.
void SortMistakes(QStringList& mistakes) {
    const auto line = [](const QString& mistake) {
        return mistake.midRef(5, mistake.indexOf(QLatin1Char(':')) - 5).toInt();
    };
    std::stable_sort(mistakes.begin(), mistakes.end(),
                     [&line](const QString& a, const QString& b) { return line(a) < line(b); });
}

int LastLineOf(const toml::node& node) {
    auto last = static_cast<int>(std::max(node.source().begin.line, node.source().end.line));
    if (const toml::table* const table = node.as_table()) {
        for (const auto& [key, value] : *table) {
            last = std::max(last, LastLineOf(value));
        }
    }
    return last;
}

/// The lines of a folder's block, from 0 on. None when it has no lines of its own.
struct Block {
    int first = -1;
    int last = -1;
    /// Of "paused"; -1 when there is none.
    int paused = -1;
};

Block BlockOf(const QByteArray& text, int index) {
    const toml::table root = Parsed(text);
    const toml::table* const table = (*root[FolderKey].as_array())[static_cast<size_t>(index)].as_table();
    Block block;
    if (!table->is_inline()) {
        block.first = LineOf(*table) - 1;
        block.last = LastLineOf(*table) - 1;
        if (const toml::node* const paused = table->get(PausedKey)) {
            block.paused = LineOf(*paused) - 1;
        }
    }
    return block;
}

QByteArray LineEndOf(const QByteArray& text) {
    return text.contains("\r\n") ? "\r\n" : "\n";
}

bool IsEmptyLine(const QByteArray& line) {
    return line.trimmed().isEmpty();
}

/// As TOML writes it.
QByteArray Quoted(const QString& text) {
    std::ostringstream quoted;
    quoted << toml::value<std::string>(text.toStdString());
    return QByteArray::fromStdString(quoted.str());
}

/// The path of `inner` in `outer`; empty where it does not lie there.
QString PathInside(const QString& outer, const QString& inner) {
    const QString above = outer.endsWith(QLatin1Char('/')) ? outer : outer + QLatin1Char('/');
    return !outer.isEmpty() && inner.startsWith(above) ? inner.mid(above.size()) : QString();
}

}  // namespace

QString RealDirectory(const SyncedFolder& folder) {
    return WithoutLinks(folder.directory);
}

QString ReasonAgainstBoth(const SyncedFolder& one, const SyncedFolder& other) {
    const bool isOneInside = RealDirectory(one).size() > RealDirectory(other).size();
    const SyncedFolder& outer = isOneInside ? other : one;
    const SyncedFolder& inner = isOneInside ? one : other;
    const QString path = PathInside(RealDirectory(outer), RealDirectory(inner));
    return path.isEmpty() || local::Exclusion(outer.rules).HasFolderAt(path)
               ? QString()
               : QStringLiteral("%1 lies in %2. To keep both in step, exclude \"/%3\" from %2")
                     .arg(Named(inner), Named(outer), path);
}

FoldersReading ReadFolders(const QByteArray& text, const QString& home) {
    FoldersReading reading;
    reading.text = text;
    try {
        const toml::table root = Parsed(text);
        for (const auto& [key, node] : root) {
            if (key.str() != FolderKey) {
                reading.mistakes.append(QStringLiteral("line %1: there is no \"%2\" here; folders stand in [[folder]]")
                                            .arg(QString::number(key.source().begin.line), TextOf(key.str())));
                continue;
            }
            const toml::array* const tables = node.as_array();
            if (tables == nullptr || !tables->is_homogeneous<toml::table>()) {
                reading.mistakes.append(QStringLiteral("line %1: a folder begins with [[folder]]").arg(LineOf(node)));
                continue;
            }
            QSet<QString> known;
            for (const toml::node& table : *tables) {
                const SyncedFolder folder = FolderReader(*table.as_table(), home, reading.mistakes).Read();
                if (!folder.directory.isEmpty() && known.contains(RealDirectory(folder))) {
                    reading.mistakes.append(QStringLiteral("line %1: %2 stands above already")
                                                .arg(QString::number(LineOf(table)), Named(folder)));
                }
                known.insert(RealDirectory(folder));
                for (const SyncedFolder& above : qAsConst(reading.folders)) {
                    const QString reason = ReasonAgainstBoth(above, folder);
                    if (!reason.isEmpty()) {
                        reading.mistakes.append(
                            QStringLiteral("line %1: %2").arg(QString::number(LineOf(table)), reason));
                    }
                }
                reading.folders.append(folder);
            }
        }
    } catch (const toml::parse_error& e) {
        reading.mistakes.append(
            QStringLiteral("line %1: %2").arg(QString::number(e.source().begin.line), TextOf(e.description())));
    }
    SortMistakes(reading.mistakes);
    return reading;
}

QByteArray WithFolder(const QByteArray& text, const SyncedFolder& folder) {
    const QByteArray lineEnd = LineEndOf(text);
    QByteArray block;
    const auto add = [&](const char* key, const QByteArray& value) {
        block += QByteArray(key) + " = " + value + lineEnd;
    };
    if (!text.isEmpty()) {
        block += (text.endsWith('\n') ? QByteArray() : lineEnd) + lineEnd;
    }
    block += "[[folder]]" + lineEnd;
    add(PathKey, Quoted(folder.directory));
    add(UrlKey, Quoted(folder.url));
    if (!folder.user.isEmpty() && folder.user != folder.location.user) {
        add(UserKey, Quoted(folder.user));
    }
    if (!folder.rules.isEmpty()) {
        QByteArray patterns;
        for (const QString& rule : folder.rules) {
            patterns += (patterns.isEmpty() ? "" : ", ") + Quoted(rule);
        }
        add(ExcludeKey, '[' + patterns + ']');
    }
    if (!folder.deletionLimitText.isEmpty()) {
        add(MaxDeleteKey, Quoted(folder.deletionLimitText));
    }
    if (folder.daysKept != SyncedFolder().daysKept) {
        add(KeepDeletedKey, QByteArray::number(folder.daysKept));
    }
    if (folder.transfers != SyncedFolder().transfers) {
        add(TransfersKey, QByteArray::number(folder.transfers));
    }
    if (!folder.caFile.isEmpty()) {
        add(CaFileKey, Quoted(folder.caFile));
    }
    return text + block;
}

QByteArray WithoutFolder(const QByteArray& text, int index) {
    const Block block = BlockOf(text, index);
    if (block.first < 0) {
        return QByteArray();
    }
    QList<QByteArray> lines = text.split('\n');
    lines.erase(lines.begin() + block.first, lines.begin() + block.last + 1);
    // The empty line that stood before the block, or after it, goes with it.
    const bool isBlankBefore = block.first == 0 || IsEmptyLine(lines.at(block.first - 1));
    if (isBlankBefore && block.first < lines.size() && IsEmptyLine(lines.at(block.first)) && lines.size() > 1) {
        lines.removeAt(block.first > 0 ? block.first - 1 : 0);
    }
    const QByteArray left = lines.join('\n');
    // Empty is the answer where nothing can be done.
    return left.isEmpty() ? LineEndOf(text) : left;
}

QByteArray WithPause(const QByteArray& text, int index, bool isPaused) {
    const Block block = BlockOf(text, index);
    if (block.first < 0) {
        return QByteArray();
    }
    QList<QByteArray> lines = text.split('\n');
    if (block.paused < 0) {
        const QByteArray line = QByteArray("paused = ") + (isPaused ? "true" : "false");
        // What comes after the last line decides whether that one ends in a line feed.
        lines.insert(block.last + 1, text.contains("\r\n") ? line + '\r' : line);
        return lines.join('\n');
    }
    QString line = QString::fromUtf8(lines.at(block.paused));
    static const QRegularExpression value(QStringLiteral("(=\\s*)(true|false)"));
    line.replace(value.match(line).capturedStart(2), value.match(line).capturedLength(2),
                 isPaused ? QStringLiteral("true") : QStringLiteral("false"));
    lines[block.paused] = line.toUtf8();
    return lines.join('\n');
}

}  // namespace folders
}  // namespace ovsync
