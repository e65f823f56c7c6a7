#include "dvsync/VersionManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMetaObject>
#include <memory>

#include "dvsync/ExternalSyncConfig.h"
#include "tests/fakes/Text.h"

namespace {

using sync::dv::dvsync::ExternalSyncConfig;
using sync::dv::dvsync::VersionManager;
using testing::Return;
using testing::StrictMock;
using tests::Text;

class MockExternalSyncConfigManager : public sync::interf::IExternalSyncConfigManager {
public:
    MOCK_METHOD(ExternalSyncConfig, GetExternalSyncConfig, (), (override));
};

ExternalSyncConfig Published(const char* version, const char* url) {
    ExternalSyncConfig config;
    config.mostCurrentVersion = Text(version);
    config.installerUrl = Text(url);
    return config;
}

class VersionManagerTest : public testing::Test {
protected:
    const std::shared_ptr<StrictMock<MockExternalSyncConfigManager>> _configs =
        std::make_shared<StrictMock<MockExternalSyncConfigManager>>();
    VersionManager _manager{_configs};
};

TEST_F(VersionManagerTest, TheMetaObjectHasItsNameAndNothingOfItsOwn) {
    const QMetaObject& meta = VersionManager::staticMetaObject;
    EXPECT_STREQ(meta.className(), "sync::dv::dvsync::VersionManager");
    EXPECT_STREQ(meta.superClass()->className(), "sync::interf::IVersionManager");
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
}

TEST_F(VersionManagerTest, TheLocalVersionIsKnownWithoutAsking) {
    EXPECT_EQ(_manager.GetLocalAppVersion(), Text("5.1.1.1001"));
}

TEST_F(VersionManagerTest, EveryRemoteAnswerIsFetchedAnew) {
    EXPECT_CALL(*_configs, GetExternalSyncConfig())
        .WillOnce(Return(Published("KQ51_1_WIN", "one")))
        .WillOnce(Return(Published("KQ51_2_WIN", "two")))
        .WillOnce(Return(ExternalSyncConfig()))
        .WillOnce(Return(Published("KQ51_4_WIN", "four")));
    EXPECT_EQ(_manager.GetMostCurrentAppVersion(), Text("KQ51_1_WIN"));
    EXPECT_EQ(_manager.GetAppInstallerUrl(), Text("two"));
    EXPECT_EQ(_manager.GetMostCurrentAppVersion(), Text("0.0.0.0"));
    EXPECT_EQ(_manager.GetAppInstallerUrl(), Text("four"));
}

TEST_F(VersionManagerTest, TheConfigurationIsKeptForTheManagersLife) {
    auto configs = std::make_shared<StrictMock<MockExternalSyncConfigManager>>();
    const std::weak_ptr<MockExternalSyncConfigManager> watched = configs;
    auto manager = std::make_unique<VersionManager>(std::move(configs));
    EXPECT_FALSE(watched.expired());
    manager.reset();
    EXPECT_TRUE(watched.expired());
}

}  // namespace
