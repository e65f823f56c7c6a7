#include "dvsync/TransferTexts.h"

#include <gtest/gtest.h>

#include "tests/fakes/Text.h"

namespace {

using tests::Text;

TEST(TransferTextsTest, AreThoseThatHostsKnow) {
    EXPECT_EQ(sync::dv::dvsync::SyncTempSuffix, Text(".{SyncTemp}"));
    EXPECT_EQ(sync::dv::dvsync::SyncBackupSuffix, Text(".{SyncBackup}"));
    EXPECT_EQ(sync::dv::dvsync::BaseMark, Text("BASE"));
    EXPECT_EQ(sync::dv::dvsync::TmpMark, Text("TMP"));
    EXPECT_EQ(sync::dv::dvsync::DeltaMark, Text("DELTA"));
}

}  // namespace
