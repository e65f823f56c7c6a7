#include "client/sync/pass/RemoteVersion.h"

#include <gtest/gtest.h>

#include "tests/fakes/Text.h"

namespace {

using ovsync::pass::HasIdentity;
using ovsync::pass::IdentityOf;
using ovsync::pass::IsContentOf;
using ovsync::pass::IsOfVersion;
using ovsync::pass::LikelySize;
using ovsync::pass::ListedSize;
using ovsync::pass::SizeLimit;
using sync::config::FileConfiguration;
using tests::Text;

const qint64 GiB = Q_INT64_C(1) << 30;

TEST(VersionTest, SizesAreListedInThirtyTwoBitsWithASign) {
    EXPECT_EQ(ListedSize(0), 0);
    EXPECT_EQ(ListedSize(2 * GiB - 1), 2 * GiB - 1);
    EXPECT_EQ(ListedSize(2 * GiB), -2 * GiB);
    EXPECT_EQ(ListedSize(4 * GiB - 1), -1);
    EXPECT_EQ(ListedSize(4 * GiB), -1);
    EXPECT_EQ(ListedSize(400 * GiB), -1);
    EXPECT_EQ(ListedSize(-2 * GiB), -2 * GiB);
    EXPECT_EQ(LikelySize(ListedSize(3 * GiB)), 3 * GiB);
}

TEST(VersionTest, ContentEndsALittlePastTheListedSizeUnlessItsOwnSizeFitsTheListing) {
    const qint64 excess = qint64(64) * 1024;
    EXPECT_EQ(SizeLimit(2, -1), 2 + excess);
    EXPECT_EQ(SizeLimit(2, 2), 2);
    EXPECT_EQ(SizeLimit(2, 3), 2 + excess);
    EXPECT_EQ(SizeLimit(-GiB, -1), 3 * GiB + excess);
    EXPECT_EQ(SizeLimit(-GiB, 3 * GiB), 3 * GiB);
    EXPECT_EQ(SizeLimit(-1, 5 * GiB), 5 * GiB);
    EXPECT_GT(SizeLimit(-1, -1), 400 * GiB);
}

TEST(VersionTest, ContentIsComparedWithTheListedSizeAndTheChecksum) {
    FileConfiguration file;
    file.size = -GiB;
    EXPECT_TRUE(IsContentOf(file, 3 * GiB, Text("x")));
    EXPECT_FALSE(IsContentOf(file, GiB, Text("x")));
    file.size = -1;
    EXPECT_TRUE(IsContentOf(file, 5 * GiB, QString()));
    file.md5Checksum = Text("AB");
    EXPECT_TRUE(IsContentOf(file, 5 * GiB, Text("ab")));
    EXPECT_FALSE(IsContentOf(file, 5 * GiB, Text("ac")));
    EXPECT_TRUE(IsContentOf(file, 5 * GiB, QString()));
}

TEST(VersionTest, AVersionIsKnownByItsIds) {
    FileConfiguration file;
    file.itemId = Text("1");
    file.versionId = Text("1-2");
    file.md5Checksum = Text("AB");
    file.size = 3;
    FileConfiguration other = file;
    other.size = 4;
    other.lastModifiedDate = QDateTime::fromSecsSinceEpoch(1);
    other.md5Checksum = Text("ab");
    EXPECT_EQ(IdentityOf(file), IdentityOf(other));
    other.itemId = Text("2");
    EXPECT_NE(IdentityOf(file), IdentityOf(other));
    other = file;
    other.versionId = Text("1-3");
    EXPECT_NE(IdentityOf(file), IdentityOf(other));
    other = file;
    other.md5Checksum = Text("cd");
    EXPECT_NE(IdentityOf(file), IdentityOf(other));
}

TEST(VersionTest, WithoutIdsItIsKnownByDateAndSize) {
    FileConfiguration file;
    file.itemId = Text("path:a");
    file.size = 5 * GiB;
    file.lastModifiedDate = QDateTime::fromSecsSinceEpoch(1);
    FileConfiguration other = file;
    other.size = -1;
    EXPECT_EQ(IdentityOf(file), IdentityOf(other));
    other.size = 1;
    EXPECT_NE(IdentityOf(file), IdentityOf(other));
    other = file;
    other.lastModifiedDate = QDateTime();
    EXPECT_NE(IdentityOf(file), IdentityOf(other));
}

TEST(VersionTest, ItIsKnownAlsoByWhatItWasKnownByBeforeItHadATag) {
    FileConfiguration untagged;
    untagged.size = 3;
    untagged.lastModifiedDate = QDateTime::fromSecsSinceEpoch(1);
    FileConfiguration tagged = untagged;
    tagged.versionId = Text("\"3-1\"");
    EXPECT_TRUE(HasIdentity(tagged, IdentityOf(tagged)));
    EXPECT_TRUE(HasIdentity(tagged, IdentityOf(untagged)));
    EXPECT_FALSE(HasIdentity(untagged, IdentityOf(tagged)));
    FileConfiguration later = tagged;
    later.lastModifiedDate = QDateTime::fromSecsSinceEpoch(2);
    EXPECT_FALSE(HasIdentity(later, IdentityOf(untagged)));
    // A version of the service itself never had none.
    tagged.versionId = Text("1-2");
    EXPECT_FALSE(HasIdentity(tagged, IdentityOf(untagged)));
}

TEST(VersionTest, ItIsKnownAlsoByWhatItWasKnownByBeforeItsChecksumWasComputed) {
    FileConfiguration before;
    before.itemId = Text("a-1");
    before.versionId = Text("a-1-2");
    FileConfiguration now = before;
    now.md5Checksum = Text("0123456789abcdef0123456789abcdef");
    EXPECT_TRUE(IsOfVersion(now, IdentityOf(before)));
    EXPECT_TRUE(IsOfVersion(before, IdentityOf(now)));
    FileConfiguration other = now;
    other.md5Checksum = Text("fedcba9876543210fedcba9876543210");
    EXPECT_FALSE(IsOfVersion(now, IdentityOf(other)));
    other = now;
    other.versionId = Text("a-1-3");
    EXPECT_FALSE(IsOfVersion(other, IdentityOf(before)));
    other.itemId = Text("a-2");
    EXPECT_FALSE(IsOfVersion(other, IdentityOf(before)));
    // Without a version nothing says that the checksum is that of the same content.
    before.versionId.clear();
    now.versionId.clear();
    EXPECT_FALSE(IsOfVersion(now, IdentityOf(before)));
}

}  // namespace
