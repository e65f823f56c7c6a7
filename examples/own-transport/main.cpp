// A host put together from the client's parts, one of which is its own: requests are sent by Qt.
//
//     own-transport http://host:8080 Projects/Bridge
//
// Lists the files of a folder. Exit codes as in minimal-host.
#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>

#include <QCoreApplication>
#include <QStringList>
#include <QUrl>
#include <iostream>

#include "QtTransport.h"
#include "client/library/Netrc.h"
#include "client/library/NetworkAccessManagerFactory.h"
#include "client/library/RequestAuthenticatorFactory.h"
#include "client/library/ServerConfigManager.h"
#include "client/requests/HttpFactory.h"
#include "client/requests/UrlBuilder.h"
#include "dvsync/DrovaneRemoteFileManager.h"
#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"
#include "host/http/HttpException.h"

namespace {

// The host numbers its accounts as it likes.
const int ServerId = 1;

/// Where the library gets settings from.
class Configuration : public sync::interf::factory::IConfigurationFactory {
public:
    explicit Configuration(const QUrl& url) { _account.baseUrl = url; }

    std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
        return std::make_shared<ovsync::library::ServerConfigManager>(
            QMap<int, sync::config::ServerConfiguration>{{ServerId, _account}});
    }

    std::shared_ptr<sync::interf::IFileConfigManager> CreateFileConfigManager() override {
        throw sync::core::SyncException(QStringLiteral("This host keeps no records of files."));
    }

private:
    sync::config::ServerConfiguration _account;
};

int ListFiles(const QUrl& url, const QString& serverPath) {
    // Before any object of the library is made.
    sync::factory::ConfigurationFactory::Install(std::make_shared<Configuration>(url));
    const QAuthenticator credentials = ovsync::library::NetrcCredentials(url.host());
    const auto authenticators =
        std::make_shared<ovsync::library::RequestAuthenticatorFactory>(credentials.user(), credentials.password());
    const auto managers = std::make_shared<ovsync::library::NetworkAccessManagerFactory>(authenticators, ServerId, url);
    const auto requests = std::make_shared<ovsync::requests::HttpFactory>();
    sync::dv::dvsync::DrovaneRemoteFileManager files(std::make_shared<ovsync::requests::UrlBuilder>(),
                                                     std::make_shared<QtTransport>(*managers), ServerId, authenticators,
                                                     requests, managers, nullptr);

    sync::config::FolderConfiguration folder;
    folder.serverId = ServerId;
    folder.serverPath = serverPath;
    std::shared_ptr<QVector<sync::config::FileConfiguration>> listed;
    // 0, or 404: without a last sync time there is no 304.
    if (files.GetNameSortedFilesByFolder(folder, listed) != 0) {
        std::cerr << "own-transport: There is no folder \"" << serverPath.toStdString() << "\"\n";
        return 1;
    }
    for (const sync::config::FileConfiguration& file : *listed) {
        std::cout << file.name.toStdString() << '\n';
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const log4cplus::Initializer logging;
    log4cplus::BasicConfigurator::doConfigure(log4cplus::Logger::getDefaultHierarchy(), true);
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.size() != 2) {
        std::cerr << "Usage: own-transport URL FOLDER\n";
        return 2;
    }
    try {
        return ListFiles(QUrl(arguments[0]), arguments[1]);
    } catch (const sync::http::HttpException& error) {
        std::cerr << "own-transport: " << error.Utf8Message() << '\n';
        return 1;
    } catch (const sync::core::SyncException& error) {
        std::cerr << "own-transport: " << error.Utf8Message() << '\n';
        return 3;
    }
}
