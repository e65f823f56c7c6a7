#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QThread>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "tests/client/Fixtures.h"
#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/Text.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using tests::FixtureAnswer;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::ScriptedServer;
using tests::Service;
using tests::Text;

class FolderCommandsTest : public testing::Test {
protected:
    /// `path` is percent-encoded.
    ProgramResult Run(const QStringList& command, const char* path) {
        return RunOvsync(QStringList(command) << _service.Url() + Text(path));
    }

    /// The output of a run that has to succeed.
    QByteArray OutputOf(const QStringList& command, const char* path) {
        const ProgramResult result = Run(command, path);
        EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
        return result.output;
    }

    void ExpectFailure(const QStringList& command, const char* path, int exitCode, const char* message) {
        const ProgramResult result = Run(command, path);
        EXPECT_EQ(result.exitCode, exitCode) << command.first().toStdString() << ' ' << path;
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(result.errors.toStdString(), AllOf(HasSubstr(message), Not(HasSubstr("log4cplus"))));
    }

    Service _service;
};

TEST_F(FolderCommandsTest, ANewFolderIsThereAndHasTheIdThatItWasGiven) {
    const QByteArray made = OutputOf({Text("mkdir"), Text("--json")}, "A%20%23%C3%A9");
    const nlohmann::json folder = nlohmann::json::parse(made.constData());
    EXPECT_EQ(folder["serverPath"], "A #\xC3\xA9");
    EXPECT_NE(folder["folderId"], "");
    EXPECT_EQ(OutputOf({Text("ls")}, ""), QByteArray("A #\xC3\xA9/\n"));
    const QByteArray shown = OutputOf({Text("stat"), Text("--json")}, "A%20%23%C3%A9/");
    EXPECT_EQ(nlohmann::json::parse(shown.constData())["folderId"], folder["folderId"]);
    EXPECT_EQ(OutputOf({Text("mkdir")}, "A%20%23%C3%A9/inside/"), QByteArray());
    EXPECT_EQ(OutputOf({Text("ls")}, "A%20%23%C3%A9"), QByteArray("inside/\n"));
}

TEST_F(FolderCommandsTest, AFolderThatIsThereAlreadyIsAsGoodAsANewOne) {
    // The service says that it exists in one wording after the other.
    const QByteArray made = OutputOf({Text("mkdir"), Text("--json")}, "A");
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(OutputOf({Text("mkdir"), Text("--json")}, "A"), made);
        EXPECT_EQ(OutputOf({Text("mkdir"), Text("-p"), Text("--json")}, "A"), made);
    }
}

TEST_F(FolderCommandsTest, MissingParentsAreCreatedOnlyWhenAskedFor) {
    ExpectFailure({Text("mkdir")}, "A/B/C", 1, "no folder \"A/B\"");
    EXPECT_EQ(OutputOf({Text("tree")}, ""), QByteArray());
    OutputOf({Text("mkdir"), Text("-p")}, "A/B/C");
    OutputOf({Text("mkdir"), Text("-p")}, "A/B/D/");
    EXPECT_EQ(OutputOf({Text("tree")}, ""), QByteArray("A/\nA/B/\nA/B/C/\nA/B/D/\n"));
}

TEST(MakeFolderRefusalTest, WhoMakesTheFoldersAboveIsNotToldToDoSo) {
    for (const char* status : {"403", "423"}) {
        Service service({Text("--fault"), Text("status=") + Text(status) + Text(",method=MKCOL")});
        const ProgramResult result = RunOvsync({Text("mkdir"), Text("-p"), service.Url() + Text("new/inside/it")});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.errors.toStdString(), AllOf(HasSubstr("127.0.0.1"), Not(HasSubstr("mkdir"))));
    }
}

