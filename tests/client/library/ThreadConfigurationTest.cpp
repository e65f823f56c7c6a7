#include "client/library/ServiceConnection.h"

#include <gtest/gtest.h>

#include <thread>

#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::library::ServiceConnection;
using sync::factory::ConfigurationFactory;
using tests::Text;

QUrl UrlHere() {
    return ConfigurationFactory().CreateServerConfigManager()->GetServerConfiguration(1).baseUrl;
}

TEST(ThreadConfigurationTest, EachThreadHasTheAccountOfItsOwnConnection) {
    const ServiceConnection here(QUrl(Text("http://here.test/")));
    QUrl there;
    std::thread([&there] {
        const ServiceConnection connection(QUrl(Text("http://there.test/")));
        there = UrlHere();
    }).join();
    EXPECT_EQ(there, QUrl(Text("http://there.test/")));
    EXPECT_EQ(UrlHere(), QUrl(Text("http://here.test/")));
}

TEST(ThreadConfigurationTest, AThreadWithoutAConnectionHasNone) {
    const ServiceConnection here(QUrl(Text("http://here.test/")));
    std::thread([] { EXPECT_THROW(UrlHere(), sync::core::SyncException); }).join();
}

TEST(ThreadConfigurationTest, IsGoneWithTheLastConnection) {
    { const ServiceConnection here(QUrl(Text("http://here.test/"))); }
    EXPECT_THROW(UrlHere(), sync::core::SyncException);
}

}  // namespace
