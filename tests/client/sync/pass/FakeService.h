#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QMap>
#include <QString>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "client/library/ListedFiles.h"
#include "client/sync/pass/ServiceFolder.h"
#include "dvsync/DrovaneCustomFileConfigUpdater.h"
#include "tests/fakes/InstalledConfiguration.h"

namespace tests {

/// A service in memory, behind the interfaces that a pass works with, as the library and the HTTP side behave. The
/// folder to sync is "S". Content can be asked for by any thread.
class FakeService {
public:
    struct File {
        QByteArray content;
        int version = 1;
        int item = 0;
        QDateTime modified;
        int changed = 0;
    };

    FakeService();

    /// Makes the file, or gives it a new version; and the folders above it.
    void Put(const QString& path, const QByteArray& content);
    void Remove(const QString& path);
    /// Gives the file another content within the same second.
    void Overwrite(const QString& path, const QByteArray& content);
    /// Gives the file an earlier version back, as when the service is restored from a backup.
    void Restore(const QString& path, const QByteArray& content, int version);
    void AddFolder(const QString& path);
    /// With everything in it, as MOVE does, and with their ids.
    void Move(const QString& from, const QString& to);
    /// By path; "(none)" when there is no such file.
    QByteArray Content(const QString& path) const;
    std::map<QString, QByteArray> Contents() const;
    bool HasFolder(const QString& path) const;

    ovsync::pass::ServiceFolder Folder(const QString& localPath);

    /// Called before every request with its method and the path that it is for ("LIST", "FIND", "HEAD", "GET", "PUT",
    /// "SENT" between storing a file and the answer, "DELETE", "DELETED" after that, "MOVE", "MOVED", "MKCOL",
    /// "RMCOL", "LOCK", "UNLOCK", "RELEASE"), by the thread that makes it. May throw.
    std::function<void(const QString& method, const QString& path)> onRequest;
    /// How many requests there were of a method.
    int Count(const char* method) const;
    int CountAll() const;
    void ForgetCounts();

    /// How many were opened.
    std::atomic<int> connections{0};
    /// Knows neither versions nor checksums, as other WebDAV servers.
    bool isPlain = false;
    /// Answers an upload with the entity tag of what it stored.
    bool tellsStoredTags = false;
    /// Names strong entity tags in its listings, too.
    bool listsTags = false;
    /// Names no lengths where it is asked for one file.
    bool isWithoutLengths = false;
    /// Its entity tags are weak, as some servers' are within the second of the last change.
    bool areTagsWeak = false;
    /// Lets a client lock files.
    bool hasLocks = false;
    /// Nor does it take what a client has locked itself.
    bool refusesOwnLocks = false;
    /// Of those that are locked, by path, for whom.
    std::map<QString, QString> Locks() const;
    /// Somebody else locks the file.
    void LockForOther(const QString& path);
    void Unlock(const QString& path);

    /// Knows no conditions of an upload.
    bool ignoresConditions = false;
    /// What the announced lengths of contents are above the true ones.
    qint64 excessOfLengths = 0;
    /// What the dates beside contents are ahead of those of listings.
    int secondsAheadOfListings = 0;
    /// Names no strong entity tags.
    bool isWithoutTags = false;
    bool isWithoutDates = false;
    /// Tells neither beside contents, whatever it lists.
    bool isWithoutVersions = false;
    /// Names dates only where it is asked for one file's content.
    bool isListingNoDates = false;
    /// It has not computed any yet.
    bool isWithoutChecksums = false;
    /// Sends this in place of every file's content, if it is not null.
    QByteArray contentInstead;
    /// Sends the rest of a content of which a client has a part.
    bool knowsRanges = true;
    /// After so many bytes of a content the connection breaks, if that is not negative.
    qint64 breaksAfter = -1;
    /// How much of contents was sent.
    std::atomic<qint64> sentBytes{0};
    /// Announces no sizes of what it sends.
    bool isWithoutSizes = false;
    /// A folder that is missing has none that it could be made in.
    bool hasNoPlace = false;
    /// These collections are there and not listed, as what lies in a form is not.
    std::set<QString> unlisted;
    /// What files are listed with; their content says nothing of it.
    QMap<QString, ovsync::wire::FileAttributes> listedAttributes;
    /// These files and folders are there, and no listing has them.
    std::set<QString> forgotten;
    /// Tells what changed since it was asked before.
    bool tellsChanges = false;
    /// Tells all that lies right in each folder below which anything changed, as if it was found by tags of folders;
    /// else what changed alone.
    bool tellsWhole = false;
    /// What it says to that besides.
    std::function<void(ovsync::changes::ServiceChanges& changes)> onChanges;
    /// There is no folder to sync.
    bool isMissing = false;
    /// By how much the service's clock is wrong.
    int secondsAhead = 0;
    /// These are listed besides.
    QVector<sync::config::FolderConfiguration> extraFolders;
    QVector<sync::config::FileConfiguration> extraFiles;

private:
    class ChangeSource;
    class FolderManager;
    class FileManager;
    class FileManagerFactory;
    class Session;

    bool _IsEmpty(const QString& path) const;
    /// Something changed in the folder.
    void _Touch(const QString& folder);
    sync::config::FolderConfiguration _DescribeFolder(const QString& path) const;
    ovsync::changes::ServiceChanges _ChangesSince(int sequence) const;
    /// Of all folders below which anything changed.
    ovsync::changes::ServiceChanges _FoldersSince(int sequence) const;
    void _Meet(const char* method, const QString& path);
    sync::config::FileConfiguration _Describe(const QString& path, const File& file) const;
    QByteArray _Tag(const File& file) const;

    InstalledConfiguration _installed;
    mutable std::mutex _mutex;
    std::map<QString, File> _files;
    std::set<QString> _folders;
    std::map<QString, QString> _folderIds;
    std::map<QString, int> _counts;
    std::map<QString, QString> _locks;
    int _items = 0;
    /// Counts the changes, and tells of each folder which was the last in it, and of what is gone when it went.
    int _sequence = 0;
    std::map<QString, int> _folderChanges;
    std::map<QString, int> _gone;
    QDateTime _now = QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC);
    QDateTime _changed;
    std::shared_ptr<FolderManager> _folderManager;
    std::shared_ptr<ovsync::library::ListedFiles> _fileManager;
    std::shared_ptr<sync::interf::ICustomFileConfigUpdater> _updater;
};

}  // namespace tests
