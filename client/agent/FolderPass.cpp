#include "client/agent/FolderPass.h"

#include <sys/stat.h>

#include <QFileInfo>
#include <cerrno>
#include <utility>

#include "client/cli/input/ServiceFolderAt.h"
#include "client/cli/output/ErrorText.h"
#include "client/store/FileConfigManager.h"
#include "client/store/FolderBusy.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/both/TwoWayPass.h"
#include "client/sync/local/LocalTree.h"
#include "client/sync/pass/SyncConfiguration.h"
#include "client/sync/report/FolderMissing.h"
#include "client/sync/report/OfferedCommand.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/TransactionError.h"
#include "dvsync/ExternalSyncConfig.h"
#include "dvsync/VersionChecker.h"
#include "dvsync/VersionManager.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace agent {

using library::ServiceConnection;
using output::ErrorText;
using report::ISyncObserver;
using report::SyncOutcome;
using store::RecordDatabase;
using wire::HttpStatus;
using wire::TransactionError;

namespace {

PassResult ResultOf(SyncOutcome outcome) {
    switch (outcome) {
        case SyncOutcome::InStep:
            return {PassResult::End::InStep, QString()};
        case SyncOutcome::LeftSome:
            return {PassResult::End::LeftSome, QString()};
        case SyncOutcome::Failed:
            return {PassResult::End::Failed, QString()};
        case SyncOutcome::Cancelled:
            return {PassResult::End::Stopped, QString()};
    }
    return {PassResult::End::Failed, QString()};
}

ErrorText::Context ContextOf(const folders::SyncedFolder& folder, const QAuthenticator& credentials) {
    ErrorText::Context context;
    context.server = folder.location.Server();
    context.path = folder.location.serverPath;
    context.user = credentials.user();
    return context;
}

void RequireThere(const QString& directory) {
    struct stat status {};
    const bool isThere = stat(directory.toUtf8().constData(), &status) == 0;
    if (isThere ? !S_ISDIR(status.st_mode) : errno == ENOENT || errno == ENOTDIR) {
        throw sync::core::SyncException(QStringLiteral("the folder is not there: it is gone, was never made, or its "
                                                       "disk is not mounted. Nothing is deleted on the service. Bring "
                                                       "it back, make it, or run \"ovsync folders remove %1\"")
                                            .arg(report::ShellWord(directory)));
    }
}

ServiceWishes WishesOf(const std::shared_ptr<sync::interf::IExternalSyncConfigManager>& published) {
    pass::SyncConfiguration tuning(published);
    ServiceWishes wishes;
    wishes.delayAfterFailure = std::chrono::seconds(tuning.GetSyncDelayAfterServerError());
    if (!published) {
        wishes.frequency = std::chrono::seconds(tuning.GetSyncFrequency());
        return wishes;
    }
    const sync::dv::dvsync::ExternalSyncConfig config = published->GetExternalSyncConfig();
    wishes.frequency = std::chrono::seconds(config.syncFrequency);
    // The library logs it as an error when there is no version to compare with.
    const QString& none = sync::dv::dvsync::ExternalSyncConfig::DefaultVersion;
    QString newest;
    sync::dv::dvsync::VersionChecker checker(std::make_shared<sync::dv::dvsync::VersionManager>(published));
    if (!config.mostCurrentVersion.isEmpty() && config.mostCurrentVersion != none &&
        checker.ThereIsANewAppVersion(newest)) {
        wishes.newVersion = newest;
    }
    return wishes;
}

}  // namespace

FolderPass::FolderPass(const folders::SyncedFolder& folder, const QAuthenticator& credentials)
    : _folder(folder), _credentials(credentials) {}

