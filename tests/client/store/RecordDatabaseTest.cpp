#include "client/store/RecordDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <functional>

#include "client/store/FileConfigManager.h"
#include "client/store/StoreError.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::store::FileConfigManager;
using ovsync::store::FileRecord;
using ovsync::store::Placement;
using ovsync::store::RecordChanges;
using ovsync::store::RecordDatabase;
using ovsync::store::StoreError;
using testing::HasSubstr;
using tests::Text;

FileRecord Record(const char* path) {
    FileRecord record;
    record.path = Text(path);
    record.file.serverId = 3;
    record.file.name = Text("n\xC3\xA9");
    record.file.serverPath = Text("S/x");
    record.file.attribute = Text("a");
    record.file.md5Checksum = Text("0cc175b9c0f1b6a831c399e269772661");
    record.file.createdDate = QDateTime::fromMSecsSinceEpoch(-5, Qt::UTC);
    record.file.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(1234567890123, Qt::UTC);
    record.file.size = -2;
    for (const char* key : {"version", "versionId", "resourceId", "visibility"}) {
        record.file.customProperties.insert(Text(key), Text(key));
    }
    record.file.ownerId = Text("ann");
    record.file.itemId = Text("i-1");
    record.file.versionId = Text("i-1-2");
    record.file.setPrivileges(Text("rw"));
    record.file.setSyncOptionPersistentAcrossMachines({Text("a"), Text("b")});
    record.local.inode = ~quint64(0);
    record.local.size = Q_INT64_C(5000000000);
    record.local.modified = 1;
    record.local.changed = 2;
    record.contentMd5 = Text("m");
    return record;
}

class RecordDatabaseTest : public testing::Test {
protected:
    QString Root() const { return _folder.path(); }
    QString File() const { return Root() + Text("/.ovsync/records.db"); }

    std::string ErrorOfOpening(RecordDatabase::Access access = RecordDatabase::Access::Change) {
        try {
            RecordDatabase(Root(), access).Check();
        } catch (const StoreError& e) {
            return e.what();
        }
        return "none";
    }

