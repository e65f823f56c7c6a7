#include "service/protocol/Address.h"

#include <gtest/gtest.h>

#include "service/protocol/HttpError.h"

namespace service::protocol {
namespace {

int StatusOfAddress(const std::string& urlPath) {
    try {
        Address::Parse(urlPath);
        return 0;
    } catch (const HttpError& error) {
        return error.Status();
    }
}

TEST(Address, IsAPathOrBeginsInAFolder) {
    EXPECT_EQ(Address::Parse("/a/b%20c/").path, "a/b c");
    EXPECT_FALSE(Address::Parse("/a/.ovs/folders/1").folder);
    const Address folder = Address::Parse("/.ovs/folders/a%20b");
    EXPECT_EQ(folder.folder, "a b");
    EXPECT_EQ(folder.path, "");
    const Address inside = Address::Parse("/%2Eovs//folders/1/.ovs/");
    EXPECT_EQ(inside.folder, "1");
    EXPECT_EQ(inside.path, ".ovs");
}

TEST(Address, IdThatCannotBeReadIsNobodys) {
    EXPECT_EQ(Address::Parse("/.ovs/folders").folder, "");
    EXPECT_EQ(Address::Parse("/.ovs/folders//").folder, "");
    EXPECT_EQ(Address::Parse("/.ovs/folders/%zz/").folder, "");
    EXPECT_EQ(Address::Parse("/.ovs/folders/%2F").folder, "/");
    EXPECT_EQ(Address::Parse("/.ovs/folders/..").folder, "..");
}

TEST(Address, OneIsTheSyncConfigurations) {
    EXPECT_TRUE(Address::IsOfSyncConfiguration("/.ovs/sync-config.xml"));
    EXPECT_TRUE(Address::IsOfSyncConfiguration("//%2eovs/sync%2Dconfig.xml/"));
    EXPECT_FALSE(Address::IsOfSyncConfiguration("/.ovs"));
    EXPECT_FALSE(Address::IsOfSyncConfiguration("/.ovs/sync-config.xml/a"));
    EXPECT_FALSE(Address::IsOfSyncConfiguration("/a/sync-config.xml"));
    EXPECT_FALSE(Address::IsOfSyncConfiguration("/.ovs%2Fsync-config.xml"));
    EXPECT_EQ(StatusOfAddress("/.ovs/sync-config.xml"), 403) << "it is no resource's";
}

TEST(Address, ThatCannotBeIsRefused) {
    EXPECT_EQ(StatusOfAddress("/.ovs"), 403);
    EXPECT_EQ(StatusOfAddress("/.ovs/other/1"), 403);
    EXPECT_EQ(StatusOfAddress("/.ovs/folders/1/a/b"), 403);
    EXPECT_EQ(StatusOfAddress("/.ovs/folders/1/.."), 400);
    EXPECT_EQ(StatusOfAddress("/.ovs/folders/1/%"), 400);
    EXPECT_EQ(StatusOfAddress("/.ovs/folders/1/" + std::string(256, 'n')), 414);
}

}  // namespace
}  // namespace service::protocol
