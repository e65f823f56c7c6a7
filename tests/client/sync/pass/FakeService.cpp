#include "tests/client/sync/pass/FakeService.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <algorithm>
#include <numeric>

#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/report/FolderMissing.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/fakes/Text.h"

namespace tests {

using ovsync::changes::ServiceChanges;
using ovsync::content::ContentSink;
using ovsync::content::ContentVersion;
using ovsync::content::LockOutcome;
using ovsync::content::UploadAnswer;
using ovsync::content::UploadCondition;
using ovsync::content::UploadOutcome;
using ovsync::local::FolderOf;
using ovsync::local::NameOf;
using ovsync::pass::ListedSize;
using ovsync::wire::IContentSource;
using ovsync::wire::TransactionError;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::http::HttpException;
using Guard = std::lock_guard<std::mutex>;

namespace {

const char Root[] = "S/";

QString PathOf(const QString& serverPath) {
    return serverPath.mid(2);
}

/// Whether the path lies right in the folder.
bool IsIn(const FolderConfiguration& folder, const QString& path) {
    return FolderOf(path) == PathOf(folder.serverPath);
}

QString PathOf(const QUrl& url) {
    return PathOf(url.path(QUrl::FullyDecoded).mid(1));
}

}  // namespace

class FakeService::FolderManager : public sync::interf::IRemoteFolderManager {
public:
    explicit FolderManager(FakeService& service) : _service(service) {}