    void Run(const char* sql) {
        sqlite3* handle = nullptr;
        ASSERT_EQ(sqlite3_open(File().toUtf8().constData(), &handle), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(handle, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(handle);
        sqlite3_close(handle);
    }

    QByteArray Bytes() {
        QFile file(File());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

private:
    QTemporaryDir _folder;
};

/// SQLite's own way to the disk, that tells what it is about to open.
class Opening {
public:
    explicit Opening(const std::function<void(int flags)>& onOpen) {
        _onOpen = onOpen;
        _original = sqlite3_vfs_find(nullptr);
        _told = *_original;
        _told.zName = "told";
        _told.xOpen = [](sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
            _onOpen(flags);
            return _original->xOpen(_original, name, file, flags, outFlags);
        };
        sqlite3_vfs_register(&_told, 1);
    }
    ~Opening() {
        sqlite3_vfs_unregister(&_told);
        sqlite3_vfs_register(_original, 1);
    }
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

private:
    static std::function<void(int flags)> _onOpen;
    static sqlite3_vfs* _original;
    static sqlite3_vfs _told;
};
std::function<void(int flags)> Opening::_onOpen;
sqlite3_vfs* Opening::_original = nullptr;
sqlite3_vfs Opening::_told;

TEST_F(RecordDatabaseTest, AFolderThatComesInThePlaceWhileItIsOpenedIsNotTakenForTheSame) {
    const QTemporaryDir all;
    const QString root = all.filePath(Text("root"));
    const auto pathsIn = [](const QString& folder) {
        return RecordDatabase(folder, RecordDatabase::Access::Change).FilePaths();
    };
    const auto rename = [&all](const char* from, const char* to) {
        ASSERT_TRUE(QDir(all.path()).rename(QLatin1String(from), QLatin1String(to)));
    };
    for (const char* name : {"root", "other"}) {
        ASSERT_TRUE(QDir(all.path()).mkdir(Text(name)));
        RecordDatabase(all.filePath(Text(name)), RecordDatabase::Access::Change).WriteFile(Record(name));
    }
    for (const int kind : {SQLITE_OPEN_MAIN_DB, SQLITE_OPEN_WAL}) {
        bool isSwapped = false;
        {
            const Opening opening([&](int flags) {
                if (!isSwapped && (flags & kind) != 0) {
                    isSwapped = true;
                    rename("root", "away");
                    rename("other", "root");
                }
            });
            EXPECT_THROW(RecordDatabase(root, RecordDatabase::Access::Change), StoreError) << kind;
        }
        ASSERT_TRUE(isSwapped);
        EXPECT_EQ(pathsIn(root), QStringList(Text("other")));
        rename("root", "other");
        rename("away", "root");
        EXPECT_EQ(pathsIn(root), QStringList(Text("root")));
    }
}

TEST_F(RecordDatabaseTest, ARecordComesBackAsItWas) {
    RecordDatabase(Root(), RecordDatabase::Access::Change).WriteFile(Record("a/\xC3\xA9"));
    RecordDatabase database(Root(), RecordDatabase::Access::Change);
    const FileRecord written = Record("a/\xC3\xA9");
    const std::optional<FileRecord> read = database.FindFile(written.path);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->path, written.path);
    EXPECT_EQ(read->file.serverId, written.file.serverId);
    EXPECT_EQ(read->file.name, written.file.name);
    EXPECT_EQ(read->file.serverPath, written.file.serverPath);
    EXPECT_EQ(read->file.attribute, written.file.attribute);
    EXPECT_EQ(read->file.md5Checksum, written.file.md5Checksum);
    EXPECT_EQ(read->file.createdDate, written.file.createdDate);
    EXPECT_EQ(read->file.lastModifiedDate, written.file.lastModifiedDate);
    EXPECT_EQ(read->file.size, written.file.size);
    EXPECT_EQ(read->file.customProperties, written.file.customProperties);
    EXPECT_EQ(read->file.ownerId, written.file.ownerId);
    EXPECT_EQ(read->file.itemId, written.file.itemId);
    EXPECT_EQ(read->file.versionId, written.file.versionId);
    EXPECT_FALSE(read->file.linksExtractedAtTime.isValid());
    EXPECT_EQ(read->file.getPrivileges(), written.file.getPrivileges());
    EXPECT_EQ(read->file.getSyncOptionPersistentAcrossMachines(), written.file.getSyncOptionPersistentAcrossMachines());
    EXPECT_EQ(read->local.inode, written.local.inode);
    EXPECT_EQ(read->local.size, written.local.size);
    EXPECT_EQ(read->local.modified, written.local.modified);
    EXPECT_EQ(read->local.changed, written.local.changed);
    EXPECT_EQ(read->contentMd5, written.contentMd5);
}

TEST_F(RecordDatabaseTest, ARecordIsReplacedAndForgotten) {
    RecordDatabase database(Root(), RecordDatabase::Access::Change);
    database.WriteFile(Record("a"));
    FileRecord changed = Record("a");
    changed.file.size = 7;
    database.WriteFile(changed);
    EXPECT_EQ(database.FilePaths(), QStringList(Text("a")));
    EXPECT_EQ(database.FindFile(Text("a"))->file.size, 7);
    EXPECT_FALSE(database.FindFile(Text("A")));
    database.ForgetFile(Text("a"));
    EXPECT_FALSE(database.FindFile(Text("a")));
}

TEST_F(RecordDatabaseTest, PlacementsCopiesFoldersAndSettingsComeBack) {
    Placement placement;
    placement.temporary = Text("t");
    placement.record = Record("p");
    placement.isRemoval = true;
    placement.old.inode = 1;
    placement.old.size = 2;
    placement.old.modified = 3;
    {
        RecordDatabase database(Root(), RecordDatabase::Access::Change);
        database.WritePlacement(placement);
        database.WriteCopy({Text("copy"), Text("path"), Text("identity\n1"), Text("md5")});
        database.WriteFolder(Text("f/g"));
        database.WriteFolder(Text("f"));
        database.WriteFolder(Text("f"));
        database.WriteSetting(Text("s"), Text("1"));
        database.WriteSetting(Text("s"), Text("2"));
    }
    RecordDatabase database(Root(), RecordDatabase::Access::Change);
    ASSERT_EQ(database.Placements().size(), 1);
    const Placement read = database.Placements().first();
    EXPECT_EQ(read.temporary, placement.temporary);
    EXPECT_EQ(read.record.path, placement.record.path);
    EXPECT_EQ(read.record.contentMd5, placement.record.contentMd5);
    EXPECT_TRUE(read.isRemoval);
    EXPECT_EQ(read.old.inode, 1U);
    EXPECT_EQ(read.old.size, 2);
    EXPECT_EQ(read.old.modified, 3);
    ASSERT_EQ(database.Copies().size(), 1);
    EXPECT_EQ(database.Copies().first().identity, Text("identity\n1"));
    EXPECT_EQ(database.Copies().first().contentMd5, Text("md5"));
    EXPECT_EQ(database.Folders(), QStringList({Text("f"), Text("f/g")}));
    EXPECT_EQ(database.Setting(Text("s")), Text("2"));
    EXPECT_EQ(database.Setting(Text("other")), QString());

    database.ForgetPlacement(read);
    database.ForgetCopy(database.Copies().first());
    database.ForgetFolder(Text("f"));
    EXPECT_TRUE(database.Placements().isEmpty());
    EXPECT_TRUE(database.Copies().isEmpty());
    EXPECT_EQ(database.Folders(), QStringList(Text("f/g")));
}

TEST_F(RecordDatabaseTest, WhatWasNotCommittedIsUndone) {
    RecordDatabase database(Root(), RecordDatabase::Access::Change);
    {
        const RecordDatabase::Transaction transaction(database);
        database.WriteFile(Record("a"));
    }
    EXPECT_FALSE(database.FindFile(Text("a")));
    {
        RecordDatabase::Transaction transaction(database);
        database.WriteFile(Record("a"));
        transaction.Commit();
    }
    EXPECT_TRUE(database.FindFile(Text("a")));
}

TEST_F(RecordDatabaseTest, WhatIsWrittenDuringAReadingIsSeenAndStays) {
    for (const auto access : {RecordDatabase::Access::Change, RecordDatabase::Access::Try}) {
        RecordDatabase database(Root(), access);
        {
            const RecordDatabase::Reading reading(database);
            EXPECT_FALSE(database.FindFile(Text("a")));
            RecordChanges changes;
            changes.files.append(Record("a"));
            database.Write(changes);
            EXPECT_TRUE(database.FindFile(Text("a")));
            {
                const RecordDatabase::Transaction undone(database);
                database.ForgetFile(Text("a"));
            }
            EXPECT_TRUE(database.FindFile(Text("a")));
        }
        EXPECT_EQ(database.FilePaths(), QStringList(Text("a")));
        database.ForgetFile(Text("a"));
    }
    EXPECT_EQ(RecordDatabase(Root(), RecordDatabase::Access::Change).FilePaths(), QStringList());
}

TEST_F(RecordDatabaseTest, ChangesAreWrittenTogether) {
    RecordDatabase database(Root(), RecordDatabase::Access::Change);
    database.WriteFile(Record("old"));
    database.WriteFolder(Text("gone"));
    database.WriteCopy({Text("copy"), Text("old"), Text("i"), Text("m")});
    RecordChanges changes;
    changes.files = {Record("new"), Record("new"), Record("other")};
    changes.files[1].contentMd5 = Text("later");
    changes.folders = QStringList(Text("made"));
    changes.forgottenFiles = QStringList(Text("old"));
    changes.forgottenFolders = QStringList(Text("gone"));
    changes.forgottenCopies = database.Copies();
    database.Write(changes);
    QStringList paths = database.FilePaths();
    paths.sort();
    EXPECT_EQ(paths, QStringList({Text("new"), Text("other")}));
    EXPECT_EQ(database.FindFile(Text("new"))->contentMd5, Text("later"));
    EXPECT_EQ(database.Folders(), QStringList(Text("made")));
    EXPECT_TRUE(database.Copies().isEmpty());
}

TEST_F(RecordDatabaseTest, OnlyOneCanBeOpen) {
    {
        const RecordDatabase database(Root(), RecordDatabase::Access::Change);
        EXPECT_THAT(ErrorOfOpening(), HasSubstr("another process"));
        EXPECT_THAT(ErrorOfOpening(RecordDatabase::Access::Try), HasSubstr("another process"));
    }
    EXPECT_EQ(ErrorOfOpening(), "none");
}

TEST_F(RecordDatabaseTest, AProgramThatReadsTheDatabaseIsInTheWay) {
    ErrorOfOpening();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(File().toUtf8().constData(), &other), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(other, "BEGIN; SELECT * FROM files", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_THAT(ErrorOfOpening(), HasSubstr("another process"));
    sqlite3_close(other);
    EXPECT_EQ(ErrorOfOpening(), "none");
}

TEST_F(RecordDatabaseTest, WhereNothingMayBeWrittenThatIsTheReason) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root may write everywhere";
    }
    ErrorOfOpening();
    const QByteArray hidden = QFileInfo(File()).path().toUtf8();
    ASSERT_EQ(chmod(hidden.constData(), 0555), 0);
    EXPECT_THAT(ErrorOfOpening(), HasSubstr("records.db: Permission denied"));
    ASSERT_EQ(chmod(hidden.constData(), 0755), 0);
    EXPECT_EQ(ErrorOfOpening(), "none");
}

TEST_F(RecordDatabaseTest, ANewerFormatIsRefusedAndLeftAsItIs) {
    ErrorOfOpening();
    Run("PRAGMA user_version = 4");
    const QByteArray before = Bytes();
    EXPECT_THAT(ErrorOfOpening(), HasSubstr("newer version"));
    EXPECT_THAT(ErrorOfOpening(RecordDatabase::Access::Try), HasSubstr("newer version"));
    EXPECT_EQ(Bytes(), before);
}

TEST_F(RecordDatabaseTest, TheFirstFormatIsReadAndBecomesTheLast) {
    {
        RecordDatabase database(Root(), RecordDatabase::Access::Change);
        database.WriteFile(Record("f/a"));
        database.WriteSetting(Text("s"), Text("1"));
    }
    Run("DROP TABLE partial_downloads; DROP TABLE folders; CREATE TABLE folders (path TEXT PRIMARY KEY) WITHOUT ROWID;"
        "INSERT INTO folders VALUES ('f'), ('g'); PRAGMA user_version = 1");
    {
        // Neither needs the other.
        RecordDatabase trial(Root(), RecordDatabase::Access::Try);
        EXPECT_EQ(trial.Folders(), QStringList({Text("f"), Text("g")}));
    }
    for (int i = 0; i < 2; ++i) {
        RecordDatabase database(Root(), RecordDatabase::Access::Change);
        EXPECT_EQ(database.FindFile(Text("f/a"))->contentMd5, Text("m"));
        EXPECT_EQ(database.Setting(Text("s")), Text("1"));
        ASSERT_EQ(database.FolderRecords().size(), 2);
        EXPECT_EQ(database.FolderRecords().first().path, Text("f"));
        EXPECT_EQ(database.FolderRecords().first().inode, i == 0 ? 0U : 7U);
        EXPECT_EQ(database.FolderRecords().first().itemId, i == 0 ? QString() : Text("id"));
        EXPECT_EQ(database.PartialDownloads().size(), i);
        database.WritePartialDownload(
            {Text("f/b"), Text("f/.t"), Text("i"), Text("\"tag\""), Q_INT64_C(5000000000), Text("m")});
        database.WriteFolder({Text("f"), 7, Text("id")});
        // It keeps what is known of it.
        database.WriteFolder(Text("f"));
    }
}

TEST_F(RecordDatabaseTest, ThePartOfADownloadIsReadAsItWasWritten) {
    RecordDatabase database(Root(), RecordDatabase::Access::Change);
    database.WritePartialDownload({Text("a"), Text(".t"), Text("i"), Text("\"tag\""), 1, Text("m")});
    database.WritePartialDownload(
        {Text("a"), Text(".u"), Text("j\nk"), Text("\"t\xC3\xA9\""), Q_INT64_C(5000000000), Text("n")});
    ASSERT_EQ(database.PartialDownloads().size(), 1);
    const ovsync::store::PartialDownload part = database.PartialDownloads().first();
    EXPECT_EQ(part.path, Text("a"));
    EXPECT_EQ(part.temporary, Text(".u"));
    EXPECT_EQ(part.identity, Text("j\nk"));
    EXPECT_EQ(part.entityTag, Text("\"t\xC3\xA9\""));
    EXPECT_EQ(part.size, Q_INT64_C(5000000000));
    EXPECT_EQ(part.md5, Text("n"));
    database.ForgetPartialDownload(Text("a"));
    EXPECT_TRUE(database.PartialDownloads().isEmpty());
}

TEST_F(RecordDatabaseTest, WhatLiesInAFolderMovesWithIt) {
    RecordDatabase database(Root(), RecordDatabase::Access::Change);
    for (const char* path : {"f/a", "f/g/\xC3\xA9", "f.txt", "f0", "fg/a", "e/f/a"}) {
        FileRecord record = Record(path);
        record.file.serverPath = Text("S/") + record.path;
        record.file.name = Text("kept");
        database.WriteFile(record);
    }
    for (const char* path : {"e", "f", "f/g", "fg"}) {
        database.WriteFolder(Text(path));
    }
    EXPECT_EQ(database.FileCountBelow(Text("f")), 2);
    EXPECT_EQ(database.FileCountBelow(QString()), 6);
    database.WriteCopy({Text("f/a (1)"), Text("f/a"), Text("i"), Text("m")});
    database.WriteCopy({Text("f (1)"), Text("f0"), Text("i"), Text("m")});
    database.MoveTree(Text("f"), Text("e/n\xC3\xA9w"), Text("S/f"), Text("S/e/n\xC3\xA9w"));
    QStringList files = database.FilePaths();
    files.sort();
    EXPECT_EQ(files, QStringList({Text("e/f/a"), Text("e/n\xC3\xA9w/a"), Text("e/n\xC3\xA9w/g/\xC3\xA9"), Text("f.txt"),
                                  Text("f0"), Text("fg/a")}));
    EXPECT_EQ(database.Folders(), QStringList({Text("e"), Text("e/n\xC3\xA9w"), Text("e/n\xC3\xA9w/g"), Text("fg")}));
    const FileRecord moved = *database.FindFile(Text("e/n\xC3\xA9w/g/\xC3\xA9"));
    EXPECT_EQ(moved.file.serverPath, Text("S/e/n\xC3\xA9w/g/\xC3\xA9"));
    EXPECT_EQ(moved.file.name, Text("kept"));
    QStringList copies;
    for (const auto& copy : database.Copies()) {
        copies.append(copy.path + Text(" < ") + copy.copy);
    }
    copies.sort();
    EXPECT_EQ(copies, QStringList({Text("e/n\xC3\xA9w/a < e/n\xC3\xA9w/a (1)"), Text("f0 < f (1)")}));

    database.MoveTree(Text("f.txt"), Text("g.txt"), Text("S/f.txt"), Text("S/g.txt"));
    EXPECT_EQ(database.FindFile(Text("g.txt"))->file.name, Text("g.txt"));
    EXPECT_EQ(database.FindFile(Text("g.txt"))->file.serverPath, Text("S/g.txt"));
    EXPECT_FALSE(database.FindFile(Text("f.txt")));
}

TEST_F(RecordDatabaseTest, WhatLiesRightInAFolderIsTold) {
    RecordDatabase database(Root(), RecordDatabase::Access::Change);
    for (const char* path : {"a", "f/b", "f/g/c", "f0/d", "f.txt", "\xC3\xA9/e"}) {
        database.WriteFile(Record(path));
    }
    for (const char* path : {"f", "f/g", "f/g/h", "f0", "\xC3\xA9"}) {
        database.WriteFolder(Text(path));
    }
    const auto in = [&database](const char* folder) {
        QStringList paths = database.PathsIn(Text(folder));
        paths.sort();
        return paths;
    };
    EXPECT_EQ(in(""), QStringList({Text("a"), Text("f"), Text("f.txt"), Text("f0"), Text("\xC3\xA9")}));
    EXPECT_EQ(in("f"), QStringList({Text("f/b"), Text("f/g")}));
    EXPECT_EQ(in("f/g"), QStringList({Text("f/g/c"), Text("f/g/h")}));
    EXPECT_EQ(in("\xC3\xA9"), QStringList(Text("\xC3\xA9/e")));
    EXPECT_EQ(in("f/g/h"), QStringList());
}

TEST_F(RecordDatabaseTest, ADamagedDatabaseIsNamed) {
    ASSERT_TRUE(QDir(Root()).mkdir(Text(".ovsync")));
    QFile file(File());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(10000, 'x'));
    file.close();
    EXPECT_THAT(ErrorOfOpening(), HasSubstr("records.db: the records are damaged: file is not a database. Without"));
    EXPECT_EQ(Bytes(), QByteArray(10000, 'x'));
}

