#include "client/cli/output/ProgressLine.h"

#include <gtest/gtest.h>

#include "tests/fakes/Printers.h"

namespace {

using ovsync::output::ProgressLine;
using ovsync::output::SizeText;
using ovsync::report::SyncProgress;
using std::chrono::milliseconds;

TEST(ProgressLineTest, TellsFilesBytesTheRateAndTheTimeLeft) {
    SyncProgress progress;
    progress.doneFiles = 1;
    progress.allFiles = 4;
    progress.doneBytes = 1024;
    progress.allBytes = 4096;
    EXPECT_EQ(ProgressLine(progress, milliseconds(2000)),
              QByteArray("[======                  ] 1/4 files, 1.0 KiB of 4.0 KiB, 512 B/s, 6 s left"));
    progress.doneBytes = progress.allBytes;
    EXPECT_EQ(ProgressLine(progress, milliseconds(2000)),
              QByteArray("[========================] 1/4 files, 4.0 KiB of 4.0 KiB, 2.0 KiB/s, 0 s left"));
}

TEST(ProgressLineTest, KnowsNoRateBeforeAnythingCame) {
    SyncProgress progress;
    progress.allFiles = 1;
    progress.allBytes = 10;
    EXPECT_EQ(ProgressLine(progress, milliseconds(0)),
              QByteArray("[                        ] 0/1 files, 0 B of 10 B, 0 B/s"));
}

TEST(ProgressLineTest, MoreThanWasListedIsStillOneWhole) {
    SyncProgress progress;
    progress.doneBytes = 20;
    progress.allBytes = 10;
    EXPECT_EQ(ProgressLine(progress, milliseconds(1000)),
              QByteArray("[========================] 0/0 files, 20 B of 20 B, 20 B/s, 0 s left"));
}

TEST(ProgressLineTest, SizesAreShortened) {
    EXPECT_EQ(SizeText(1023), QByteArray("1023 B"));
    EXPECT_EQ(SizeText(1536), QByteArray("1.5 KiB"));
    EXPECT_EQ(SizeText(Q_INT64_C(5) << 40), QByteArray("5.0 TiB"));
    EXPECT_EQ(SizeText(Q_INT64_C(4) << 60), QByteArray("4096.0 PiB"));
}

}  // namespace
