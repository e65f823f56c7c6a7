#pragma once

#include <memory>

#include "host/interfaces/factory/IConfigurationFactory.h"

namespace ovsync {
namespace library {

/// What the process's configuration factory hands out on the thread that made this object, for as long as it lives: the
/// library asks that factory wherever it was given none, and each thread may have an account of its own. One at a time
/// on a thread, and gone from there.
///
/// \code
/// #include "client/library/ServerConfigManager.h"
///
/// class Settings : public sync::interf::factory::IConfigurationFactory {
/// public:
///     std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
///         sync::config::ServerConfiguration account;
///         account.baseUrl = QUrl(QStringLiteral("http://localhost:8080"));
///         const QMap<int, sync::config::ServerConfiguration> accounts{{1, account}};
///         return std::make_shared<ovsync::library::ServerConfigManager>(accounts);
///     }
///     std::shared_ptr<sync::interf::IFileConfigManager> CreateFileConfigManager() override { return nullptr; }
/// };
/// const ovsync::library::ThreadConfiguration ofThisThread(std::make_shared<Settings>());
/// \endcode
class ThreadConfiguration {
public:
    explicit ThreadConfiguration(const std::shared_ptr<sync::interf::factory::IConfigurationFactory>& configuration);
    ~ThreadConfiguration();
    ThreadConfiguration(const ThreadConfiguration&) = delete;
    ThreadConfiguration& operator=(const ThreadConfiguration&) = delete;
};

}  // namespace library
}  // namespace ovsync