TEST_F(FolderCommandsTest, AFileIsInTheWayOfAFolder) {
    _service.AddFile(Text("a.txt"), "a");
    ExpectFailure({Text("mkdir")}, "a.txt", 1, "\"a.txt\" on 127.0.0.1");
    ExpectFailure({Text("mkdir"), Text("-p")}, "a.txt", 1, "is a file, and no folder");
    for (const char* below : {"a.txt/b", "a.txt/b/c/d"}) {
        ExpectFailure({Text("mkdir"), Text("-p")}, below, 1, "is a file, and no folder");
    }
    ExpectFailure({Text("mkdir")}, "a.txt/b", 2, "\"a.txt\" is a file");
}

TEST_F(FolderCommandsTest, AFolderIsRemovedWithWhatLiesInIt) {
    _service.AddFile(Text("A/b/c.txt"), "c");
    _service.AddFile(Text("B/c.txt"), "c");
    EXPECT_EQ(OutputOf({Text("rm"), Text("-r")}, "A/"), QByteArray());
    EXPECT_EQ(OutputOf({Text("tree")}, ""), QByteArray("B/\nB/c.txt\n"));
    const QByteArray removed = OutputOf({Text("rm"), Text("-r"), Text("--json")}, "B");
    EXPECT_EQ(nlohmann::json::parse(removed.constData())["serverPath"], "B");
}

TEST_F(FolderCommandsTest, AFolderThatHasSomethingInItIsRemovedOnlyWhenAskedFor) {
    _service.AddFile(Text("A/a.txt"), "a");
    _service.AddFolder(Text("B/b"));
    _service.AddFolder(Text("C"));
    ExpectFailure({Text("rm")}, "A", 1, "\"A\" has something in it; rm -r");
    ExpectFailure({Text("rm")}, "B/", 1, "\"B\" has something in it");
    ExpectFailure({Text("rm")}, "gone", 1, "there is no file or folder \"gone\"");
    ExpectFailure({Text("rm"), Text("-r")}, "", 2, "the root cannot be removed");
    EXPECT_EQ(OutputOf({Text("rm")}, "C"), QByteArray());
    EXPECT_EQ(OutputOf({Text("tree")}, ""), QByteArray("A/\nA/a.txt\nB/\nB/b/\n"));
}

TEST_F(FolderCommandsTest, AFolderIsMovedAndKeepsItsId) {
    _service.AddFile(Text("A/b.txt"), "b");
    _service.AddFolder(Text("C"));
    const auto idOf = [this](const char* path) {
        return nlohmann::json::parse(OutputOf({Text("stat"), Text("--json")}, path).constData())["folderId"];
    };
    const nlohmann::json id = idOf("A");
    const QByteArray moved = OutputOf({Text("mv"), Text("--json"), _service.Url() + Text("A")}, "C/D%20%25/");
    EXPECT_EQ(nlohmann::json::parse(moved.constData()), (nlohmann::json{{"from", "A"}, {"to", "C/D %"}}));
    EXPECT_EQ(OutputOf({Text("tree")}, ""), QByteArray("C/\nC/D %/\nC/D %/b.txt\n"));
    EXPECT_EQ(idOf("C/D%20%25"), id);
}

TEST_F(FolderCommandsTest, NothingIsMovedOverAnything) {
    _service.AddFile(Text("A/b.txt"), "b");
    _service.AddFile(Text("B/c.txt"), "c");
    _service.AddFile(Text("f.txt"), "f");
    const QByteArray before = OutputOf({Text("tree")}, "");
    ExpectFailure({Text("mv"), _service.Url() + Text("A")}, "B", 1, "something at \"B\" already");
    ExpectFailure({Text("mv"), _service.Url() + Text("A")}, "f.txt", 1, "something at \"f.txt\" already");
    ExpectFailure({Text("mv"), _service.Url() + Text("A")}, "missing/A", 1, "no folder \"missing\"");
    ExpectFailure({Text("mv"), _service.Url() + Text("A")}, "A/inside", 2, "that is itself, or lies in it");
    ExpectFailure({Text("mv"), Text("-f"), _service.Url() + Text("A")}, "f.txt", 1, "a folder replaces nothing");
    ExpectFailure({Text("mv"), _service.Url() + Text("f.txt")}, "A/b.txt", 1, "something at \"A/b.txt\" already");
    ExpectFailure({Text("mv"), _service.Url() + Text("gone")}, "g", 1, "there is no file or folder \"gone\"");
    EXPECT_EQ(OutputOf({Text("tree")}, ""), before);
}