PassResult FolderPass::Run(const std::atomic<bool>& isStopped, ISyncObserver& observer, const Paths& changedHere) {
    _isStopped = &isStopped;
    PassResult result{PassResult::End::Failed, QString()};
    try {
        result = ResultOf(_Sync(isStopped, observer, changedHere));
    } catch (const store::FolderBusy&) {
        result.end = PassResult::End::Busy;
    } catch (const std::exception& e) {
        ErrorText::Context context = ContextOf(_folder, _credentials);
        context.lastAnswer = [this] { return _connection ? _connection->LastAnswer() : wire::AnswerSummary(); };
        result.error = ErrorText(context).Of(std::current_exception()).text;
        if (dynamic_cast<const report::FolderMissing*>(&e) != nullptr) {
            result.error +=
                QStringLiteral(". To have the agent leave this folder alone, run \"ovsync folders remove %1\"")
                    .arg(report::ShellWord(_folder.directory));
        }
        const auto* const answer = dynamic_cast<const sync::http::HttpException*>(&e);
        if (answer != nullptr && answer->StatusCode() == HttpStatus::Unauthorized) {
            result.end = PassResult::End::Rejected;
            const QString user = _folder.user.isEmpty() ? _credentials.user() : _folder.user;
            if (_credentials.isNull() && !user.isEmpty()) {
                result.error = QStringLiteral("there is no password for \"%1\"").arg(user);
            }
            result.error +=
                QStringLiteral("; \"%1 %2\" gives one")
                    .arg(report::OfferedCommand(QStringLiteral("login"), user.isEmpty() ? QStringLiteral("USER") : user,
                                                _folder.caFile),
                         report::ShellWord(_folder.location.Url().toString(QUrl::FullyEncoded)));
        }
    }
    if (isStopped) {
        result.end = PassResult::End::Stopped;
    }
    if (_connection) {
        _connection->ForgetListed();
    }
    // A new connection may do better than this one.
    if (result.end == PassResult::End::Failed) {
        _connection.reset();
    }
    _isStopped = nullptr;
    return result;
}

std::optional<ServiceWishes> FolderPass::AskWishes() {
    try {
        return WishesOf(_Connection().FetchSyncConfig());
    } catch (const TransactionError& error) {
        return error.Why() == TransactionError::Cause::WrongAnswer ? std::make_optional(WishesOf(nullptr))
                                                                   : std::nullopt;
    } catch (const std::exception&) {
        // Other servers publish nothing.
        return WishesOf(nullptr);
    }
}

ServiceConnection& FolderPass::_Connection() {
    if (!_connection) {
        wire::ConnectionSettings settings;
        settings.caFile = _folder.caFile;
        settings.onProgress = [this](qint64, bool) {
            if (_isStopped != nullptr && *_isStopped) {
                _connection->Cancel();
            }
        };
        _connection = std::make_unique<ServiceConnection>(_folder.location.baseUrl, _credentials, settings);
    }
    return *_connection;
}

SyncOutcome FolderPass::_Sync(const std::atomic<bool>& isStopped, ISyncObserver& observer, const Paths& changedHere) {
    ServiceConnection& connection = _Connection();
    const QString root = QFileInfo(_folder.directory).canonicalFilePath();
    // A folder that is away deletes nothing, and is not made anew.
    RequireThere(_folder.directory);
    local::LocalTree tree(root.isEmpty() ? _folder.directory : root);
    const auto records = std::make_shared<RecordDatabase>(root, RecordDatabase::Access::Change);

    pass::SyncOptions options;
    options.transfers = _folder.transfers;
    options.deletionLimit = _folder.deletionLimit;
    options.daysKept = _folder.daysKept;
    options.exclusion = local::Exclusion(_folder.rules);
    options.isStopped = &isStopped;

    pass::ServiceFolder service = input::ServiceFolderAt(connection, _folder.location, root);
    service.caFile = _folder.caFile;
    const auto updater =
        connection.NewUpdater(std::make_shared<store::FileConfigManager>(records, root, service.folder.serverKey));
    service.updater = updater.get();

    pass::SyncPass pass(service, tree, *records, options, observer);
    return both::TwoWayPass(pass, changedHere).Run();
}

}  // namespace agent
}  // namespace ovsync
