#include "dvsync/ExternalSyncConfig.h"

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>

#include "tests/fakes/Text.h"

namespace {

using sync::dv::dvsync::ExternalSyncConfig;
using tests::Text;

ExternalSyncConfig Published() {
    ExternalSyncConfig config;
    config.syncFrequency = 60;
    config.mostCurrentVersion = Text("KQ51_1001_WIN");
    config.installerUrl = Text("https://service.test/setup.exe");
    return config;
}

void ExpectPublished(const ExternalSyncConfig& config) {
    EXPECT_EQ(config.syncFrequency, 60);
    EXPECT_EQ(config.mostCurrentVersion, Text("KQ51_1001_WIN"));
    EXPECT_EQ(config.installerUrl, Text("https://service.test/setup.exe"));
}

void ExpectDefaults(const ExternalSyncConfig& config) {
    EXPECT_EQ(config.syncFrequency, 180);
    EXPECT_EQ(config.mostCurrentVersion, Text("0.0.0.0"));
    EXPECT_EQ(config.installerUrl, Text(""));
}

TEST(ExternalSyncConfigTest, StartsWithTheDefaults) {
    ExpectDefaults(ExternalSyncConfig());
}

TEST(ExternalSyncConfigTest, ClearPutsTheDefaultsBack) {
    ExternalSyncConfig config = Published();
    config.Clear();
    ExpectDefaults(config);
}

TEST(ExternalSyncConfigTest, CopiesTakeEveryFieldAndAreIndependent) {
    ExternalSyncConfig original = Published();
    const ExternalSyncConfig copy(original);
    ExternalSyncConfig assigned;
    assigned = original;
    original.Clear();
    ExpectPublished(copy);
    ExpectPublished(assigned);
}

TEST(ExternalSyncConfigTest, AssignedToItselfItStaysAsItIs) {
    ExternalSyncConfig config = Published();
    const ExternalSyncConfig& itself = config;
    config = itself;
    ExpectPublished(config);
}

TEST(ExternalSyncConfigTest, TheDefaultVersionIsOneSharedText) {
    ExternalSyncConfig cleared = Published();
    cleared.Clear();
    EXPECT_EQ(ExternalSyncConfig().mostCurrentVersion.constData(), ExternalSyncConfig::DefaultVersion.constData());
    EXPECT_EQ(cleared.mostCurrentVersion.constData(), ExternalSyncConfig::DefaultVersion.constData());
}

TEST(ExternalSyncConfigTest, ADerivedRecordIsDestroyedThroughItsBase) {
    EXPECT_TRUE(std::has_virtual_destructor<ExternalSyncConfig>::value);
}

TEST(ExternalSyncConfigTest, TheFieldsLieInTheirOrder) {
    const ExternalSyncConfig config;
    const std::less<const void*> before;
    EXPECT_TRUE(before(&config, &config.syncFrequency));
    EXPECT_TRUE(before(&config.syncFrequency, &config.mostCurrentVersion));
    EXPECT_TRUE(before(&config.mostCurrentVersion, &config.installerUrl));
}

}  // namespace
