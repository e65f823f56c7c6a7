#include "client/cli/output/ListingOutput.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <QTemporaryFile>
#include <nlohmann/json.hpp>

#include "tests/fakes/Printers.h"

namespace {

using ovsync::output::ListFormat;
using ovsync::output::Output;
using ovsync::output::WriteEntries;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

/// What WriteEntries sends to standard output for folders and files of these names.
QByteArray Written(const QStringList& folderNames, const QStringList& fileNames, ListFormat format) {
    QVector<FolderConfiguration> folders;
    for (const QString& name : folderNames) {
        FolderConfiguration folder;
        folder.name = name;
        folders.append(folder);
    }
    QVector<FileConfiguration> files;
    for (const QString& name : fileNames) {
        FileConfiguration file;
        file.name = name;
        files.append(file);
    }
    QTemporaryFile written;
    EXPECT_TRUE(written.open());
    const int saved = dup(STDOUT_FILENO);
    dup2(written.handle(), STDOUT_FILENO);
    Output output;
    WriteEntries(folders, files, format, output);
    output.Flush();
    dup2(saved, STDOUT_FILENO);
    close(saved);
    written.seek(0);
    return written.readAll();
}

QStringList Names(const char* names) {
    return QString::fromUtf8(names).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

TEST(EntriesTest, FoldersAndFilesAreWrittenInOneNameOrder) {
    EXPECT_EQ(Written(Names("b d"), Names("a c e"), ListFormat::Names), QByteArray("a\nb/\nc\nd/\ne\n"));
    EXPECT_EQ(Written(Names("a z"), Names("m"), ListFormat::Names), QByteArray("a/\nm\nz/\n"));
    EXPECT_EQ(Written(Names(""), Names("m"), ListFormat::Names), QByteArray("m\n"));
    EXPECT_EQ(Written(Names("m"), Names(""), ListFormat::Names), QByteArray("m/\n"));
}

TEST(EntriesTest, JsonIsOneArrayOfBoth) {
    const auto json = nlohmann::json::parse(Written(Names("b"), Names("a c"), ListFormat::Json).constData());
    ASSERT_EQ(json.size(), 3U);
    EXPECT_EQ(json[0]["type"], "file");
    EXPECT_EQ(json[1]["type"], "folder");
    EXPECT_EQ(json[1]["name"], "b");
    EXPECT_EQ(json[2]["name"], "c");
    EXPECT_EQ(Written({}, {}, ListFormat::Json), QByteArray("[]"));
}

}  // namespace