TEST_F(RecordDatabaseTest, DamageOfAnyPartIsFoundByTheCheck) {
    {
        RecordDatabase database(Root(), RecordDatabase::Access::Change);
        for (int i = 0; i < 200; ++i) {
            database.WriteFile(Record(QByteArray::number(i).constData()));
        }
    }
    EXPECT_EQ(ErrorOfOpening(), "none");
    QFile file(File());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(file.size() - 4096));
    file.write(QByteArray(100, 'x'));
    file.close();
    EXPECT_THAT(ErrorOfOpening(), HasSubstr("move it away"));
}

TEST_F(RecordDatabaseTest, ALinkInPlaceOfTheHiddenFolderIsNotFollowed) {
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QFile::link(elsewhere.path(), Root() + Text("/.ovsync")));
    EXPECT_THAT(ErrorOfOpening(), HasSubstr(".ovsync: "));
    EXPECT_TRUE(QDir(elsewhere.path()).isEmpty());
}

TEST_F(RecordDatabaseTest, ATrialLeavesNoTrace) {
    {
        RecordDatabase trial(Root(), RecordDatabase::Access::Try);
        trial.WriteFile(Record("a"));
        EXPECT_TRUE(trial.FindFile(Text("a")));
    }
    EXPECT_TRUE(QDir(Root()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));

    RecordDatabase(Root(), RecordDatabase::Access::Change).WriteFile(Record("b"));
    const QByteArray before = Bytes();
    {
        RecordDatabase trial(Root(), RecordDatabase::Access::Try);
        EXPECT_TRUE(trial.FindFile(Text("b")));
        trial.ForgetFile(Text("b"));
    }
    EXPECT_EQ(Bytes(), before);
    EXPECT_EQ(QDir(Root() + Text("/.ovsync")).entryList(QDir::Files), QStringList(Text("records.db")));
}

TEST_F(RecordDatabaseTest, ALibraryFindsARecordByItsLocalPathAndServer) {
    const auto database = std::make_shared<RecordDatabase>(Root(), RecordDatabase::Access::Change);
    database->WriteFile(Record("a/b"));
    FileConfigManager manager(database, Root(), 1);
    EXPECT_EQ(manager.GetFileConfiguration(Root() + Text("/a/b"), 1).itemId, Text("i-1"));
    EXPECT_EQ(manager.GetFileConfiguration(Root() + Text("/a/b"), 1).localPath, Root() + Text("/a/b"));
    EXPECT_EQ(manager.GetFileConfiguration(Root() + Text("/a/b"), 2).itemId, QString());
    EXPECT_EQ(manager.GetFileConfiguration(Root() + Text("/a"), 1).itemId, QString());
    EXPECT_EQ(manager.GetFileConfiguration(Text("/a/b"), 1).itemId, QString());
}

}  // namespace