TEST_F(FolderCommandsTest, ATreeHasEverythingBelowTheFolderByItsPath) {
    _service.AddFile(Text("A/b/c 1.txt"), "12345");
    _service.AddFile(Text("A/b-2.txt"), "1");
    _service.AddFolder(Text("A/d"));
    _service.AddFile(Text("outside.txt"), "x");
    const ProgramResult result = Run({Text("tree")}, "A");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, QByteArray("b/\nb-2.txt\nb/c 1.txt\nd/\n"));
    EXPECT_THAT(result.errors.toStdString(), testing::MatchesRegex("ovsync: the service's time is 20[0-9TZ:-]+\n"));
    EXPECT_THAT(OutputOf({Text("tree"), Text("-l")}, "A/b").toStdString(),
                testing::MatchesRegex(" +5  20[0-9-]+T[0-9:]+Z +1  c 1\\.txt\n"));
    EXPECT_EQ(OutputOf({Text("tree")}, "outside.txt"), QByteArray("outside.txt\n"));
    ExpectFailure({Text("tree")}, "gone", 1, "no folder \"gone\"");
}

TEST_F(FolderCommandsTest, JsonSaysWhatIsAFolder) {
    _service.AddFile(Text("A/b.txt"), "b");
    const auto entries = nlohmann::json::parse(OutputOf({Text("tree"), Text("--json")}, "").constData())["entries"];
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0]["type"], "folder");
    EXPECT_EQ(entries[0]["name"], "A");
    EXPECT_EQ(entries[1]["type"], "file");
    EXPECT_EQ(entries[1]["name"], "A/b.txt");
    const nlohmann::json listed = nlohmann::json::parse(OutputOf({Text("ls"), Text("--json")}, "").constData());
    EXPECT_EQ(listed, nlohmann::json::array({entries[0]}));
}

TEST_F(FolderCommandsTest, ATreeIsListedAgainOnceSomethingChanged) {
    _service.AddFile(Text("A/b.txt"), "b");
    const auto timeOf = [](const QByteArray& json) {
        return QString::fromStdString(nlohmann::json::parse(json.constData())["serverTime"]);
    };
    QByteArray answer = OutputOf({Text("tree"), Text("--json")}, "A");
    // The second of the change has to be over.
    for (int i = 0; i < 40 && nlohmann::json::parse(answer.constData())["changed"]; ++i) {
        QThread::msleep(100);
        answer = OutputOf({Text("tree"), Text("--json"), Text("--since"), timeOf(answer)}, "A");
    }
    EXPECT_FALSE(nlohmann::json::parse(answer.constData())["changed"]);
    EXPECT_FALSE(nlohmann::json::parse(answer.constData()).contains("entries"));
    const ProgramResult result = Run({Text("tree"), Text("--since"), timeOf(answer)}, "A");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, QByteArray());
    EXPECT_THAT(result.errors.toStdString(),
                AllOf(HasSubstr("nothing changed"), HasSubstr("the service's time is 20")));

    _service.AddFile(Text("A/deep/c.txt"), "c");
    EXPECT_EQ(OutputOf({Text("tree"), Text("--since"), timeOf(answer)}, "A"), QByteArray("b.txt\ndeep/\ndeep/c.txt\n"));
    EXPECT_EQ(OutputOf({Text("tree"), Text("--since"), Text("Fri, 20 Nov 2020 10:15:30 GMT")}, "A"),
              QByteArray("b.txt\ndeep/\ndeep/c.txt\n"));
}

