#pragma once

#include <QAuthenticator>
#include <QString>
#include <QUrl>
#include <QVector>
#include <memory>
#include <optional>

#include "client/changes/IChangeSource.h"
#include "client/content/IContentConnection.h"
#include "client/content/ResourceConnection.h"
#include "client/library/ListedFiles.h"
#include "client/library/NetworkAccessManagerFactory.h"
#include "client/library/RemoteFileManagerFactory.h"
#include "client/library/ThreadConfiguration.h"
#include "client/requests/AccountConnection.h"
#include "client/wire/ConnectionSettings.h"
#include "host/http/DAVPropfindRequest.h"
#include "host/interfaces/ICustomFileConfigUpdater.h"
#include "host/interfaces/IExternalSyncConfigManager.h"
#include "host/interfaces/IFileConfigManager.h"
#include "host/interfaces/IRemoteFileManager.h"
#include "host/interfaces/IRemoteFolderManager.h"
#include "host/interfaces/IUrlBuilder.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace ovsync {
namespace library {

/// What lies right in a folder, each in name order. A plain value.
struct FolderListing {
    QVector<sync::config::FolderConfiguration> folders;
    QVector<sync::config::FileConfiguration> files;
};

/// What is at one place of the service. A plain value.
struct FoundResource {
    bool isFolder = false;
    /// Where it is a file.
    sync::config::FileConfiguration file;
};

/// The library, loaded over real HTTP for one server. Has the process's configuration factory hand out its settings on
/// the thread that made it, to which it belongs: there can be one at a time on a thread. Not thread-safe, but for
/// Cancel.
///
/// \code
/// #include <iostream>
/// #include "client/library/Netrc.h"
/// #include "host/http/HttpException.h"
///
/// const QUrl url(QStringLiteral("http://localhost:8080"));
/// try {
///     ovsync::library::ServiceConnection service(url, ovsync::library::NetrcCredentials(url.host()));
///     const auto listing = service.List(service.Folder(QStringLiteral("Projects/Bridge")));
///     if (!listing) {
///         std::cerr << "There is no such folder\n";
///         return;
///     }
///     for (const sync::config::FileConfiguration& file : listing->files) {
///         std::cout << file.name.toStdString() << '\n';
///     }
/// } catch (const sync::http::HttpException& error) {
///     std::cerr << "The service refused: " << error.Utf8Message() << '\n';
/// } catch (const sync::core::SyncException& error) {
///     std::cerr << "There was no whole answer: " << error.Utf8Message() << '\n';
/// }
/// \endcode
class ServiceConnection {
public:
    /// `baseUrl` has scheme, host and port. Null `credentials` are none.
    explicit ServiceConnection(const QUrl& baseUrl, const QAuthenticator& credentials = QAuthenticator(),
                               const wire::ConnectionSettings& settings = wire::ConnectionSettings());
    ServiceConnection(const ServiceConnection&) = delete;
    ServiceConnection& operator=(const ServiceConnection&) = delete;

    /// Null for none.
    const QAuthenticator& Credentials() const { return _credentials; }

    /// The record from which the library lists and looks up at `serverPath`.
    sync::config::FolderConfiguration Folder(const QString& serverPath) const;

    /// Answers from what it was told to keep; so does the updater.
    ListedFiles& Files() { return *_files; }
    sync::interf::IRemoteFolderManager& Folders() { return *_folders; }

    /// What the service publishes, as the library reads it, at this moment; null when that is nothing. Throws
    /// HttpException when the service refuses it, TransactionError when the service cannot be reached or answers with
    /// something else. The process has a QCoreApplication meanwhile, whose event loop it runs.
    std::shared_ptr<sync::interf::IExternalSyncConfigManager> FetchSyncConfig();

    /// What keeps the library's file records true around transfers. `records`, which it keeps, are those that it looks
    /// links up in.
    std::unique_ptr<sync::interf::ICustomFileConfigUpdater> NewUpdater(
        std::shared_ptr<sync::interf::IFileConfigManager> records);

    /// What is at `serverPath`, asked for as a file: some servers answer with an error to the URL of a file that ends
    /// in '/'. None when there is nothing. Throws HttpException for any other failure, and
    /// TransactionError.
    std::optional<FoundResource> Find(const QString& serverPath);

    /// Whether nothing lies in the folder at `serverPath`, of whatever class; true also when there is none. Throws as
    /// Find does.
    bool IsEmpty(const QString& serverPath);

    /// Tells what changed in the folder at `serverPath`. This object outlives it, and is not used between its Ask and
    /// its Take.
    std::unique_ptr<changes::IChangeSource> NewChangeSource(const QString& serverPath);

    /// A connection of its own for content, for another thread. All of them share the bandwidth.
    std::unique_ptr<content::IContentConnection> NewContentConnection() const;
    /// The same for what is done with files on the service.
    std::unique_ptr<content::ResourceConnection> NewResourceConnection() const;

    /// The URL of a server path; empty when there is none for it.
    QUrl UrlOf(const QString& serverPath) const;

    /// The size of a file that this connection listed, in bytes, as far as it is known: the library's records hold 32
    /// bits of it, with their sign. -1 when it is 4 GiB or more and the service did not say it.
    qint64 SizeOf(const QString& serverPath, qint64 recorded) const;
    /// As this connection has listed the file last.
    wire::FileAttributes AttributesOf(const QString& serverPath) const;
    /// Of no file listed before, anything but what its record says is known from now on. Frees memory.
    void ForgetListed() { _settings.listing.supplement->ForgetFiles(); }

    /// Asks the service once. None when it has no such folder. Throws what the library throws.
    std::optional<FolderListing> List(sync::config::FolderConfiguration folder);

    /// Ends what the library asks at this moment, and what it asks later, with a TransactionError.
    void Cancel() { _connection->Cancel(); }

    /// What the server answered last.
    const wire::AnswerSummary& LastAnswer() const { return _keptAnswer ? *_keptAnswer : _connection->LastAnswer(); }
    /// What is asked from now on only concerns why that came.
    void KeepLastAnswer() { _keptAnswer = LastAnswer(); }

private:
    class Configuration;

    /// Null when there is nothing at `path`.
    std::shared_ptr<sync::http::DAVPropfindResult> _Ask(const QString& path,
                                                        sync::http::DAVPropfindRequest::Depth depth);
    wire::ConnectionSettings _SettingsOfTransfers() const;
    std::shared_ptr<RemoteFileManagerFactory> _NewFileManagers(
        const std::shared_ptr<requests::IRequestSender>& sender) const;
    std::unique_ptr<sync::interf::IRemoteFolderManager> _NewFolderManager(
        const std::shared_ptr<requests::IRequestSender>& sender) const;

    const QAuthenticator _credentials;
    const wire::ConnectionSettings _settings;
    sync::config::ServerConfiguration _account;
    std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> _authenticators;
    std::shared_ptr<requests::AccountConnection> _connection;
    std::shared_ptr<sync::interf::IUrlBuilder> _urlBuilder;
    std::shared_ptr<NetworkAccessManagerFactory> _networkAccess;
    std::optional<wire::AnswerSummary> _keptAnswer;
    std::shared_ptr<Configuration> _configuration;
    std::unique_ptr<ThreadConfiguration> _ofThread;
    std::shared_ptr<ListedFiles> _files;
    std::unique_ptr<sync::interf::IRemoteFolderManager> _folders;
};

}  // namespace library
}  // namespace ovsync
