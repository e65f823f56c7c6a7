#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "dvsync/DrovaneRemoteFileManager.h"
#include "tests/fakes/Contract.h"
#include "tests/fakes/InstalledConfiguration.h"

namespace {

/// What the reader of the example has.
struct Client {
    int serverId = 1;
    std::shared_ptr<sync::interf::factory::IConfigurationFactory> configurationFactory;
    std::shared_ptr<sync::interf::IUrlBuilder> urlBuilder;
    std::shared_ptr<sync::interf::IRequestManager> requestManager;
    std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> authenticatorFactory;
    std::shared_ptr<sync::interf::factory::IHttpFactory> httpFactory;
    std::shared_ptr<sync::interf::factory::INetworkAccessManagerFactory> networkAccessManagerFactory;
    std::shared_ptr<sync::interf::ISyncConfiguration> syncConfiguration;
};

}  // namespace

#include "ReadmeExample.inc"

namespace {

using testing::_;
using testing::NiceMock;
using testing::Return;

TEST(ReadmeExampleTest, ListsAFolder) {
    const auto request = std::make_shared<tests::FakePropfindRequest>();
    request->result = std::make_shared<sync::http::DAVPropfindResult>();
    sync::http::DAVPropfindProperties properties;
    properties.filename = QStringLiteral("plan.dwg");
    properties.resourceClassType = QStringLiteral("drovane.objects.File");
    request->result->fileResponses.insert(
        QStringLiteral("a"), sync::http::DAVPropfindResponse(QStringLiteral("/Projects/plan.dwg"), properties));

    const auto urlBuilder = std::make_shared<NiceMock<tests::MockUrlBuilder>>();
    EXPECT_CALL(*urlBuilder, BuildUrl(_, QStringLiteral("Projects")));
    const auto httpFactory = std::make_shared<NiceMock<tests::MockHttpFactory>>();
    ON_CALL(*httpFactory, CreatePropfindRequest(_, _, _)).WillByDefault(Return(request));

    const tests::InstalledConfiguration installed;
    Client client;
    client.configurationFactory = std::make_shared<tests::FakeConfigurationFactory>(installed.ServerConfigManager(),
                                                                                    installed.FileConfigManager());
    client.urlBuilder = urlBuilder;
    client.requestManager = std::make_shared<NiceMock<tests::MockRequestManager>>();
    client.httpFactory = httpFactory;

    testing::internal::CaptureStdout();
    EXPECT_EQ(ListFolder(client, QStringLiteral("Projects")), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "plan.dwg\n");
}

}  // namespace