    sync::core::SyncResults CreateFolder(FolderConfiguration& folder, QString, bool) override {
        _service._Meet("MKCOL", PathOf(folder.serverPath));
        const Guard lock(_service._mutex);
        if (PathOf(folder.serverPath).isEmpty()) {
            _service.isMissing = false;
        } else {
            const QString path = PathOf(folder.serverPath);
            _service._folders.insert(path);
            _service._folderIds[path] = Text("folder %1").arg(++_service._items);
            _service._folderChanges[path] = _service._sequence + 1;
            _service._Touch(FolderOf(path));
            folder.setServerFolderId(_service.isPlain ? QString() : _service._folderIds[path]);
        }
        return {sync::core::SyncResults::ResultType(0), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    }
    sync::core::SyncResults DeleteFolder(FolderConfiguration& folder) override {
        EXPECT_EQ(folder.getServerFolderId(), Text("id of ") + folder.serverPath);
        _service._Meet("RMCOL", PathOf(folder.serverPath));
        _service.Remove(PathOf(folder.serverPath));
        return {sync::core::SyncResults::ResultType(2), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    }
    sync::core::SyncResults MoveFolder(const FolderConfiguration& from, const FolderConfiguration& to) override {
        _service.Move(PathOf(from.serverPath), PathOf(to.serverPath));
        return {sync::core::SyncResults::ResultType(3), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    }
    bool FolderExists(const FolderConfiguration& folder) override {
        const Guard lock(_service._mutex);
        return _service._folders.count(PathOf(folder.serverPath)) != 0 ||
               _service.unlisted.count(PathOf(folder.serverPath)) != 0;
    }
    bool FileExists(const FileConfiguration&) override { throw std::logic_error("not used"); }
    bool GetFolderProperties(const FolderConfiguration& folder, FolderConfiguration& result) override {
        if (!_service.HasFolder(PathOf(folder.serverPath))) {
            return false;
        }
        result = folder;
        result.setServerFolderId(Text("id of ") + folder.serverPath);
        return true;
    }
    std::shared_ptr<QVector<FolderConfiguration>> GetNameSortedDirsByFolder(FolderConfiguration& folder) override {
        _service._Meet("LIST", PathOf(folder.serverPath));
        const Guard lock(_service._mutex);
        auto folders = std::make_shared<QVector<FolderConfiguration>>();
        for (const QString& path : _service._folders) {
            if (Text(Root) + path != folder.serverPath && IsIn(folder, path)) {
                folders->append(FolderConfiguration());
            }
        }
        return folders;
    }
    int GetAllFilesAndSubFoldersByFolder(FolderConfiguration& folder,
                                         std::shared_ptr<QVector<FolderConfiguration>>& folders,
                                         std::shared_ptr<QVector<FileConfiguration>>& files) override {
        _service._Meet("LIST", QString());
        const Guard lock(_service._mutex);
        if (_service.isMissing) {
            return 404;
        }
        _service._now = _service._now.addSecs(10);
        folder.setLastServerSyncRequestTime(_service._now.addSecs(_service.secondsAhead));
        if (folder.getLastSyncTime().isValid() && _service._changed < folder.getLastSyncTime()) {
            return 304;
        }
        folders = std::make_shared<QVector<FolderConfiguration>>();
        for (const QString& path : _service._folders) {
            if (_service.forgotten.count(path) != 0) {
                continue;
            }
            folders->append(_service._DescribeFolder(path));
        }
        *folders += _service.extraFolders;
        files = std::make_shared<QVector<FileConfiguration>>();
        for (const auto& file : _service._files) {
            if (_service.forgotten.count(file.first) == 0) {
                files->append(_service._Describe(file.first, file.second));
            }
        }
        *files += _service.extraFiles;
        return 0;
    }
    int GetFolderSize(const QString&, int, bool, int&, qint64&, std::shared_ptr<sync::interf::ISyncFilter>,
                      std::shared_ptr<sync::interf::ISyncFilter>) override {
        throw std::logic_error("not used");
    }
    int GetFolderSize(const QString&, int, bool, int&, qint64&, QList<QString>&,
                      std::shared_ptr<sync::interf::ISyncFilter>, std::shared_ptr<sync::interf::ISyncFilter>) override {
        throw std::logic_error("not used");
    }

private:
    FakeService& _service;
};

class FakeService::FileManager : public sync::interf::IRemoteFileManager {
public:
    explicit FileManager(FakeService& service) : _service(service) {}

    int GetNameSortedFilesByFolder(FolderConfiguration& folder,
                                   std::shared_ptr<QVector<FileConfiguration>>& files) override {
        _service._Meet("LIST", PathOf(folder.serverPath));
        const Guard lock(_service._mutex);
        files = std::make_shared<QVector<FileConfiguration>>();
        for (const auto& file : _service._files) {
            if (IsIn(folder, file.first)) {
                files->append(_service._Describe(file.first, file.second));
            }
        }
        return 0;
    }
    bool ShouldDownloadFile(const FileConfiguration& remote, FileConfiguration& local) override {
        const QString remoteVersion = remote.customProperties.value(Text("version"));
        const QString localVersion = local.customProperties.value(Text("version"));
        return remoteVersion.isEmpty() || localVersion.isEmpty() || remoteVersion.toInt() > localVersion.toInt() ||
               remote.size != local.size;
    }
    const FileConfiguration GetFileByName(const FolderConfiguration& folder,  // NOLINT(readability-const-return-type)
                                          const QString& name) override {
        const QString path = PathOf(folder.serverPath + Text("/") + name);
        _service._Meet("FIND", path);
        const Guard lock(_service._mutex);
        const auto file = _service._files.find(path);
        if (_service._folders.count(path) != 0) {
            return FileConfiguration();
        }
        if (file == _service._files.end()) {
            throw HttpException(Text("no such file"), 404, QUrl());
        }
        return _service._Describe(path, file->second);
    }

private:
    FakeService& _service;
};

class FakeService::FileManagerFactory : public sync::interf::factory::IRemoteFileManagerFactory {
public:
    explicit FileManagerFactory(std::shared_ptr<sync::interf::IRemoteFileManager> manager)
        : _manager(std::move(manager)) {}
    std::shared_ptr<sync::interf::IRemoteFileManager> CreateRemoteFileManager(int) override { return _manager; }

private:
    const std::shared_ptr<sync::interf::IRemoteFileManager> _manager;
};

class FakeService::Session : public ovsync::content::IContentConnection {
public:
    explicit Session(FakeService& service) : _service(service) {}

    std::optional<ContentVersion> Look(const QUrl& url) override {
        _Begin("HEAD", url);
        const Guard lock(_service._mutex);
        const auto file = _service._files.find(PathOf(url));
        return file == _service._files.end() ? std::optional<ContentVersion>() : _VersionOf(file->second);
    }

    ContentVersion Download(const QUrl& url, ContentSink& sink) override {
        _Begin("GET", url);
        File file;
        {
            const Guard lock(_service._mutex);
            const auto found = _service._files.find(PathOf(url));
            if (found == _service._files.end()) {
                throw HttpException(Text("no such file"), 404, url);
            }
            file = found->second;
        }
        const QByteArray content = _service.contentInstead.isNull() ? file.content : _service.contentInstead;
        ContentVersion version = _VersionOf(file);
        const ovsync::content::ContentPart part = sink.Received();
        const bool isRest = _service.knowsRanges && part.size > 0 && part.entityTag == version.entityTag;
        sink.TakeVersion(version);
        if (isRest) {
            sink.GoOn();
        } else {
            sink.Restart(-1);
            sink.Write("wrong", 5);
            sink.Restart(_service.isWithoutSizes ? -1 : content.size());
        }
        const int pieceSize = content.size() > 1000000 ? 100000 : 1000;
        for (int at = isRest ? static_cast<int>(part.size) : 0; at < content.size(); at += pieceSize) {
            if (_service.breaksAfter >= 0 && at >= _service.breaksAfter) {
                throw TransactionError("GET", url, Text("reset"), {});
            }
            const int size = qMin(pieceSize, content.size() - at);
            sink.Write(content.constData() + at, static_cast<size_t>(size));
            _service.sentBytes += size;
        }
        return version;
    }

    UploadAnswer Upload(const QUrl& url, IContentSource& source, qint64 size, UploadCondition condition,
                        const ContentVersion& known) override {
        const QString path = PathOf(url);
        _Begin("PUT", url);
        QByteArray content(static_cast<int>(size) + 10, '\0');
        source.Restart();
        source.Read(content.data(), 3);
        source.Restart();
        content.resize(static_cast<int>(source.Read(content.data(), static_cast<size_t>(content.size()))));
        if (content.size() != size) {
            char more = 0;
            source.Read(&more, 1);
            throw TransactionError("PUT", url, Text("the content has another size"), {});
        }
        {
            const Guard lock(_service._mutex);
            if (_service._locks.count(path) != 0 && (_locked != path || _service.refusesOwnLocks)) {
                throw HttpException(Text("locked"), 423, url);
            }
            const auto there = _service._files.find(path);
            const bool isThere = there != _service._files.end();
            const bool isOther =
                condition == UploadCondition::New ? isThere : !isThere || !_IsKnown(there->second, known);
            if (condition != UploadCondition::Any && isOther && !_service.ignoresConditions) {
                return {};
            }
        }
        _service.Put(path, content);
        UploadAnswer answer;
        answer.outcome = UploadOutcome::Stored;
        {
            const Guard lock(_service._mutex);
            const File& stored = _service._files.at(path);
            answer.entityTag = _service.tellsStoredTags ? _service._Tag(stored) : QByteArray();
            answer.date = stored.modified;
        }
        _service._Meet("SENT", path);
        return answer;
    }

    bool Remove(const QUrl& url, const ContentVersion& known) override {
        _Begin("DELETE", url);
        {
            const Guard lock(_service._mutex);
            const auto file = _service._files.find(PathOf(url));
            if (file != _service._files.end() && !_service.ignoresConditions && !_IsKnown(file->second, known)) {
                return false;
            }
        }
        _service.Remove(PathOf(url));
        _service._Meet("DELETED", PathOf(url));
        return true;
    }

    LockOutcome Lock(const QUrl& url, const QByteArray& /*entityTag*/, const QString& owner,
                     std::chrono::seconds /*longest*/) override {
        if (!_service.hasLocks || _doesWithoutLocks) {
            return LockOutcome::NotLocked;
        }
        _Begin("LOCK", url);
        const Guard guard(_service._mutex);
        const QString path = PathOf(url);
        if (_service._files.count(path) == 0) {
            return LockOutcome::Gone;
        }
        if (!_service._locks.emplace(path, owner).second) {
            throw HttpException(Text("locked"), 423, url);
        }
        _locked = path;
        return LockOutcome::Locked;
    }

    void DoWithoutLocks() override { _doesWithoutLocks = true; }

    bool Unlock() noexcept override {
        const QString path = std::exchange(_locked, QString());
        try {
            if (!path.isEmpty()) {
                _service._Meet("UNLOCK", path);
                _service.Unlock(path);
            }
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }

    void Release(const QUrl& folder, const QString& owner) override {
        _Begin("RELEASE", folder);
        const Guard lock(_service._mutex);
        for (auto held = _service._locks.begin(); held != _service._locks.end();) {
            const bool isMeant = held->second == owner && FolderOf(held->first) == PathOf(folder);
            held = isMeant ? _service._locks.erase(held) : std::next(held);
        }
    }

    void Cancel() override { _isCancelled = true; }

private:
    void _Begin(const char* method, const QUrl& url) {
        _service._Meet(method, PathOf(url));
        if (_isCancelled) {
            throw TransactionError(method, url, Text("cancelled"), {});
        }
    }

    bool _IsKnown(const File& file, const ContentVersion& known) const {
        return known.entityTag.isEmpty() ? file.modified <= known.lastModified : _service._Tag(file) == known.entityTag;
    }

    ContentVersion _VersionOf(const File& file) {
        ContentVersion version;
        const bool isBare = _service.isWithoutVersions;
        const QByteArray tag = isBare || _service.isWithoutTags ? QByteArray() : _service._Tag(file);
        (_service.areTagsWeak ? version.weakTag : version.entityTag) = (_service.areTagsWeak ? "W/" : "") + tag;
        version.size = _service.isWithoutLengths ? -1 : file.content.size() + _service.excessOfLengths;
        version.lastModified =
            isBare || _service.isWithoutDates ? QDateTime() : file.modified.addSecs(_service.secondsAheadOfListings);
        return version;
    }

    FakeService& _service;
    std::atomic<bool> _isCancelled{false};
    QString _locked;
    bool _doesWithoutLocks = false;
};

class FakeService::ChangeSource : public ovsync::changes::IChangeSource {
public:
    explicit ChangeSource(FakeService& service) : _service(service) {}

    std::optional<QString> StateNow() override {
        _service._Meet("TOKEN", QString());
        const Guard lock(_service._mutex);
        return _service.tellsChanges ? Text("unlisted state %1").arg(_service._sequence) : QString();
    }
    QString Listed(const QString& state) override { return QString(state).remove(Text("unlisted ")); }
    void Ask(const QString& state) override { _state = state; }
    ServiceChanges Take() override {
        _service._Meet("REPORT", QString());
        ServiceChanges changes;
        {
            const Guard lock(_service._mutex);
            const bool isKnown =
                !_service.isMissing && _state.startsWith(Text("state ")) && _state.mid(6).toInt() <= _service._sequence;
            if (isKnown) {
                const int since = _state.mid(6).toInt();
                changes = _service.tellsWhole ? _service._FoldersSince(since) : _service._ChangesSince(since);
            }
            changes.answer = isKnown ? ServiceChanges::Answer::Known : ServiceChanges::Answer::Forgotten;
            changes.state = Text("state %1").arg(_service._sequence);
            _service._now = _service._now.addSecs(10);
            changes.at = _service._now;
        }
        if (_service.onChanges) {
            _service.onChanges(changes);
        }
        return changes;
    }
    ServiceChanges LookAt(const QStringList& serverPaths) override {
        ServiceChanges changes;
        changes.answer = ServiceChanges::Answer::Known;
        for (const QString& serverPath : serverPaths) {
            const QString path = PathOf(serverPath);
            _service._Meet("LOOK", path);
            const Guard lock(_service._mutex);
            const auto file = _service._files.find(path);
            if (file != _service._files.end()) {
                changes.files.append(_service._Describe(path, file->second));
            } else if (_service._folders.count(path) != 0) {
                changes.folders.append(_service._DescribeFolder(path));
            } else {
                changes.gone.append(serverPath);
            }
        }
        return changes;
    }

private:
    FakeService& _service;
    QString _state;
};

FakeService::FakeService()
    : _folderManager(std::make_shared<FolderManager>(*this)),
      _fileManager(std::make_shared<ovsync::library::ListedFiles>(std::make_shared<FileManager>(*this))),
      _updater(std::make_shared<sync::dv::dvsync::DrovaneCustomFileConfigUpdater>(
          std::make_shared<FileManagerFactory>(_fileManager))) {}

void FakeService::Put(const QString& path, const QByteArray& content) {
    AddFolder(FolderOf(path));
    const Guard lock(_mutex);
    File& file = _files[path];
    file.version = file.item == 0 ? 1 : file.version + 1;
    file.item = file.item == 0 ? ++_items : file.item;
    file.content = content;
    _now = _now.addSecs(1);
    _changed = file.modified = _now;
    _Touch(FolderOf(path));
    file.changed = _sequence;
}

std::map<QString, QString> FakeService::Locks() const {
    const Guard lock(_mutex);
    return _locks;
}

void FakeService::LockForOther(const QString& path) {
    const Guard lock(_mutex);
    _locks.emplace(path, Text("somebody else"));
}

void FakeService::Unlock(const QString& path) {
    const Guard lock(_mutex);
    _locks.erase(path);
}

void FakeService::Overwrite(const QString& path, const QByteArray& content) {
    const QDateTime modified = _files.at(path).modified;
    Put(path, content);
    const Guard lock(_mutex);
    _files[path].modified = modified;
}

void FakeService::Restore(const QString& path, const QByteArray& content, int version) {
    Put(path, content);
    const Guard lock(_mutex);
    _files[path].version = version;
}

void FakeService::Remove(const QString& path) {
    const Guard lock(_mutex);
    _changed = _now = _now.addSecs(1);
    const auto below = [&path](const QString& other) { return other == path || other.startsWith(path + Text("/")); };
    _Touch(FolderOf(path));
    _gone[path] = _sequence;
    for (auto file = _files.begin(); file != _files.end();) {
        file = below(file->first) ? _files.erase(file) : std::next(file);
    }
    for (auto folder = _folders.begin(); folder != _folders.end();) {
        folder = below(*folder) ? _folders.erase(folder) : std::next(folder);
    }
}

void FakeService::AddFolder(const QString& path) {
    const Guard lock(_mutex);
    for (QString folder = path; !folder.isEmpty(); folder = FolderOf(folder)) {
        if (_folders.insert(folder).second) {
            _folderIds[folder] = Text("folder %1").arg(++_items);
            _changed = _now = _now.addSecs(1);
            _Touch(FolderOf(folder));
            _folderChanges[folder] = _sequence;
        }
    }
}

void FakeService::Move(const QString& from, const QString& to) {
    _Meet("MOVE", from);
    {
        const Guard lock(_mutex);
        if (_files.count(to) != 0 || _folders.count(to) != 0) {
            throw HttpException(Text("something is there"), 412, QUrl());
        }
        if (_files.count(from) == 0 && _folders.count(from) == 0) {
            throw HttpException(Text("nothing is there"), 404, QUrl());
        }
        _changed = _now = _now.addSecs(1);
        const auto moved = [&](const QString& path) {
            return path == from || path.startsWith(from + Text("/")) ? to + path.mid(from.size()) : path;
        };
        _Touch(FolderOf(from));
        _Touch(FolderOf(to));
        _gone[from] = _sequence;
        std::map<QString, File> files;
        for (const auto& file : _files) {
            File& now = files[moved(file.first)] = file.second;
            now.changed = moved(file.first) == file.first ? now.changed : _sequence;
        }
        std::set<QString> folders;
        std::map<QString, QString> ids;
        for (const QString& folder : _folders) {
            folders.insert(moved(folder));
            ids[moved(folder)] = _folderIds[folder];
            if (moved(folder) != folder) {
                _folderChanges[moved(folder)] = _sequence;
            }
        }
        _files = files;
        _folders = folders;
        _folderIds = ids;
    }
    _Meet("MOVED", to);
}

QByteArray FakeService::Content(const QString& path) const {
    const Guard lock(_mutex);
    const auto file = _files.find(path);
    return file == _files.end() ? QByteArray("(none)") : file->second.content;
}

std::map<QString, QByteArray> FakeService::Contents() const {
    const Guard lock(_mutex);
    std::map<QString, QByteArray> contents;
    for (const auto& file : _files) {
        contents[file.first] = file.second.content;
    }
    return contents;
}

bool FakeService::HasFolder(const QString& path) const {
    const Guard lock(_mutex);
    return _folders.count(path) != 0;
}

ovsync::pass::ServiceFolder FakeService::Folder(const QString& localPath) {
    ovsync::pass::ServiceFolder service;
    service.folders = _folderManager.get();
    service.files = _fileManager.get();
    service.keepListing = [this](const FolderConfiguration& folder) { return _fileManager->Keep(folder); };
    service.forgetListings = [this] { _fileManager->Forget(); };
    service.updater = _updater.get();
    service.moveFile = [this](const QString& from, const QString& to) { Move(PathOf(from), PathOf(to)); };
    service.attributesOf = [this](const QString& serverPath) { return listedAttributes.value(PathOf(serverPath)); };
    service.isEmpty = [this](const QString& serverPath) { return _IsEmpty(PathOf(serverPath)); };
    service.changes = std::make_shared<ChangeSource>(*this);
    service.newConnection = [this] {
        ++connections;
        return std::make_unique<Session>(*this);
    };
    service.urlOf = [](const QString& serverPath) {
        QUrl url(Text("http://service.test/"));
        url.setPath(Text("/") + serverPath, QUrl::DecodedMode);
        return url;
    };
    service.address = Text("http://service.test/S");
    service.folder.serverPath = Text("S");
    service.folder.serverRootPath = Text("S");
    service.folder.localPath = localPath;
    service.requirePlace = [this] {
        if (hasNoPlace) {
            throw ovsync::report::FolderMissing(Text("there is no folder above it"));
        }
    };
    service.make = [folders = service.folders, made = service.folder]() mutable {
        folders->CreateFolder(made, QString(), false);
    };
    return service;
}

bool FakeService::_IsEmpty(const QString& path) const {
    const Guard lock(_mutex);
    const auto isIn = [&path](const QString& other) { return FolderOf(other) == path; };
    return std::none_of(_files.begin(), _files.end(), [&isIn](const auto& file) { return isIn(file.first); }) &&
           std::none_of(_folders.begin(), _folders.end(), isIn) && std::none_of(unlisted.begin(), unlisted.end(), isIn);
}

void FakeService::_Touch(const QString& folder) {
    _folderChanges[folder] = ++_sequence;
}

FolderConfiguration FakeService::_DescribeFolder(const QString& path) const {
    FolderConfiguration folder;
    folder.name = NameOf(path);
    folder.serverPath = Text(Root) + path;
    folder.setServerFolderId(isPlain ? Text("path:S/") + path : _folderIds.at(path));
    return folder;
}

ServiceChanges FakeService::_ChangesSince(int sequence) const {
    ServiceChanges changes;
    for (const QString& path : _folders) {
        if (_folderChanges.at(path) > sequence && forgotten.count(path) == 0) {
            changes.folders.append(_DescribeFolder(path));
        }
    }
    for (const auto& file : _files) {
        if (file.second.changed > sequence && forgotten.count(file.first) == 0) {
            changes.files.append(_Describe(file.first, file.second));
        }
    }
    for (const auto& [path, when] : _gone) {
        if (when > sequence && _files.count(path) == 0 && _folders.count(path) == 0) {
            changes.gone.append(Text(Root) + path);
        }
    }
    return changes;
}

ServiceChanges FakeService::_FoldersSince(int sequence) const {
    std::set<QString> whole;
    for (const auto& [path, when] : _folderChanges) {
        for (QString folder = path; when > sequence; folder = FolderOf(folder)) {
            whole.insert(folder);
            if (folder.isEmpty()) {
                break;
            }
        }
    }
    ServiceChanges changes;
    for (const QString& path : whole) {
        if (path.isEmpty() || _folders.count(path) != 0) {
            changes.whole.append(path.isEmpty() ? Text("S") : Text(Root) + path);
        }
    }
    for (const QString& path : _folders) {
        if (whole.count(FolderOf(path)) != 0 && forgotten.count(path) == 0) {
            changes.folders.append(_DescribeFolder(path));
        }
    }
    for (const auto& [path, file] : _files) {
        if (whole.count(FolderOf(path)) != 0 && forgotten.count(path) == 0) {
            changes.files.append(_Describe(path, file));
        }
    }
    return changes;
}

int FakeService::Count(const char* method) const {
    const Guard lock(_mutex);
    const auto count = _counts.find(Text(method));
    return count == _counts.end() ? 0 : count->second;
}

int FakeService::CountAll() const {
    const Guard lock(_mutex);
    return std::accumulate(_counts.begin(), _counts.end(), 0,
                           [](int sum, const auto& count) { return sum + count.second; });
}

void FakeService::ForgetCounts() {
    const Guard lock(_mutex);
    _counts.clear();
}

void FakeService::_Meet(const char* method, const QString& path) {
    {
        const Guard lock(_mutex);
        ++_counts[Text(method)];
    }
    if (onRequest) {
        onRequest(Text(method), path);
    }
}

FileConfiguration FakeService::_Describe(const QString& path, const File& file) const {
    FileConfiguration description;
    description.name = NameOf(path);
    description.serverPath = Text(Root) + path;
    description.size = ListedSize(file.content.size());
    description.lastModifiedDate = isWithoutDates || isListingNoDates ? QDateTime() : file.modified;
    description.customProperties[Text("version")] = QString::number(isPlain ? 0 : file.version);
    description.itemId = Text("path:S/") + path;
    if (listsTags && !areTagsWeak) {
        description.versionId = QString::fromUtf8(_Tag(file));
    }
    if (!isPlain) {
        description.itemId = QString::number(file.item);
        description.versionId = QString::number(file.item) + QLatin1Char('-') + QString::number(file.version);
    }
    if (!isPlain && !isWithoutChecksums) {
        description.md5Checksum =
            QString::fromLatin1(QCryptographicHash::hash(file.content, QCryptographicHash::Md5).toHex());
    }
    description.customProperties[Text("versionId")] = description.versionId;
    return description;
}

QByteArray FakeService::_Tag(const File& file) const {
    return '"' + QByteArray::number(file.item) + '-' + QByteArray::number(file.version) + '"';
}

}  // namespace tests