TEST_F(FolderCommandsTest, TheSizeOfATreeLeavesOutWhatIsExcluded) {
    _service.AddFile(Text("A/a.txt"), "1");
    _service.AddFile(Text("A/b.tmp"), "12");
    _service.AddFile(Text("A/cache/c.txt"), "123");
    _service.AddFile(Text("A/sub/cache/d.txt"), "1234");
    _service.AddFile(Text("A/sub/\xC3\xA9.txt"), "12345");
    EXPECT_EQ(OutputOf({Text("du")}, "A"), QByteArray("5 files, 15 B\n"));
    EXPECT_EQ(OutputOf({Text("du"), Text("--exclude"), Text("*.tmp")}, "A"), QByteArray("4 files, 13 B\n"));
    EXPECT_EQ(
        OutputOf({Text("du"), Text("-b"), Text("--exclude"), Text("c?che"), Text("--exclude"), Text("[ab].*")}, "A"),
        QByteArray("1 file, 5 bytes\n"));
    EXPECT_EQ(OutputOf({Text("du"), Text("-b"), Text("--exclude"), Text("?.txt"), Text("--exclude"), Text("A")}, "A"),
              QByteArray("1 file, 2 bytes\n"));
    EXPECT_EQ(
        OutputOf({Text("du"), Text("-b"), Text("--exclude"), Text("/cache/"), Text("--exclude"), Text("sub/*.txt")},
                 "A"),
        QByteArray("3 files, 7 bytes\n"));
    EXPECT_EQ(OutputOf({Text("du"), Text("--json"), Text("--exclude"), Text("cach")}, "A/sub"),
              QByteArray("{\"files\":2,\"bytes\":9}\n"));
    ExpectFailure({Text("du")}, "gone", 1, "no folder \"gone\"");
}

TEST_F(FolderCommandsTest, TheSizesOfTheFoldersInATreeCanBeShownToo) {
    _service.AddFile(Text("A/a"), "1");
    _service.AddFile(Text("A/b/c"), QByteArray(2048, 'x'));
    _service.AddFile(Text("A/b/d/e"), "123");
    _service.AddFile(Text("A/f/g.tmp"), "1234");
    _service.AddFolder(Text("A/h"));
    EXPECT_EQ(OutputOf({Text("du"), Text("-d"), Text("1")}, "A"), QByteArray("     2.0 KiB  b/\n"
                                                                             "         4 B  f/\n"
                                                                             "         0 B  h/\n"
                                                                             "4 files, 2.0 KiB\n"));
    EXPECT_EQ(OutputOf({Text("du"), Text("-b"), Text("-d"), Text("2"), Text("--exclude"), Text("f")}, "A"),
              QByteArray("        2051  b/\n           3  b/d/\n           0  h/\n3 files, 2052 bytes\n"));
    const nlohmann::json json =
        nlohmann::json::parse(OutputOf({Text("du"), Text("--json"), Text("-d"), Text("1")}, "A/b").constData());
    EXPECT_EQ(json, nlohmann::json::parse(R"({"files":2,"bytes":2051,"folders":[{"path":"d","files":1,"bytes":3}]})"));
    EXPECT_EQ(OutputOf({Text("du"), Text("-b")}, "A/a"), QByteArray("1 file, 1 byte\n"));
}

