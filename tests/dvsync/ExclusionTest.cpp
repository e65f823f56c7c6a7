#include "dvsync/Exclusion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/Contract.h"
#include "tests/fakes/Text.h"

namespace {

using sync::dv::dvsync::IsFileExcluded;
using sync::dv::dvsync::IsFolderPathExcluded;
using testing::_;
using testing::InSequence;
using testing::Return;
using testing::StrictMock;
using tests::Text;

class ExclusionTest : public testing::Test {
protected:
    const std::shared_ptr<StrictMock<tests::MockSyncFilter>> _files =
        std::make_shared<StrictMock<tests::MockSyncFilter>>();
    const std::shared_ptr<StrictMock<tests::MockSyncFilter>> _folders =
        std::make_shared<StrictMock<tests::MockSyncFilter>>();
};

TEST_F(ExclusionTest, AnEmptyPathIsNotExcludedAndAsksNobody) {
    EXPECT_FALSE(IsFolderPathExcluded(_folders, Text("")));
}

TEST_F(ExclusionTest, EveryComponentIsAskedForInOrderEmptyOnesToo) {
    const InSequence inOrder;
    EXPECT_CALL(*_folders, IsFolderExcluded(Text("a"), 2)).WillOnce(Return(false));
    EXPECT_CALL(*_folders, IsFolderExcluded(Text(""), 2)).WillOnce(Return(false));
    EXPECT_CALL(*_folders, IsFolderExcluded(Text("b"), 2)).WillOnce(Return(false));
    EXPECT_FALSE(IsFolderPathExcluded(_folders, Text("a//b")));
}

TEST_F(ExclusionTest, ASlashAtEitherEndIsAnEmptyComponent) {
    const InSequence inOrder;
    EXPECT_CALL(*_folders, IsFolderExcluded(Text(""), 2)).WillOnce(Return(false));
    EXPECT_CALL(*_folders, IsFolderExcluded(Text("a"), 2)).WillOnce(Return(false));
    EXPECT_CALL(*_folders, IsFolderExcluded(Text(""), 2)).WillOnce(Return(true));
    EXPECT_TRUE(IsFolderPathExcluded(_folders, Text("/a/")));
}

TEST_F(ExclusionTest, TheFirstExcludedComponentEndsTheQuestion) {
    const InSequence inOrder;
    EXPECT_CALL(*_folders, IsFolderExcluded(Text("a"), 2)).WillOnce(Return(false));
    EXPECT_CALL(*_folders, IsFolderExcluded(Text("b"), 2)).WillOnce(Return(true));
    EXPECT_TRUE(IsFolderPathExcluded(_folders, Text("a/b/c")));
}

TEST_F(ExclusionTest, AFileWithoutADirectoryIsTestedByItsNameAndSizeAlone) {
    EXPECT_CALL(*_files, IsFileExcluded(Text("f.txt"), Q_INT64_C(5000000000), 2)).WillOnce(Return(true));
    EXPECT_TRUE(IsFileExcluded(_files, _folders, Text("f.txt"), Q_INT64_C(5000000000)));
    EXPECT_CALL(*_files, IsFileExcluded(Text(""), Q_INT64_C(-1), 2)).WillOnce(Return(false));
    EXPECT_FALSE(IsFileExcluded(_files, _folders, Text(""), Q_INT64_C(-1)));
}

TEST_F(ExclusionTest, AFileInADirectoryIsTestedAfterIt) {
    const InSequence inOrder;
    EXPECT_CALL(*_folders, IsFolderExcluded(Text("a"), 2)).WillOnce(Return(false));
    EXPECT_CALL(*_folders, IsFolderExcluded(Text(""), 2)).WillOnce(Return(false));
    EXPECT_CALL(*_files, IsFileExcluded(Text("f.txt"), 1, 2)).WillOnce(Return(false));
    EXPECT_FALSE(IsFileExcluded(_files, _folders, Text("a/f.txt"), 1));
}

TEST_F(ExclusionTest, AFileDeepDownIsTestedAfterEveryDirectory) {
    const InSequence inOrder;
    for (const char* component : {"", "a", "b", ""}) {
        EXPECT_CALL(*_folders, IsFolderExcluded(Text(component), 2)).WillOnce(Return(false));
    }
    EXPECT_CALL(*_files, IsFileExcluded(Text("f"), 1, 2)).WillOnce(Return(true));
    EXPECT_TRUE(IsFileExcluded(_files, _folders, Text("/a/b/f"), 1));
}

TEST_F(ExclusionTest, AFileInAnExcludedDirectoryIsNotTestedItself) {
    EXPECT_CALL(*_folders, IsFolderExcluded(_, 2)).WillOnce(Return(true));
    EXPECT_TRUE(IsFileExcluded(_files, _folders, Text("a/f.txt"), 1));
}

}  // namespace
