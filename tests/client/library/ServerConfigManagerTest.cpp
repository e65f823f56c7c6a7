#include "client/library/ServerConfigManager.h"

#include <gtest/gtest.h>

#include "host/core/SyncException.h"

namespace ovsync {
namespace library {

namespace {

TEST(ServerConfigManagerTest, GivesTheAccountWithTheId) {
    sync::config::ServerConfiguration first;
    first.baseUrl = QUrl(QStringLiteral("http://first/"));
    sync::config::ServerConfiguration second;
    second.baseUrl = QUrl(QStringLiteral("http://second/"));
    ServerConfigManager manager({{0, first}, {7, second}});
    EXPECT_EQ(manager.GetServerConfiguration(0).baseUrl, first.baseUrl);
    EXPECT_EQ(manager.GetServerConfiguration(7).baseUrl, second.baseUrl);
}

TEST(ServerConfigManagerTest, NamesAnIdThatItDoesNotKnow) {
    ServerConfigManager manager({});
    try {
        manager.GetServerConfiguration(3);
        FAIL();
    } catch (const sync::core::SyncException& error) {
        EXPECT_EQ(error.Utf8Message(), "There is no server account with the id 3");
    }
}

}  // namespace
}  // namespace library
}  // namespace ovsync
