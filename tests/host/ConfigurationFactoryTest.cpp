#include "host/configurationfactory/ConfigurationFactory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/core/SyncException.h"
#include "tests/fakes/InstalledConfiguration.h"

namespace {

using sync::core::SyncException;
using sync::factory::ConfigurationFactory;
using testing::HasSubstr;

TEST(ConfigurationFactoryTest, UsedBeforeAnythingIsInstalledItFailsWithAClearException) {
    ConfigurationFactory::Install(nullptr);
    ConfigurationFactory factory;
    try {
        factory.CreateServerConfigManager();
        FAIL() << "nothing was thrown";
    } catch (const SyncException& e) {
        EXPECT_THAT(e.what(), HasSubstr("No configuration factory is installed"));
    }
    EXPECT_THROW(factory.CreateFileConfigManager(), SyncException);
}

TEST(ConfigurationFactoryTest, HandsOutWhatTheInstalledFactoryMakes) {
    const tests::InstalledConfiguration installed;
    ConfigurationFactory factory;
    EXPECT_EQ(factory.CreateServerConfigManager(), installed.ServerConfigManager());
    EXPECT_EQ(factory.CreateFileConfigManager(), installed.FileConfigManager());
}

TEST(ConfigurationFactoryTest, AFactoryInstalledLaterReplacesTheFirst) {
    const tests::InstalledConfiguration first;
    const tests::InstalledConfiguration second;
    EXPECT_EQ(ConfigurationFactory().CreateServerConfigManager(), second.ServerConfigManager());
}

TEST(ConfigurationFactoryTest, AnInstalledFactoryIsReleasedWhenItIsTakenAway) {
    auto factory = std::make_shared<tests::FakeConfigurationFactory>(nullptr, nullptr);
    const std::weak_ptr<tests::FakeConfigurationFactory> watched = factory;
    ConfigurationFactory::Install(std::move(factory));
    EXPECT_FALSE(watched.expired());
    ConfigurationFactory::Install(nullptr);
    EXPECT_TRUE(watched.expired());
}

}  // namespace
