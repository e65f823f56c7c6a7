#include "client/library/ThreadConfiguration.h"

#include <mutex>

#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace library {

using sync::factory::ConfigurationFactory;
using sync::interf::factory::IConfigurationFactory;

namespace {

thread_local std::shared_ptr<IConfigurationFactory> ofThisThread;

class FactoryOfThreads : public IConfigurationFactory {
public:
    std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
        return _Required().CreateServerConfigManager();
    }
    std::shared_ptr<sync::interf::IFileConfigManager> CreateFileConfigManager() override {
        return _Required().CreateFileConfigManager();
    }

private:
    static IConfigurationFactory& _Required() {
        if (!ofThisThread) {
            throw sync::core::SyncException(QStringLiteral("There is no connection to a service on this thread."));
        }
        return *ofThisThread;
    }
};

std::mutex installing;
int installations = 0;

}  // namespace

ThreadConfiguration::ThreadConfiguration(const std::shared_ptr<IConfigurationFactory>& configuration) {
    ofThisThread = configuration;
    const std::lock_guard<std::mutex> lock(installing);
    if (++installations == 1) {
        ConfigurationFactory::Install(std::make_shared<FactoryOfThreads>());
    }
}

ThreadConfiguration::~ThreadConfiguration() {
    ofThisThread = nullptr;
    const std::lock_guard<std::mutex> lock(installing);
    if (--installations == 0) {
        ConfigurationFactory::Install(nullptr);
    }
}

}  // namespace library
}  // namespace ovsync
