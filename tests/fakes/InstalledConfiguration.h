#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <utility>

#include "host/configurationfactory/ConfigurationFactory.h"

namespace tests {

class MockServerConfigManager : public sync::interf::IServerConfigManager {
public:
    MOCK_METHOD(sync::config::ServerConfiguration, GetServerConfiguration, (int serverId), (override));
};

class MockFileConfigManager : public sync::interf::IFileConfigManager {
public:
    MOCK_METHOD(sync::config::FileConfiguration, GetFileConfiguration, (const QString& localPath, int serverKey),
                (override));
};

class FakeConfigurationFactory : public sync::interf::factory::IConfigurationFactory {
public:
    FakeConfigurationFactory(std::shared_ptr<sync::interf::IServerConfigManager> serverConfigManager,
                             std::shared_ptr<sync::interf::IFileConfigManager> fileConfigManager)
        : _serverConfigManager(std::move(serverConfigManager)), _fileConfigManager(std::move(fileConfigManager)) {}

    std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
        ++serverConfigManagersAskedFor;
        return _serverConfigManager;
    }
    std::shared_ptr<sync::interf::IFileConfigManager> CreateFileConfigManager() override {
        ++fileConfigManagersAskedFor;
        return _fileConfigManager;
    }

    int serverConfigManagersAskedFor = 0;
    int fileConfigManagersAskedFor = 0;

private:
    std::shared_ptr<sync::interf::IServerConfigManager> _serverConfigManager;
    std::shared_ptr<sync::interf::IFileConfigManager> _fileConfigManager;
};

/// A configuration factory that is installed for as long as this object lives, and knows one server.
class InstalledConfiguration {
public:
    InstalledConfiguration() {
        sync::config::ServerConfiguration server;
        server.baseUrl = QUrl(QString::fromUtf8("http://service.test/"));
        ON_CALL(*_serverConfigManager, GetServerConfiguration(testing::_)).WillByDefault(testing::Return(server));
        sync::factory::ConfigurationFactory::Install(_factory);
    }
    ~InstalledConfiguration() { sync::factory::ConfigurationFactory::Install(nullptr); }
    InstalledConfiguration(const InstalledConfiguration&) = delete;
    InstalledConfiguration& operator=(const InstalledConfiguration&) = delete;

    const std::shared_ptr<MockServerConfigManager>& ServerConfigManager() const { return _serverConfigManager; }
    const std::shared_ptr<MockFileConfigManager>& FileConfigManager() const { return _fileConfigManager; }
    const FakeConfigurationFactory& Factory() const { return *_factory; }

private:
    std::shared_ptr<MockServerConfigManager> _serverConfigManager =
        std::make_shared<testing::NiceMock<MockServerConfigManager>>();
    std::shared_ptr<MockFileConfigManager> _fileConfigManager =
        std::make_shared<testing::NiceMock<MockFileConfigManager>>();
    std::shared_ptr<FakeConfigurationFactory> _factory =
        std::make_shared<FakeConfigurationFactory>(_serverConfigManager, _fileConfigManager);
};

}  // namespace tests
