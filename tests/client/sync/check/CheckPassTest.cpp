#include "client/sync/check/CheckPass.h"

#include <unistd.h>

#include <QDir>

#include "host/http/HttpException.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::check::CheckFinding;
using ovsync::check::CheckPass;
using ovsync::local::Exclusion;
using tests::Text;

class CheckPassTest : public tests::SyncTest {
protected:
    /// What is found, as "kind path detail", one a line.
    std::string Found(bool downloads = false) {
        std::string lines;
        const ovsync::pass::ServiceFolder there = service.Folder(folder.path());
        const Exclusion exclusion = options.exclusion;
        const CheckPass::Teller tell = [&lines](const CheckFinding& finding) {
            const char* const kinds[] = {"skipped", "here", "there", "different", "unknown"};
            lines += std::string(kinds[static_cast<size_t>(finding.kind)]) + ' ' + finding.path.toStdString() +
                     (finding.detail.isEmpty() ? "" : ": ") + finding.detail.toStdString() + '\n';
        };
        CheckPass pass(there, tree, exclusion, downloads, tell);
        pass.Run();
        same = pass.Same();
        sameBySizeAlone = pass.SameBySizeAlone();
        return lines;
    }

    int same = -1;
    int sameBySizeAlone = -1;
};

TEST_F(CheckPassTest, EqualFoldersHaveNoFindings) {
    for (const char* path : {"a.txt", "A/b/c.txt"}) {
        service.Put(Text(path), "content");
        Write(path, "content");
    }
    EXPECT_EQ(Found(), "");
    EXPECT_EQ(same, 2);
    EXPECT_EQ(sameBySizeAlone, 0);
    EXPECT_EQ(service.Count("GET"), 0);
}

TEST_F(CheckPassTest, EveryDifferenceIsToldInPathOrder) {
    service.Put(Text("both.txt"), "1234567");
    service.Put(Text("longer.txt"), "123");
    service.Put(Text("there/a.txt"), "a");
    service.Put(Text("x"), "a");
    service.AddFolder(Text("y"));
    Write("both.txt", "7654321");
    Write("longer.txt", "12345");
    Write("here/a.txt", "a");
    Write("x/a.txt", "a");
    Write("y", "a");
    EXPECT_EQ(Found(),
              "different both.txt: the content\n"
              "here here\n"
              "here here/a.txt\n"
              "different longer.txt: 5 bytes here, 3 there\n"
              "there there\n"
              "there there/a.txt\n"
              "different x: a folder here, a file there\n"
              "here x/a.txt\n"
              "different y: a file here, a folder there\n");
    EXPECT_EQ(same, 0);
}

TEST_F(CheckPassTest, WithoutChecksumsOnlyADownloadTellsContentsApart) {
    service.isPlain = true;
    service.Put(Text("a.txt"), "1234567");
    service.Put(Text("b.txt"), "1234567");
    service.Put(Text("empty.txt"), "");
    Write("a.txt", "1234567");
    Write("b.txt", "1234568");
    Write("empty.txt", "");
    EXPECT_EQ(Found(), "");
    EXPECT_EQ(same, 3);
    EXPECT_EQ(sameBySizeAlone, 3);
    EXPECT_EQ(service.Count("GET"), 0);
    EXPECT_EQ(Found(true), "different b.txt: the content\n");
    EXPECT_EQ(same, 2);
    EXPECT_EQ(sameBySizeAlone, 0);
}

TEST_F(CheckPassTest, ContentThatIsLongerOrShorterThanListedIsAnother) {
    service.isPlain = true;
    service.Put(Text("a.txt"), "1234567");
    Write("a.txt", "1234567");
    for (const char* sent : {"123456", "12345678", ""}) {
        service.contentInstead = sent;
        EXPECT_EQ(Found(true), "different a.txt: the content\n") << sent;
    }
}

TEST_F(CheckPassTest, NothingIsChangedAnywhere) {
    service.Put(Text("there.txt"), "a");
    Write("here.txt", "b");
    Found(true);
    EXPECT_EQ(Contents(), (std::map<QString, QByteArray>{{Text("here.txt"), "b"}}));
    EXPECT_EQ(service.Contents(), (std::map<QString, QByteArray>{{Text("there.txt"), "a"}}));
    EXPECT_FALSE(QDir(Path(".ovsync")).exists());
}

TEST_F(CheckPassTest, LinksAreSkippedUnlessTheServiceHasAFileThere) {
    service.Put(Text("a.txt"), "a");
    ASSERT_EQ(symlink("/nowhere", Path("a.txt").toUtf8().constData()), 0);
    ASSERT_EQ(symlink("/nowhere", Path("link").toUtf8().constData()), 0);
    EXPECT_EQ(Found(),
              "different a.txt: neither a file nor a folder here, but a link, a device or the like\n"
              "skipped link\n");
}

TEST_F(CheckPassTest, WhatCannotBeAskedForIsUnknown) {
    service.isPlain = true;
    service.Put(Text("a.txt"), "a");
    service.Put(Text("b.txt"), "b");
    Write("a.txt", "a");
    Write("b.txt", "b");
    int status = 403;
    service.onRequest = [&status](const QString& method, const QString& path) {
        if (method == Text("GET") && path == Text("a.txt")) {
            throw sync::http::HttpException(Text("no"), status, QUrl());
        }
    };
    EXPECT_EQ(Found(true), "unknown a.txt: no\n");
    EXPECT_EQ(same, 1);
    for (const int failure : {401, 500}) {
        status = failure;
        EXPECT_THROW(Found(true), sync::http::HttpException);
    }
}

}  // namespace
