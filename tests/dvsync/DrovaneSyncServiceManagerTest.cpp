#include "dvsync/DrovaneSyncServiceManager.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "tests/fakes/Text.h"

namespace {

using sync::dv::dvsync::DrovaneSyncServiceManager;
using tests::Text;

// As a client derives it.
class ClientSyncConfiguration : public DrovaneSyncServiceManager {
public:
    using DrovaneSyncServiceManager::DrovaneSyncServiceManager;

    int GetMaxParallelTransfers() override { return 1; }
    int GetMaxTransferRetries() override { return 1; }
    int GetMaxFailedPasses() override { return 1; }
};

std::uint32_t BitsOf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

class DrovaneSyncServiceManagerTest : public testing::Test {
protected:
    ClientSyncConfiguration client{nullptr};
    sync::interf::ISyncConfiguration& manager = client;
};

TEST_F(DrovaneSyncServiceManagerTest, TheOperationsOfTheClientStayPure) {
    EXPECT_TRUE(std::is_abstract<DrovaneSyncServiceManager>::value);
}

TEST_F(DrovaneSyncServiceManagerTest, AnswersFixedValues) {
    EXPECT_EQ(manager.GetSyncFrequency(), 180);
    EXPECT_TRUE(manager.IsIncrementalSyncEnabled());
    EXPECT_EQ(manager.GetMinFileSizeForIncrementalSync(), 102400);
    EXPECT_EQ(BitsOf(manager.GetMaxChangeForIncrementalSync()), 0x3F000000U);
    EXPECT_EQ(BitsOf(manager.GetMaxDeltaForIncrementalSync()), 0x3F333333U);
    EXPECT_EQ(manager.GetSyncDelayAfterServerError(), 0);
}

TEST_F(DrovaneSyncServiceManagerTest, EveryFileMayBeTransferredAsADifference) {
    EXPECT_TRUE(manager.IsIncrementalSyncEnabledForFile(Text("/home/a/b.txt")));
    EXPECT_TRUE(manager.IsIncrementalSyncEnabledForFile(QString()));
}

TEST_F(DrovaneSyncServiceManagerTest, TheLimitsAreNoneAndLeaveTheArgumentsAsTheyAre) {
    int a = 11;
    int b = -22;
    int c = 33;
    EXPECT_FALSE(manager.GetLimitsForUploadFinishedEvent(a, b));
    for (const bool initialSync : {false, true}) {
        EXPECT_FALSE(manager.GetLimitsForCreateDeleteReferences(a, b, c, initialSync));
        EXPECT_FALSE(manager.GetLimitsForGetParentsChildrenReferences(a, b, initialSync));
    }
    EXPECT_EQ(a, 11);
    EXPECT_EQ(b, -22);
    EXPECT_EQ(c, 33);
}

TEST(DrovaneSyncServiceManagerLifeTest, KeepsTheExternalConfigurationAndReleasesIt) {
    // Never asked: what it points to need not be there.
    auto owner = std::make_shared<int>(0);
    const std::weak_ptr<int> watch = owner;
    {
        const ClientSyncConfiguration client(std::shared_ptr<sync::interf::IExternalSyncConfigManager>(owner, nullptr));
        owner.reset();
        EXPECT_FALSE(watch.expired());
    }
    EXPECT_TRUE(watch.expired());
}

}  // namespace
