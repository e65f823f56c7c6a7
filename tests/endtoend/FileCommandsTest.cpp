#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/client/Fixtures.h"
#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/Text.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using tests::ErrorsOf;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::ScriptedServer;
using tests::Service;
using tests::Text;

QByteArray ContentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

void WriteLocal(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

/// The answer to PROPFIND of a file of a server that is not the service.
QByteArray ListedFile(const QByteArray& href, int size) {
    const QByteArray body = "<D:multistatus xmlns:D=\"DAV:\"><D:response><D:href>" + href +
                            "</D:href><D:propstat><D:prop><D:resourcetype/><D:getcontentlength>" +
                            QByteArray::number(size) +
                            "</D:getcontentlength></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat>"
                            "</D:response></D:multistatus>";
    return "HTTP/1.1 207 Multi-Status\r\nContent-Type: application/xml\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

/// The end of the connection, because the program uses one for listings and one for content, and the server one alone.
ScriptedServer::Step Last(const QByteArray& answer) {
    return ScriptedServer::Answer(answer, ScriptedServer::Ending::Close);
}

QByteArray Answered(const QByteArray& status, const QByteArray& headers = QByteArray(),
                    const QByteArray& body = QByteArray()) {
    return "HTTP/1.1 " + status + "\r\n" + headers + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" +
           body;
}

class FileCommandsTest : public testing::Test {
protected:
    static ProgramResult RunOn(const Service& service, const QStringList& command, const char* path,
                               const QStringList& more = QStringList()) {
        return RunOvsync(QStringList(command) << service.Url() + Text(path) << more);
    }
    ProgramResult Run(const QStringList& command, const char* path, const QStringList& more = QStringList()) {
        return RunOn(_service, command, path, more);
    }
    void ExpectDone(const QStringList& command, const char* path, const QStringList& more = QStringList()) {
        const ProgramResult result = Run(command, path, more);
        EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
        EXPECT_EQ(result.output, QByteArray());
    }
    void ExpectFailure(const QStringList& command, const char* path, const QStringList& more, int exitCode,
                       const char* message) {
        const ProgramResult result = Run(command, path, more);
        EXPECT_EQ(result.exitCode, exitCode) << command.first().toStdString() << ' ' << path;
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(ErrorsOf(result), HasSubstr(message));
    }
    QByteArray ContentThere(const char* path) { return Run({Text("cat")}, path).output; }
    QByteArray TreeThere() { return Run({Text("tree")}, "").output; }
    QString Here(const char* name) const { return _here.filePath(Text(name)); }
    /// With those that are hidden.
    QStringList NamesHere() const {
        return QDir(_here.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    Service _service;
    QTemporaryDir _here;
};

TEST_F(FileCommandsTest, GetFetchesAFileWithItsDate) {
    _service.AddFile(Text("A/a #1.txt"), "hello");
    ExpectDone({Text("get")}, "A/a%20%231.txt", {Here("b.txt")});
    EXPECT_EQ(ContentOf(Here("b.txt")), "hello");
    ExpectDone({Text("get")}, "A/a%20%231.txt", {_here.path()});
    EXPECT_EQ(ContentOf(Here("a #1.txt")), "hello");
    const std::string listed = Run({Text("stat"), Text("--json")}, "A/a%20%231.txt").output.toStdString();
    EXPECT_EQ(QFileInfo(Here("b.txt")).lastModified().toUTC().toString(Qt::ISODate).toStdString(),
              nlohmann::json::parse(listed)["modified"]);
    EXPECT_EQ(NamesHere(), (QStringList{Text("a #1.txt"), Text("b.txt")}));
}

TEST_F(FileCommandsTest, PutAndGetKeepTheDateAndTheExecutableBit) {
    WriteLocal(Here("run"), "#!/bin/sh");
    QFile script(Here("run"));
    ASSERT_TRUE(script.open(QIODevice::ReadWrite));
    const QDateTime date(QDate(2020, 2, 29), QTime(12, 34, 56), Qt::UTC);
    ASSERT_TRUE(script.setFileTime(date, QFileDevice::FileModificationTime));
    script.close();
    for (const bool isExecutable : {true, false}) {
        const unsigned mode = isExecutable ? 0750 : 0640;
        ASSERT_EQ(chmod(Here("run").toUtf8().constData(), mode), 0);
        ASSERT_EQ(RunOvsync({Text("put"), Here("run"), _service.Url()}).exitCode, 0);
        ExpectDone({Text("get")}, "run", {Here("back")});
        EXPECT_EQ(QFileInfo(Here("back")).lastModified().toUTC(), date);
        EXPECT_EQ(QFileInfo(Here("back")).permission(QFile::ExeOwner), isExecutable);
    }
}

TEST_F(FileCommandsTest, GetTellsInJsonWhatCame) {
    _service.AddFile(Text("a.txt"), "hello");
    const ProgramResult result = Run({Text("get"), Text("--json")}, "a.txt", {Here("b.txt")});
    EXPECT_EQ(nlohmann::json::parse(result.output.constData()),
              (nlohmann::json{
                  {"file", Here("b.txt").toStdString()}, {"size", 5}, {"md5", "5d41402abc4b2a76b9719d911017c592"}}));
}

TEST_F(FileCommandsTest, GetPutsTheContentInPlaceOfWhatIsThereAndKeepsItsPermissions) {
    _service.AddFile(Text("a.txt"), "new");
    WriteLocal(Here("a.txt"), "old and longer");
    ASSERT_EQ(chmod(Here("a.txt").toUtf8().constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(Here("a.txt"), Here("link")));
    ExpectDone({Text("get")}, "a.txt", {Here("link")});
    EXPECT_EQ(ContentOf(Here("a.txt")), "new");
    EXPECT_TRUE(QFileInfo(Here("link")).isSymLink());
    struct stat status {};
    ASSERT_EQ(stat(Here("a.txt").toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(FileCommandsTest, GetWritesEveryByteToStandardOutputAndDevices) {
    QByteArray content(200000, '\0');
    for (int i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i * 7);
    }
    _service.AddFile(Text("a.bin"), content);
    EXPECT_EQ(Run({Text("get")}, "a.bin", {Text("-")}).output, content);
    EXPECT_EQ(ContentThere("a.bin"), content);
    ExpectDone({Text("get")}, "a.bin", {Text("/dev/null")});
    EXPECT_FALSE(QFileInfo(Text("/dev/null")).isFile());
}

TEST_F(FileCommandsTest, GetSaysWhatCannotBeFetched) {
    _service.AddFile(Text("A/a.txt"), "a");
    ExpectFailure({Text("get")}, "A", {Here("x")}, 2, "\"A\" is a folder; pull fetches folders");
    ExpectFailure({Text("get")}, "", {Here("x")}, 2, "is a folder");
    ExpectFailure({Text("cat")}, "A/", {}, 2, "is a folder");
    ExpectFailure({Text("get")}, "gone", {Here("x")}, 1, "there is no file or folder \"gone\"");
    ExpectFailure({Text("get")}, "A/a.txt", {Here("missing/x")}, 1, "No such file or directory");
    ExpectFailure({Text("get"), Text("--json")}, "A/a.txt", {Text("-")}, 2, "standard output is taken");
    ASSERT_TRUE(QFile::link(Here("nothing"), Here("link")));
    ExpectFailure({Text("get")}, "A/a.txt", {Here("link")}, 2, "a link to nothing");
    EXPECT_EQ(NamesHere(), QStringList(Text("link")));
}

TEST_F(FileCommandsTest, ADownloadThatBrokeOffGoesOnAndNothingHalfIsSeenMeanwhile) {
    // More than four bytes never come at once, so that only who goes on gets to the end.
    Service service({Text("--fault"), Text("cut=4,method=GET")});
    service.AddFile(Text("a.txt"), "0123456789");
    WriteLocal(Here("a.txt"), "old");
    for (const char* kept : {"4 bytes are kept", "8 bytes are kept"}) {
        const ProgramResult result = RunOn(service, {Text("get")}, "a.txt", {Here("a.txt")});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_THAT(ErrorsOf(result), HasSubstr(kept));
        EXPECT_EQ(ContentOf(Here("a.txt")), "old");
    }
    EXPECT_EQ(RunOn(service, {Text("get")}, "a.txt", {Here("a.txt")}).exitCode, 0);
    EXPECT_EQ(ContentOf(Here("a.txt")), "0123456789");
    EXPECT_EQ(NamesHere(), QStringList(Text("a.txt")));
}

TEST_F(FileCommandsTest, ADownloadOfAFileThatChangedStartsAnew) {
    Service service({Text("--fault"), Text("cut=4,method=GET,request=1")});
    service.AddFile(Text("a.txt"), "0123456789");
    EXPECT_EQ(RunOn(service, {Text("get")}, "a.txt", {Here("a.txt")}).exitCode, 3);
    service.Remove(Text("a.txt"));
    service.AddFile(Text("a.txt"), "something else");
    EXPECT_EQ(RunOn(service, {Text("get")}, "a.txt", {Here("a.txt")}).exitCode, 0);
    EXPECT_EQ(ContentOf(Here("a.txt")), "something else");
}

TEST_F(FileCommandsTest, WhatWasKeptAndIsNotTheContentIsFetchedAnew) {
    Service service({Text("--fault"), Text("cut=4,method=GET,request=1")});
    service.AddFile(Text("a.txt"), "0123456789");
    EXPECT_EQ(RunOn(service, {Text("get")}, "a.txt", {Here("a.txt")}).exitCode, 3);
    for (const QString& name : NamesHere()) {
        if (ContentOf(_here.filePath(name)) == "0123") {
            WriteLocal(_here.filePath(name), "xxxx");
        }
    }
    EXPECT_EQ(RunOn(service, {Text("get")}, "a.txt", {Here("a.txt")}).exitCode, 0);
    EXPECT_EQ(ContentOf(Here("a.txt")), "0123456789");
}

TEST_F(FileCommandsTest, WithoutAnEntityTagNothingIsKept) {
    ScriptedServer server({Last(ListedFile("/a.txt", 10)), Last("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n0123")});
    const ProgramResult result = RunOvsync({Text("get"), server.Url(Text("/a.txt")).toString(), Here("a.txt")});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(ErrorsOf(result), Not(HasSubstr("kept")));
    EXPECT_EQ(NamesHere(), QStringList());
}

TEST_F(FileCommandsTest, ContentThatIsNotWhatIsListedIsRefused) {
    const ScriptedServer::Step listed = Last(ListedFile("/a.txt", 10));
    ScriptedServer server({listed, Last(Answered("200 OK", "ETag: \"1\"\r\n", "<html>")), listed});
    const ProgramResult result = RunOvsync({Text("get"), server.Url(Text("/a.txt")).toString(), Here("a.txt")});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(ErrorsOf(result), HasSubstr("not what the service lists"));
    EXPECT_EQ(NamesHere(), QStringList());
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(FileCommandsTest, PutSendsAFileToItsNewNameOrIntoAFolder) {
    _service.AddFolder(Text("A"));
    WriteLocal(Here("a #1.txt"), "hello");
    const auto put = [&](const char* path) {
        return RunOvsync({Text("put"), Here("a #1.txt"), _service.Url() + Text(path)});
    };
    EXPECT_EQ(put("b%20c.txt").exitCode, 0);
    EXPECT_EQ(put("A").exitCode, 0);
    EXPECT_EQ(put("").exitCode, 0);
    EXPECT_EQ(TreeThere(), QByteArray("A/\nA/a #1.txt\na #1.txt\nb c.txt\n"));
    EXPECT_EQ(ContentThere("A/a%20%231.txt"), "hello");
    const ProgramResult inTheWay = put("b%20c.txt/a");
    EXPECT_EQ(inTheWay.exitCode, 1);
    EXPECT_THAT(ErrorsOf(inTheWay), HasSubstr("\"b c.txt\" on 127.0.0.1:"));
    EXPECT_THAT(ErrorsOf(inTheWay), HasSubstr("is a file, and no folder"));
}

TEST_F(FileCommandsTest, WhatIsToGoIntoAMissingFolderNamesItAndTheWayOut) {
    _service.AddFile(Text("f"), "f");
    _service.AddFolder(Text("d"));
    WriteLocal(Here("a"), "hello");
    const QString& url = _service.Url();
    const QString missing = url + Text("missing%20one/");
    const std::string error =
        Text("ovsync: there is no folder \"missing one\" on %1; \"ovsync mkdir -p '%2missing%20one'\" makes it\n")
            .arg(QUrl(url).authority(), url)
            .toStdString();
    for (const QStringList& command : {QStringList({Text("put"), Here("a"), missing}),
                                       {Text("put"), Text("--force"), Here("a"), missing + Text("new")},
                                       {Text("mkdir"), missing + Text("new")},
                                       {Text("mv"), url + Text("f"), missing},
                                       {Text("mv"), url + Text("d"), missing + Text("new")},
                                       {Text("cp"), url + Text("f"), missing + Text("new")},
                                       {Text("cp"), url + Text("d"), missing + Text("new")}}) {
        const ProgramResult result = RunOvsync(command);
        EXPECT_EQ(result.exitCode, 1) << command.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(ErrorsOf(result), error) << command.join(QLatin1Char(' ')).toStdString();
    }
    EXPECT_EQ(TreeThere(), QByteArray("d/\nf\n"));
}

TEST_F(FileCommandsTest, PutReplacesAFileAndTellsWhatIsThereThen) {
    _service.AddFile(Text("a.txt"), "old");
    WriteLocal(Here("a.txt"), "new");
    const ProgramResult result =
        RunOvsync({Text("put"), Text("--json"), Here("a.txt"), _service.Url() + Text("a.txt")});
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    const nlohmann::json file = nlohmann::json::parse(result.output.constData());
    EXPECT_EQ(file["version"], 2);
    EXPECT_EQ(file["md5"], QCryptographicHash::hash("new", QCryptographicHash::Md5).toHex().toStdString());
    EXPECT_EQ(ContentThere("a.txt"), "new");
}

TEST_F(FileCommandsTest, PutSendsOnlyFilesThatHaveASize) {
    const auto put = [&](const QString& path) { return RunOvsync({Text("put"), path, _service.Url()}); };
    EXPECT_THAT(ErrorsOf(put(_here.path())), HasSubstr("push sends folders"));
    EXPECT_EQ(put(_here.path()).exitCode, 2);
    EXPECT_EQ(put(Text("/dev/null")).exitCode, 2);
    EXPECT_EQ(put(Here("gone")).exitCode, 1);
    EXPECT_EQ(TreeThere(), QByteArray());
}

struct Replacement {
    const char* what;
    QByteArray lookedAt;
    const char* header;
    QByteArray value;
};

TEST_F(FileCommandsTest, PutSendsStandardInputToTheFileThatIsNamed) {
    const auto put = [&](const char* path, const QByteArray& input) {
        return RunOvsync({Text("put"), Text("-"), _service.Url() + Text(path)}, {}, input);
    };
    const QByteArray content = QByteArray("line\n\0\xFF", 7).repeated(100000);
    EXPECT_EQ(put("new.bin", content).exitCode, 0);
    EXPECT_EQ(ContentThere("new.bin"), content);
    EXPECT_EQ(put("new.bin", QByteArray()).exitCode, 0);
    EXPECT_EQ(ContentThere("new.bin"), QByteArray());
    EXPECT_EQ(put("A/", content).exitCode, 2);
    ExpectDone({Text("mkdir")}, "A/");
    const ProgramResult folder = put("A", content);
    EXPECT_NE(folder.exitCode, 0);
    EXPECT_THAT(ErrorsOf(folder), HasSubstr("folder"));
}

TEST_F(FileCommandsTest, PutReplacesOnlyTheVersionThatItLookedAt) {
    const Replacement all[] = {
        {"strong tag", "ETag: \"1\"\r\nLast-Modified: Fri, 20 Nov 2026 10:15:30 GMT\r\n", "if-match", "\"1\""},
        {"date alone", "Last-Modified: Fri, 20 Nov 2026 10:15:30 GMT\r\n", "if-unmodified-since",
         "Fri, 20 Nov 2026 10:15:30 GMT"},
    };
    WriteLocal(Here("a.txt"), "new");
    for (const Replacement& one : all) {
        SCOPED_TRACE(one.what);
        ScriptedServer server({Last(ListedFile("/a.txt", 3)), Last("HTTP/1.1 200 OK\r\n" + one.lookedAt + "\r\n"),
                               Last(Answered("412 Precondition Failed"))});
        const ProgramResult result = RunOvsync({Text("put"), Here("a.txt"), server.Url(Text("/a.txt")).toString()});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(ErrorsOf(result), HasSubstr("Somebody has just changed \"a.txt\"; nothing was sent"));
        server.Stop();
        ASSERT_TRUE(server.SawItsScript());
        EXPECT_EQ(server.Requests().last().headers.value(one.header), one.value);
    }
}

TEST_F(FileCommandsTest, WhereNothingTellsVersionsApartPutReplacesWhenForced) {
    WriteLocal(Here("a.txt"), "new");
    const ScriptedServer::Step listed = Last(ListedFile("/a.txt", 3));
    ScriptedServer server({listed, Last("HTTP/1.1 200 OK\r\n\r\n"), listed, Last(Answered("204 No Content")), listed});
    const QString url = server.Url(Text("/a.txt")).toString();
    const ProgramResult refused = RunOvsync({Text("put"), Here("a.txt"), url});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(ErrorsOf(refused), HasSubstr("--force replaces it"));
    const ProgramResult forced = RunOvsync({Text("put"), Text("--force"), Here("a.txt"), url});
    EXPECT_EQ(forced.exitCode, 0) << ErrorsOf(forced);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    ASSERT_EQ(server.Requests().size(), 5);
    EXPECT_EQ(server.Requests()[3].body, "new");
}

TEST_F(FileCommandsTest, PutThatIsNotThereAfterwardsHasFailed) {
    WriteLocal(Here("a.txt"), "new");
    ScriptedServer server({Last(Answered("404 Not Found")), Last("HTTP/1.1 404 Not Found\r\n\r\n"),
                           Last(Answered("201 Created")), Last(ListedFile("/a.txt", 0))});
    const ProgramResult result = RunOvsync({Text("put"), Here("a.txt"), server.Url(Text("/a.txt")).toString()});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(ErrorsOf(result), HasSubstr("what the service has is something else"));
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests()[2].headers.value("if-none-match"), "*");
}

TEST_F(FileCommandsTest, FilesAreRemovedMovedAndCopied) {
    _service.AddFile(Text("A/a.txt"), "a");
    _service.AddFolder(Text("B"));
    ExpectDone({Text("cp")}, "A/a.txt", {_service.Url() + Text("B/c%20d.txt")});
    ExpectDone({Text("cp")}, "A/a.txt", {_service.Url() + Text("B")});
    ExpectDone({Text("mv")}, "A/a.txt", {_service.Url()});
    EXPECT_EQ(TreeThere(), QByteArray("A/\nB/\nB/a.txt\nB/c d.txt\na.txt\n"));
    ExpectDone({Text("rm")}, "B/c%20d.txt");
    const ProgramResult removed = Run({Text("rm"), Text("--json")}, "a.txt");
    EXPECT_EQ(nlohmann::json::parse(removed.output.constData())["serverPath"], "a.txt");
    EXPECT_EQ(TreeThere(), QByteArray("A/\nB/\nB/a.txt\n"));
    EXPECT_EQ(ContentThere("B/a.txt"), "a");
}

TEST_F(FileCommandsTest, AFolderIsCopiedWithEverythingInIt) {
    _service.AddFile(Text("A/b/c.txt"), "c");
    const ProgramResult result = Run({Text("cp"), Text("--json")}, "A", {_service.Url() + Text("D/")});
    EXPECT_EQ(nlohmann::json::parse(result.output.constData()), (nlohmann::json{{"from", "A"}, {"to", "D"}}));
    EXPECT_EQ(TreeThere(), QByteArray("A/\nA/b/\nA/b/c.txt\nD/\nD/b/\nD/b/c.txt\n"));
    ExpectFailure({Text("cp")}, "A", {_service.Url() + Text("D")}, 1, "something at \"D\" already");
    ExpectFailure({Text("cp"), Text("-f")}, "A/b", {_service.Url() + Text("D")}, 1, "a folder replaces nothing");
}

TEST_F(FileCommandsTest, AFileIsReplacedByACopyOnlyWhenForced) {
    _service.AddFile(Text("a.txt"), "a");
    _service.AddFile(Text("b.txt"), "b");
    for (const char* command : {"cp", "mv"}) {
        ExpectFailure({Text(command)}, "a.txt", {_service.Url() + Text("b.txt")}, 1, "--force replaces it");
        EXPECT_EQ(ContentThere("b.txt"), "b");
    }
    ExpectDone({Text("cp"), Text("-f")}, "a.txt", {_service.Url() + Text("b.txt")});
    EXPECT_EQ(ContentThere("b.txt"), "a");
    _service.AddFile(Text("c.txt"), "c");
    ExpectDone({Text("mv"), Text("--force")}, "c.txt", {_service.Url() + Text("b.txt")});
    EXPECT_EQ(TreeThere(), QByteArray("a.txt\nb.txt\n"));
    EXPECT_EQ(ContentThere("b.txt"), "c");
}

TEST_F(FileCommandsTest, NothingIsCopiedToAnotherServerOrOverTheRoot) {
    _service.AddFile(Text("A/a.txt"), "a");
    ExpectFailure({Text("cp")}, "A/a.txt", {Text("http://elsewhere.invalid/a.txt")}, 2, "two servers");
    ExpectFailure({Text("cp")}, "", {_service.Url() + Text("B")}, 2, "the root");
    ExpectFailure({Text("mv")}, "A", {_service.Url()}, 2, "the root cannot be replaced");
}

TEST_F(FileCommandsTest, AFileIsAskedForWithoutASlash) {
    // Some servers answer "file.txt/" with 400 or 403.
    const ScriptedServer::Step listed = Last(ListedFile("/a.txt", 3));
    ScriptedServer server({listed, listed, listed});
    const QString url = server.Url(Text("/a.txt")).toString();
    EXPECT_EQ(RunOvsync({Text("ls"), url}).output, "a.txt\n");
    EXPECT_THAT(RunOvsync({Text("ls"), Text("-l"), url}).output.toStdString(), HasSubstr(" 3  "));
    EXPECT_EQ(RunOvsync({Text("stat"), url}).exitCode, 0);
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    for (const ScriptedServer::Request& request : server.Requests()) {
        EXPECT_EQ(request.target, "/a.txt");
    }
}

}  // namespace