TEST(LargeSizesTest, AreCountedAndShownInFull) {
    const auto response = [](const char* name, const char* size) {
        return QByteArray("<D:response><D:href>/A/") + name + "</D:href><D:propstat><D:prop><D:resourcetype/>" +
               "<D:getcontentlength>" + size +
               "</D:getcontentlength></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>";
    };
    const QByteArray body =
        QByteArray("<D:multistatus xmlns:D=\"DAV:\"><D:response><D:href>/A/</D:href><D:propstat><D:prop>") +
        "<D:resourcetype><D:collection/></D:resourcetype></D:prop><D:status>HTTP/1.1 200 OK</D:status>" +
        "</D:propstat></D:response>" + response("a", "3000000000") + response("b%20c", "5000000000") +
        response("d", "4294967295") + "</D:multistatus>";
    const QByteArray listing =
        "HTTP/1.1 207 Multi-Status\r\nContent-Type: text/xml\r\nContent-Length: " + QByteArray::number(body.size()) +
        "\r\n\r\n" + body;
    const auto outputOf = [&listing](const QStringList& command) {
        const ScriptedServer server(
            {ScriptedServer::Answer(FixtureAnswer(Text("statuses/options-foreign-200")).Bytes()),
             ScriptedServer::Answer(listing)});
        return RunOvsync(QStringList(command) << server.Url(Text("/A/")).toString()).output;
    };
    EXPECT_EQ(outputOf({Text("du"), Text("-b")}), QByteArray("3 files, 12294967295 bytes\n"));
    EXPECT_EQ(outputOf({Text("du")}), QByteArray("3 files, 11.5 GiB\n"));
    EXPECT_THAT(outputOf({Text("ls"), Text("-l")}).toStdString(),
                testing::ContainsRegex("  3000000000 .* a\n +5000000000 .* b c\n +4294967295 .* d\n"));
    EXPECT_EQ(nlohmann::json::parse(outputOf({Text("ls"), Text("--json")}).constData())[1]["size"], 5000000000);
}

TEST_F(FolderCommandsTest, WhatLiesInAFormIsNeitherListedNorMeasured) {
    _service.AddFile(Text("A/form/answer.txt"), "12345");
    _service.AddFile(Text("A/plain.txt"), "1");
    _service.MakeForm(Text("A/form/"));
    EXPECT_EQ(OutputOf({Text("tree")}, ""), QByteArray("A/\nA/plain.txt\n"));
    EXPECT_EQ(OutputOf({Text("du")}, ""), QByteArray("1 file, 1 B\n"));
    EXPECT_EQ(OutputOf({Text("ls")}, "A"), QByteArray("plain.txt\n"));
}

TEST_F(FolderCommandsTest, StatShowsOfAFolderWhatItsListingShows) {
    _service.AddFolder(Text("A/b \xC3\xA9"));
    _service.AddFolder(Text("A/c"));
    EXPECT_THAT(OutputOf({Text("stat")}, "A/b%20%C3%A9/").toStdString(),
                testing::MatchesRegex("Name              b \xC3\xA9/\n"
                                      "Server path       A/b \xC3\xA9\n"
                                      "Modified          20[0-9TZ:-]+\n"
                                      "Resource id       [0-9]+\n"
                                      "Folder id         [^\n]+\n"
                                      "Owner             anonymous\n"
                                      "Privileges        rw\n"));
    for (const char* path : {"A", "A/c"}) {
        const QByteArray shown = OutputOf({Text("stat"), Text("--json")}, path);
        const QByteArray listed = OutputOf({Text("ls"), Text("--json")}, path == Text("A") ? "" : "A");
        EXPECT_EQ(nlohmann::json::parse(shown.constData()), nlohmann::json::parse(listed.constData()).back());
    }
}

TEST_F(FolderCommandsTest, StatShowsOfTheRootWhatItTellsItself) {
    const ProgramResult result = Run({Text("stat")}, "");
    EXPECT_THAT(result.output.toStdString(),
                testing::MatchesRegex("Name              /\nFolder id         [^\n]+\nOwner             anonymous\n"));
    EXPECT_EQ(result.errors, QByteArray());
}

