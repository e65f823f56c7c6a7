#include "client/cli/output/FileFormat.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <nlohmann/json.hpp>

#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::output::FieldLines;
using ovsync::output::JsonObject;
using ovsync::output::LongLine;
using ovsync::output::Output;
using sync::config::FileConfiguration;
using tests::Text;

FileConfiguration File() {
    FileConfiguration file;
    file.name = Text("r\xC3\xA9sum\xC3\xA9.pdf");
    file.serverPath = Text("Projects/r\xC3\xA9sum\xC3\xA9.pdf");
    file.size = 1234;
    file.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(1763633730000, Qt::UTC);
    file.customProperties.insert(Text("version"), Text("7"));
    file.customProperties.insert(Text("resourceId"), Text("17"));
    file.customProperties.insert(Text("visibility"), Text("1"));
    file.versionId = Text("v7");
    return file;
}

TEST(FileFormatTest, ALongLineHasSizeDateVersionAndName) {
    EXPECT_EQ(LongLine(File(), Output()),
              QByteArray("        1234  2025-11-20T10:15:30Z     7  r\xC3\xA9sum\xC3\xA9.pdf\n"));
}

TEST(FileFormatTest, DatesAreShownInUtcWhateverTheirZone) {
    FileConfiguration file = File();
    file.lastModifiedDate = QDateTime(QDate(2024, 2, 29), QTime(1, 2, 3), Qt::OffsetFromUTC, 2 * 60 * 60);
    EXPECT_TRUE(LongLine(file, Output()).contains("  2024-02-28T23:02:03Z  "));
}

TEST(FileFormatTest, ALongLineOfAServerWithoutVersionsAndDatesHasDashes) {
    FileConfiguration file = File();
    file.lastModifiedDate = QDateTime();
    file.versionId.clear();
    file.customProperties.insert(Text("version"), Text("0"));
    EXPECT_EQ(LongLine(file, Output()),
              QByteArray("        1234  -                        -  r\xC3\xA9sum\xC3\xA9.pdf\n"));
}

TEST(FileFormatTest, SizesThatRecordsHoldAsNegativeNumbersAreShownAsTheyAre) {
    FileConfiguration file = File();
    file.size = -1073741824;
    EXPECT_TRUE(LongLine(file, Output()).contains("3221225472"));
    EXPECT_EQ(nlohmann::json::parse(JsonObject(file).constData())["size"], 3221225472);
    file.size = Q_INT64_C(-2147483648);
    EXPECT_TRUE(LongLine(file, Output()).contains(" 2147483648"));
}

TEST(FileFormatTest, ASizeThatDidNotFitIsNotMadeUp) {
    FileConfiguration file = File();
    file.size = -1;
    EXPECT_TRUE(LongLine(file, Output()).contains(">=4294967295"));
    EXPECT_TRUE(nlohmann::json::parse(JsonObject(file).constData())["size"].is_null());
}

TEST(FileFormatTest, JsonHasTheFieldsThatTheRecordHas) {
    FileConfiguration file = File();
    file.md5Checksum = Text("0123456789abcdef0123456789abcdef");
    file.setSyncOptionPersistentAcrossMachines(QStringList() << Text("a") << Text("b"));
    const nlohmann::json json = nlohmann::json::parse(JsonObject(file).constData());
    const nlohmann::json expected = {{"type", "file"},
                                     {"name", "r\xC3\xA9sum\xC3\xA9.pdf"},
                                     {"serverPath", "Projects/r\xC3\xA9sum\xC3\xA9.pdf"},
                                     {"size", 1234},
                                     {"modified", "2025-11-20T10:15:30Z"},
                                     {"version", 7},
                                     {"versionId", "v7"},
                                     {"resourceId", 17},
                                     {"hidden", false},
                                     {"md5", "0123456789abcdef0123456789abcdef"},
                                     {"syncOptions", {"a", "b"}}};
    EXPECT_EQ(json, expected);
}

TEST(FileFormatTest, JsonEscapesWhatANameMayHold) {
    FileConfiguration file = File();
    file.name = Text("quote\" line\nfeed \x1B[31m");
    const QByteArray line = JsonObject(file);
    EXPECT_FALSE(line.contains('\n'));
    EXPECT_FALSE(line.contains('\x1B'));
    EXPECT_EQ(nlohmann::json::parse(line.constData())["name"], "quote\" line\nfeed \x1B[31m");
}

TEST(FileFormatTest, FieldLinesLeaveOutWhatIsNotKnown) {
    const QByteArray lines = FieldLines(File(), Output());
    EXPECT_TRUE(lines.contains("Name              r\xC3\xA9sum\xC3\xA9.pdf\n"));
    EXPECT_TRUE(lines.contains("Version           7\n"));
    EXPECT_TRUE(lines.contains("Hidden            no\n"));
    EXPECT_FALSE(lines.contains("MD5"));
    EXPECT_FALSE(lines.contains("Created"));
}

TEST(FileFormatTest, AHiddenFileIsShownAsSuch) {
    FileConfiguration file = File();
    file.customProperties.insert(Text("visibility"), Text("0"));
    EXPECT_TRUE(FieldLines(file, Output()).contains("Hidden            yes\n"));
    EXPECT_EQ(nlohmann::json::parse(JsonObject(file).constData())["hidden"], true);
}

}  // namespace
