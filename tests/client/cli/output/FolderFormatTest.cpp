#include "client/cli/output/FolderFormat.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::output::FieldLines;
using ovsync::output::JsonObject;
using ovsync::output::LongLine;
using ovsync::output::Output;
using sync::config::FolderConfiguration;
using tests::Text;

FolderConfiguration Folder() {
    FolderConfiguration folder;
    folder.name = Text("r\xC3\xA9sum\xC3\xA9s");
    folder.serverPath = Text("Projects/r\xC3\xA9sum\xC3\xA9s");
    folder.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(1763633730000, Qt::UTC);
    folder.resourceId = Text("17");
    folder.ownerId = Text("ann");
    folder.setPrivileges(Text("rw"));
    folder.setServerFolderId(Text("id-17"));
    return folder;
}

TEST(FolderFormatTest, ALongLineHasDashesForSizeAndVersion) {
    EXPECT_EQ(LongLine(Folder(), Output()),
              QByteArray("           -  2025-11-20T10:15:30Z     -  r\xC3\xA9sum\xC3\xA9s/\n"));
    FolderConfiguration undated = Folder();
    undated.lastModifiedDate = QDateTime();
    EXPECT_EQ(LongLine(undated, Output()),
              QByteArray("           -  -                        -  r\xC3\xA9sum\xC3\xA9s/\n"));
}

TEST(FolderFormatTest, FieldLinesHaveWhatTheRecordHas) {
    EXPECT_EQ(FieldLines(Folder(), Output()), QByteArray("Name              r\xC3\xA9sum\xC3\xA9s/\n"
                                                         "Server path       Projects/r\xC3\xA9sum\xC3\xA9s\n"
                                                         "Modified          2025-11-20T10:15:30Z\n"
                                                         "Resource id       17\n"
                                                         "Folder id         id-17\n"
                                                         "Owner             ann\n"
                                                         "Privileges        rw\n"));
    EXPECT_EQ(FieldLines(FolderConfiguration(), Output()), QByteArray("Name              /\n"));
}

TEST(FolderFormatTest, JsonHasWhatTheRecordHas) {
    const nlohmann::json expected = {{"type", "folder"},
                                     {"name", "r\xC3\xA9sum\xC3\xA9s"},
                                     {"serverPath", "Projects/r\xC3\xA9sum\xC3\xA9s"},
                                     {"modified", "2025-11-20T10:15:30Z"},
                                     {"resourceId", 17},
                                     {"folderId", "id-17"},
                                     {"ownerId", "ann"},
                                     {"privileges", "rw"}};
    EXPECT_EQ(nlohmann::json::parse(JsonObject(Folder()).constData()), expected);
    EXPECT_EQ(nlohmann::json::parse(JsonObject(FolderConfiguration()).constData()),
              (nlohmann::json{{"type", "folder"}, {"name", ""}, {"serverPath", ""}}));
}

}  // namespace