TEST(StatTest, ShowsWhatThereIsOfAFolderWhenTheOneAboveCannotBeListed) {
    for (const char* fault : {"status=403", "status=302", "error-page", "cut=100"}) {
        Service service({Text("--fault"), Text(fault) + Text(",method=PROPFIND,request=3")});
        service.AddFolder(Text("A/b"));
        const ProgramResult result = RunOvsync({Text("stat"), Text("-v"), service.Url() + Text("A/b")});
        EXPECT_EQ(result.exitCode, 0) << fault;
        EXPECT_THAT(result.output.toStdString(),
                    AllOf(HasSubstr("Folder id         "), HasSubstr("Owner  "), Not(HasSubstr("Modified"))));
        EXPECT_THAT(result.errors.toStdString(), AllOf(HasSubstr("date, id and privileges of \"A/b\" are missing: "),
                                                       testing::ContainsRegex("http://127.0.0.1:[0-9]+/A[/.]")))
            << fault;
    }
}

TEST(StatTest, AWarningIsAnObjectWhereTheResultIsOne) {
    Service service({Text("--fault"), Text("status=403,method=PROPFIND,request=3")});
    service.AddFolder(Text("A/b"));
    const ProgramResult result = RunOvsync({Text("stat"), Text("--json"), service.Url() + Text("A/b")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(nlohmann::json::parse(result.output.constData()).is_object());
    const nlohmann::json warning = nlohmann::json::parse(result.errors.constData());
    EXPECT_THAT(warning["warning"].get<std::string>(), HasSubstr("date, id and privileges of \"A/b\" are missing: "));
    EXPECT_EQ(warning["kind"], "refused");
    EXPECT_EQ(warning["status"], 403);
    EXPECT_FALSE(warning.contains("exitStatus"));
}

/// What a tree of the stand-in looks like, which meets `fault`.
ProgramResult TreeMeeting(const QString& fault, const QStringList& command) {
    Service service({Text("--fault"), fault});
    service.AddFile(Text("A/b.txt"), "b");
    service.AddFile(Text("A/C/d.txt"), "dd");
    QStringList arguments = command;
    arguments.insert(1, service.Url() + Text("A/"));
    return RunOvsync(arguments);
}

TEST(TreeRefusalTest, IsMetByListingFolderByFolder) {
    for (const char* status : {"400", "403", "412"}) {
        const QString fault = Text("status=") + Text(status) + Text(",method=PROPFIND,request=1");
        EXPECT_EQ(TreeMeeting(fault, {Text("tree")}).output, "C/\nC/d.txt\nb.txt\n") << status;
        EXPECT_EQ(TreeMeeting(fault, {Text("du")}).output, "2 files, 3 B\n") << status;
        const QTemporaryDir folder;
        const ProgramResult pulled = TreeMeeting(fault, {Text("pull"), folder.path()});
        EXPECT_EQ(pulled.exitCode, 0) << ErrorsOf(pulled);
        EXPECT_TRUE(QFile::exists(folder.filePath(Text("C/d.txt"))));
    }
}

TEST(TreeRefusalTest, OfTheFolderItselfIsARefusal) {
    for (const char* status : {"400", "403", "412"}) {
        const QString fault = Text("status=") + Text(status) + Text(",method=PROPFIND");
        for (const char* command : {"tree", "du"}) {
            const ProgramResult result = TreeMeeting(fault, {Text(command), Text("-v")});
            EXPECT_EQ(result.exitCode, 1);
            EXPECT_EQ(result.output, QByteArray());
            EXPECT_THAT(result.errors.toStdString(), AllOf(HasSubstr(status), HasSubstr("/A")));
        }
    }
}

TEST(TreeRefusalTest, OfAFolderInItEndsTheWholeAndNamesTheFolder) {
    Service service({Text("--fault"), Text("status=403,method=PROPFIND,request=1"), Text("--fault"),
                     Text("status=403,method=PROPFIND,request=3")});
    service.AddFile(Text("A/C/d.txt"), "dd");
    const ProgramResult result = RunOvsync({Text("tree"), service.Url() + Text("A/")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, QByteArray());
    EXPECT_THAT(result.errors.toStdString(), HasSubstr("does not let you read \"A/C\""));
}

struct FolderFault {
    const char* name;
    int exitCode;
};

void PrintTo(const FolderFault& fault, std::ostream* stream) {
    *stream << fault.name;
}

/// Every new request met by every fault. An error, and nothing on standard output, whatever was done.
class FolderFaultTest : public testing::TestWithParam<FolderFault> {};

TEST_P(FolderFaultTest, EndsInAnError) {
    const auto run = [](const char* method, const QStringList& command, const char* path, const char* destination) {
        Service service({Text("--fault"), Text(GetParam().name) + Text(",method=") + Text(method)});
        service.AddFile(Text("folder/file.txt"), "x");
        QStringList arguments = QStringList(command) << service.Url() + Text(path);
        if (destination != nullptr) {
            arguments << service.Url() + Text(destination);
        }
        const ProgramResult result =
            RunOvsync(QStringList(arguments) << Text("--json") << Text("--silence-limit") << Text("0.5"));
        EXPECT_EQ(result.exitCode, GetParam().exitCode) << method << ": " << result.errors.toStdString();
        EXPECT_EQ(result.output, QByteArray()) << method;
        EXPECT_THAT(result.errors.toStdString(), HasSubstr("127.0.0.1")) << method;
    };
    run("PROPFIND", {Text("tree")}, "folder", nullptr);
    run("PROPFIND", {Text("du")}, "folder", nullptr);
    run("MKCOL", {Text("mkdir")}, "new", nullptr);
    run("MKCOL", {Text("mkdir"), Text("-p")}, "new/inside", nullptr);
}

INSTANTIATE_TEST_SUITE_P(Faults, FolderFaultTest,
                         testing::Values(FolderFault{"cut=30", 3}, FolderFault{"hang", 3}, FolderFault{"reset", 3},
                                         FolderFault{"reset=30", 3}, FolderFault{"redirect=301", 3},
                                         FolderFault{"redirect=307", 3}, FolderFault{"error-page", 3},
                                         FolderFault{"status=204", 3}, FolderFault{"status=500", 1},
                                         FolderFault{"error-in-body=50", 3}, FolderFault{"content-length=+10", 3},
                                         FolderFault{"content-length=-10", 3}));

class FolderChangeFaultTest : public testing::TestWithParam<FolderFault> {};

TEST_P(FolderChangeFaultTest, EndsInAnErrorThatNamesTheFolder) {
    for (const char* method : {"DELETE", "MOVE"}) {
        Service service({Text("--fault"), Text(GetParam().name) + Text(",method=") + Text(method)});
        service.AddFile(Text("folder/file.txt"), "x");
        const QStringList url(service.Url() + Text("folder"));
        const QStringList arguments = QByteArray(method) == "DELETE"
                                          ? QStringList({Text("rm"), Text("-r")}) + url
                                          : QStringList(Text("mv")) + url + QStringList(service.Url() + Text("other"));
        const ProgramResult result =
            RunOvsync(QStringList(arguments) << Text("-v") << Text("--silence-limit") << Text("0.5"));
        EXPECT_EQ(result.exitCode, GetParam().exitCode) << method << ": " << result.errors.toStdString();
        EXPECT_THAT(result.errors.toStdString(), HasSubstr("folder")) << method;
        EXPECT_EQ(RunOvsync({Text("ls"), service.Url()}).output, QByteArray("folder/\n")) << method;
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, FolderChangeFaultTest,
                         testing::Values(FolderFault{"hang", 3}, FolderFault{"reset", 3},
                                         FolderFault{"redirect=301", 3}, FolderFault{"redirect=308", 3},
                                         FolderFault{"status=206", 3}, FolderFault{"status=403", 1},
                                         FolderFault{"status=404", 1}, FolderFault{"status=503", 3}));

}  // namespace
