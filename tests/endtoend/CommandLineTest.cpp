#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QUrl>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "tests/client/Fixtures.h"
#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/SelfSignedCertificate.h"
#include "tests/fakes/Text.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using tests::ErrorsOf;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::RunTyped;
using tests::Service;
using tests::Text;

class CommandLineTest : public testing::Test {
protected:
    static ProgramResult List(const QString& url) { return RunOvsync({Text("ls"), url}); }
};

TEST_F(CommandLineTest, ListsFilesAndFoldersInOneNameOrderAndNothingElse) {
    Service service;
    service.AddFile(Text("folder/b.txt"), "bb");
    service.AddFile(Text("folder/a.txt"), "a");
    service.AddFile(Text("folder/B.txt"), "BBB");
    service.AddFile(Text("folder/apart/deep.txt"), "x");
    service.AddFolder(Text("folder/z"));
    service.AddFile(Text("outside.txt"), "x");
    const ProgramResult result = List(service.Url() + Text("folder/"));
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_EQ(result.output, QByteArray("B.txt\na.txt\napart/\nb.txt\nz/\n"));
    EXPECT_EQ(result.errors, QByteArray());
}

TEST_F(CommandLineTest, AFolderIsTheSameWithAndWithoutItsSlash) {
    Service service;
    service.AddFile(Text("folder/a.txt"), "a");
    EXPECT_EQ(List(service.Url() + Text("folder")).output, QByteArray("a.txt\n"));
    service.AddFile(Text("root.txt"), "r");
    QString withoutSlash = service.Url();
    withoutSlash.chop(1);
    EXPECT_EQ(List(withoutSlash).output, QByteArray("folder/\nroot.txt\n"));
}

TEST_F(CommandLineTest, AnEmptyFolderIsAnEmptyListing) {
    Service service;
    service.AddFolder(Text("empty"));
    const ProgramResult result = List(service.Url() + Text("empty/"));
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_EQ(result.output, QByteArray());
    EXPECT_EQ(RunOvsync({Text("ls"), Text("--json"), service.Url() + Text("empty/")}).output, QByteArray("[]\n"));
}

TEST_F(CommandLineTest, AListingAboveALimitIsAnErrorThatNamesTheOption) {
    Service service;
    service.AddFile(Text("folder/a.txt"), "a");
    service.AddFile(Text("folder/b.txt"), "b");
    const auto list = [&](const char* option, const char* limit) {
        return RunOvsync({Text("ls"), service.Url() + Text("folder/"), Text(option), Text(limit)});
    };
    EXPECT_EQ(list("--max-listing-entries", "3").output, QByteArray("a.txt\nb.txt\n"));
    for (const char* option : {"--max-listing-entries", "--max-listing-bytes"}) {
        const ProgramResult result = list(option, "2");
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(ErrorsOf(result), HasSubstr(std::string("the limit set by ") + option));
    }
    EXPECT_EQ(list("--max-listing-entries", "0").exitCode, 2);
}

TEST_F(CommandLineTest, AByteOrderMarkIsNeverLeftAway) {
    Service service;
    service.AddFile(Text("x"), "kept");
    const QString mark = QChar(QChar::ByteOrderMark);
    for (const QString& url : {service.Url() + mark + Text("x"), mark + service.Url() + Text("x")}) {
        const ProgramResult result = RunOvsync({Text("rm"), url});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(ErrorsOf(result), HasSubstr("byte order mark"));
    }
    EXPECT_EQ(List(service.Url()).output, QByteArray("x\n"));
}

TEST_F(CommandLineTest, AByteOrderMarkThatBeginsANameIsSeen) {
    Service service;
    const QString mark = QChar(QChar::ByteOrderMark);
    service.AddFile(mark + Text("f"), "x");
    service.AddFile(Text("d/") + mark + Text("d/") + mark + Text("x"), "x");
    service.AddFile(Text("i") + mark + Text("n"), "x");
    EXPECT_EQ(List(service.Url()).output, QByteArray("d/\ni\xEF\xBB\xBFn\n%EF%BB%BFf\n"));
    EXPECT_EQ(List(service.Url() + Text("d")).output, QByteArray("%EF%BB%BFd/\n"));
    EXPECT_THAT(RunOvsync({Text("ls"), Text("-l"), service.Url()}).output.toStdString(), HasSubstr("  %EF%BB%BFf\n"));
    EXPECT_THAT(RunOvsync({Text("tree"), service.Url()}).output.toStdString(), HasSubstr("d/%EF%BB%BFd/%EF%BB%BFx\n"));
    const QByteArray json = RunOvsync({Text("ls"), Text("--json"), service.Url() + Text("d")}).output;
    EXPECT_EQ(nlohmann::json::parse(json.constData())[0]["name"],
              "\xEF\xBB\xBF"
              "d");
    const QTemporaryDir folder;
    EXPECT_THAT(ErrorsOf(RunOvsync({Text("pull"), service.Url(), folder.path()})), HasSubstr("refused %EF%BB%BFf: "));
}

TEST_F(CommandLineTest, NamesOfEveryKindComeThroughUnchanged) {
    Service service;
    const char* const names[] = {
        " lead",           "#x",        "%41.txt",    "&x;y",           "'quoted'",
        "+a b+",           "100%.txt",  "100%25",     "a;b,c=d@e:f$g!", "back\\slash",
        "q?r=s",           "tab\there", "~tilde.txt", "\xC3\xA9",       "\xE6\x96\x87\xE4\xBB\xB6",
        "\xF0\x9F\x98\x80"};
    QByteArray expected;
    for (const char* name : names) {
        service.AddFile(Text("odd names #1/") + Text(name), "x");
        expected += QByteArray(name) + '\n';
    }
    const ProgramResult result = List(service.Url() + Text("odd%20names%20%231"));
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_EQ(result.output, expected);
    for (const char* name : names) {
        const QString url =
            service.Url() + Text("odd%20names%20%231/") + QString::fromLatin1(QUrl::toPercentEncoding(Text(name)));
        const ProgramResult stat = RunOvsync({Text("stat"), Text("--json"), url});
        ASSERT_EQ(stat.exitCode, 0) << ErrorsOf(stat);
        EXPECT_EQ(nlohmann::json::parse(stat.output.constData())["name"], name);
    }
}

TEST_F(CommandLineTest, TheLongListingHasSizeDateAndVersion) {
    Service service;
    service.AddFile(Text("folder/a.txt"), "12345");
    const ProgramResult result = RunOvsync({Text("ls"), Text("-l"), service.Url() + Text("folder/")});
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_THAT(result.output.toStdString(), testing::MatchesRegex(" +5  20[0-9-]+T[0-9:]+Z +1  a\\.txt\n"));
}

TEST_F(CommandLineTest, JsonIsAnArrayOfWhatTheServiceKnows) {
    Service service;
    service.AddFile(Text("folder/a.txt"), "hello");
    service.AddFile(Text("folder/b.txt"), "");
    const ProgramResult result = RunOvsync({Text("ls"), Text("--json"), service.Url() + Text("folder/")});
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    const nlohmann::json json = nlohmann::json::parse(result.output.constData());
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["name"], "a.txt");
    EXPECT_EQ(json[0]["serverPath"], "folder/a.txt");
    EXPECT_EQ(json[0]["size"], 5);
    EXPECT_EQ(json[0]["version"], 1);
    EXPECT_EQ(json[0]["md5"], "5d41402abc4b2a76b9719d911017c592");
    EXPECT_EQ(json[1]["name"], "b.txt");
    EXPECT_EQ(json[1]["size"], 0);
    EXPECT_NE(json[0]["resourceId"], json[1]["resourceId"]);
    EXPECT_NE(json[0]["itemId"], json[1]["itemId"]);
}

TEST_F(CommandLineTest, StatLooksOneFileUp) {
    Service service;
    service.AddFile(Text("folder/a b.txt"), "hello");
    const ProgramResult result = RunOvsync({Text("stat"), service.Url() + Text("folder/a%20b.txt")});
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_THAT(result.output.toStdString(),
                AllOf(HasSubstr("Name              a b.txt\n"), HasSubstr("Size              5\n"),
                      HasSubstr("MD5               5d41402abc4b2a76b9719d911017c592\n")));
}

TEST_F(CommandLineTest, WhatIsNotThereIsRefusedByTheService) {
    Service service;
    for (const char* command : {"ls", "stat"}) {
        const ProgramResult result = RunOvsync({Text(command), service.Url() + Text("missing")});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(ErrorsOf(result), AllOf(HasSubstr(" \"missing\" on 127.0.0.1:"), Not(HasSubstr("text/plain"))));
        const ProgramResult verbose = RunOvsync({Text("-v"), Text(command), service.Url() + Text("missing")});
        EXPECT_THAT(ErrorsOf(verbose), AllOf(HasSubstr("missing"), HasSubstr("404"), HasSubstr("text/plain")));
    }
}

TEST_F(CommandLineTest, AServerThatIsNotThereCannotBeReached) {
    QString url;
    {
        const Service service;
        url = service.Url();
    }
    const ProgramResult result = List(url + Text("folder/"));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, QByteArray());
    EXPECT_THAT(ErrorsOf(result), testing::MatchesRegex("ovsync: 127.0.0.1:[0-9]+ cannot be reached\n"));
    EXPECT_THAT(ErrorsOf(RunOvsync({Text("ls"), Text("-v"), url + Text("folder/")})), HasSubstr("/folder/"));
}

TEST_F(CommandLineTest, WrongUsageSaysWhatIsWrong) {
    const auto expect = [](const QStringList& arguments, const char* message) {
        const ProgramResult result = RunOvsync(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(ErrorsOf(result),
                    AllOf(testing::StartsWith("ovsync: "), HasSubstr(message), Not(EndsWith("\n\n"))));
    };
    expect({}, "subcommand is required");
    expect({Text("frobnicate")}, "frobnicate");
    expect({Text("ls")}, "URL is required");
    expect({Text("ls"), Text("folder/")}, "folder/");
    expect({Text("ls"), Text("")}, "the URL is empty");
    expect({Text("ls"), Text("http://h:99999/")}, "there is no port 99999");
    expect({Text("ls"), Text("-q"), Text("-v"), Text("http://h/")}, "excludes");
    expect({Text("ls"), Text("http://h/"), Text("--frobnicate")}, "--frobnicate");
    expect({Text("ls"), Text("--silence-limit"), Text("0"), Text("http://h/")}, "--silence-limit");
    expect({Text("ls"), Text("--ca-file"), Text("/missing.pem"), Text("http://h/")}, "/missing.pem");
    expect({Text("ls"), Text("http://ann:secret@h/")}, "OVSYNC_PASSWORD");
    expect({Text("ls"), Text("-u"), Text("ann"), Text("http://h/")}, "No password for ann at h");
    expect({Text("tree"), Text("--since"), Text("yesterday"), Text("http://h/")}, "\"yesterday\"");
    for (const char* command : {"ls", "tree", "du"}) {
        expect({Text(command), Text("--exclude"), Text("[a"), Text("http://h/")}, "\"[a\" is not a valid pattern");
        expect({Text(command), Text("--exclude"), Text(""), Text("http://h/")}, "not a valid pattern");
    }
    const QTemporaryDir rules;
    QFile ignored(rules.filePath(Text("ignored")));
    ASSERT_TRUE(ignored.open(QIODevice::WriteOnly));
    ignored.write("a\n\nb//c\n");
    ignored.close();
    expect({Text("du"), Text("--exclude-from"), ignored.fileName(), Text("http://h/")},
           "/ignored, line 3: \"b//c\" is not a valid pattern: ");
    expect({Text("du"), Text("--exclude-from"), Text("/missing"), Text("http://h/")}, "--exclude-from /missing: ");
    const QTemporaryDir folder;
    for (const char* rate : {"fast", "-1", "1023", "1e9", "5KK"}) {
        expect({Text("pull"), Text("--bandwidth"), Text(rate), Text("http://h/"), folder.path()},
               (std::string("--bandwidth \"") + rate + "\"").c_str());
    }
    expect({Text("mkdir"), Text("http://h/")}, "the root is always there");
    expect({Text("rm"), Text("http://h/")}, "the root cannot be removed");
    expect({Text("mv"), Text("http://h/a")}, "TO is required");
    expect({Text("mv"), Text("http://h/a"), Text("http://i/b")}, "two servers");
    expect({Text("mv"), Text("http://h/a"), Text("https://h/b")}, "two servers");
    expect({Text("mv"), Text("http://h/"), Text("http://h:80/a")}, "root");
}

TEST_F(CommandLineTest, ANumberOutOfRangeIsRefusedWithTheRange) {
    const auto expect = [](const QStringList& arguments, const char* message) {
        const ProgramResult result = RunOvsync(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_THAT(ErrorsOf(result), testing::StartsWith(std::string("ovsync: ") + message + '\n'));
    };
    for (const char* number : {"0", "-1", "many", "9223372036854775808"}) {
        for (const char* option : {"--max-listing-entries", "--max-listing-bytes"}) {
            expect(
                {Text("ls"), Text(option), Text(number), Text("http://h/")},
                (std::string(option) + ": \"" + number + "\" is not a number from 1 to 9223372036854775807").c_str());
        }
    }
    for (const char* number : {"0", "86401", "nan", "soon"}) {
        expect({Text("ls"), Text("--silence-limit"), Text(number), Text("http://h/")},
               (std::string("--silence-limit: \"") + number + "\" is not a number from 0.001 to 86400").c_str());
    }
    for (const char* number : {"0", "65", "2.5", ""}) {
        expect({Text("sync"), Text("--transfers=") + Text(number), Text("d"), Text("http://h/")},
               (std::string("--transfers: \"") + number + "\" is not a number from 1 to 64").c_str());
    }
    expect({Text("sync"), Text("--keep-deleted"), Text("-1"), Text("d"), Text("http://h/")},
           "--keep-deleted: \"-1\" is not a number from 0 to 36500");
    expect({Text("du"), Text("-d"), Text("1001"), Text("http://h/")},
           "--depth: \"1001\" is not a number from 0 to 1000");
    expect({Text("trash"), Text("empty"), Text("--older-than"), Text("x"), Text("d")},
           "--older-than: \"x\" is not a number from 0 to 36500");
    for (const char* limit : {"-1", "101%", "2147483648", "half", ""}) {
        expect({Text("sync"), Text("--max-delete=") + Text(limit), Text("d"), Text("http://h/")},
               (std::string("--max-delete \"") + limit +
                "\": this is neither a number of files from 0 to 2147483647, as 12, nor a part of them from 0% to "
                "100%, as 30%")
                   .c_str());
    }
    expect({Text("pull"), Text("--bandwidth="), Text("http://h/"), Text("d")},
           "--bandwidth \"\": not a valid rate; it should look like 500K or 2.5M, bytes a second, and be at least 1K");
}

TEST_F(CommandLineTest, AnOptionOfOtherCommandsIsRefusedWithTheirNames) {
    const auto expect = [](const QStringList& arguments, const char* message) {
        const ProgramResult result = RunOvsync(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_THAT(ErrorsOf(result), HasSubstr(message));
    };
    for (const char* option : {"--conflict", "--conflict=newer"}) {
        expect({Text("push"), Text(option), Text("newer"), Text("d"), Text("http://h/")},
               "--conflict is an option of sync only\n");
    }
    expect({Text("--conflict"), Text("newer"), Text("push"), Text("d"), Text("http://h/")},
           "--conflict is an option of sync only\n");
    expect({Text("ls"), Text("--older-than"), Text("3"), Text("http://h/")},
           "--older-than is an option of trash empty only\n");
    expect({Text("ls"), Text("-b"), Text("http://h/")}, "-b is an option of du only\n");
    expect({Text("push"), Text("--conflict=newer")}, "--conflict is an option of sync only. DIR is required\n");
    expect({Text("ls"), Text("--version"), Text("http://h/")}, "--version is an option of ovsync itself\n");
    expect({Text("ls"), Text("--frobnicate"), Text("http://h/")}, "not expected: --frobnicate\n");
}

TEST_F(CommandLineTest, APatternThatNothingCanMatchIsRefusedWithItsOptionAndTheReason) {
    const auto expect = [](const QStringList& arguments, const std::string& message) {
        const ProgramResult result = RunOvsync(QStringList({Text("ls"), Text("http://h/")}) + arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(ErrorsOf(result), "ovsync: " + message + '\n');
    };
    expect({Text("--exclude=")}, "--exclude: \"\" is not a valid pattern: it has no name in it");
    expect({Text("--exclude="), Text("-q")}, "--exclude: \"\" is not a valid pattern: it has no name in it");
    expect({Text("--exclude"), Text("!")}, "--exclude: \"!\" is not a valid pattern: it has no name in it");
    expect({Text("--include"), Text("[a")}, "--include: \"[a\" is not a valid pattern: a \"[\" has no \"]\"");
    const QTemporaryDir folder;
    const auto expectInFile = [&](const QByteArray& rules, const std::string& message) {
        QFile file(folder.filePath(Text("rules")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(rules);
        file.close();
        expect({Text("--exclude-from"), file.fileName()},
               "--exclude-from " + file.fileName().toStdString() + ", " + message);
    };
    expectInFile("a\n\na//b\n", "line 3: \"a//b\" is not a valid pattern: no path has two \"/\" next to each other");
    expectInFile("# f\xFCr\n\xFC*\n", "line 2: \"\xEF\xBF\xBD*\" is not a valid pattern: it is not UTF-8");
}

TEST_F(CommandLineTest, TheVersionIsAnObjectWhereJsonIsWished) {
    const QByteArray text = RunOvsync({Text("--version")}).output.trimmed();
    for (const QStringList& arguments :
         {QStringList({Text("--version"), Text("--json")}), QStringList({Text("--json"), Text("--version")})}) {
        const ProgramResult result = RunOvsync(arguments);
        EXPECT_EQ(result.exitCode, 0);
        const nlohmann::json version = nlohmann::json::parse(result.output.constData());
        EXPECT_EQ("ovsync " + version["version"].get<std::string>(), text.toStdString());
    }
}

TEST_F(CommandLineTest, OptionsMayStandBeforeTheCommand) {
    Service service;
    service.AddFile(Text("folder/a.txt"), "a");
    const QString url = service.Url() + Text("folder/");
    EXPECT_EQ(RunOvsync({Text("--exclude"), Text("ls"), Text("ls"), url}).output, QByteArray("a.txt\n"));
    EXPECT_EQ(RunOvsync({Text("--json"), Text("ls"), url}).output, RunOvsync({Text("ls"), url, Text("--json")}).output);
    EXPECT_EQ(RunOvsync({Text("-l"), Text("ls"), url}).output, RunOvsync({Text("ls"), Text("-l"), url}).output);
}

TEST_F(CommandLineTest, QuietLeavesOutWhatIsNeitherAResultNorAnError) {
    Service service;
    service.AddFile(Text("folder/a.txt"), "a");
    const QTemporaryDir folder;
    const ProgramResult tree = RunOvsync({Text("tree"), Text("-q"), service.Url()});
    EXPECT_EQ(tree.output, QByteArray("folder/\nfolder/a.txt\n"));
    EXPECT_EQ(tree.errors, QByteArray());
    const ProgramResult pull = RunOvsync({Text("pull"), Text("-q"), service.Url(), folder.path()});
    EXPECT_EQ(pull.exitCode, 0);
    EXPECT_EQ(pull.output + pull.errors, QByteArray());
}

TEST_F(CommandLineTest, AnErrorIsAnObjectWhereTheResultWouldBe) {
    const Service service;
    const auto errorOf = [](const QStringList& arguments) {
        const ProgramResult result = RunOvsync(arguments);
        EXPECT_EQ(result.output, QByteArray());
        nlohmann::json error = nlohmann::json::parse(result.errors.constData());
        EXPECT_EQ(error["exitStatus"], result.exitCode);
        return error;
    };
    const nlohmann::json refused = errorOf({Text("ls"), Text("--json"), service.Url() + Text("gone")});
    EXPECT_THAT(refused["error"].get<std::string>(), HasSubstr("\"gone\" on 127.0.0.1:"));
    EXPECT_EQ(refused["kind"], "refused");
    EXPECT_EQ(refused["status"], 404);
    EXPECT_THAT(refused["detail"].get<std::string>(), HasSubstr("/gone"));
    const nlohmann::json wrong = errorOf({Text("--json"), Text("ls"), Text("http://h:0/")});
    EXPECT_EQ(wrong["kind"], "usage");
    EXPECT_FALSE(wrong.contains("status"));
    EXPECT_EQ(errorOf({Text("ls"), Text("--json"), Text("--frobnicate")})["kind"], "usage");
    for (const char* command : {"ls", "tree"}) {
        const nlohmann::json both = errorOf({Text(command), Text("-l"), Text("--json"), Text("http://h/")});
        EXPECT_EQ(both["error"], "--json excludes --long");
    }
    EXPECT_EQ(errorOf({Text("trash"), Text("list"), Text("/gone"), Text("--json")})["kind"], "usage");
    EXPECT_EQ(errorOf({Text("ls"), Text("--json"), Text("http://127.0.0.1:1/")})["kind"], "unreachable");
}

TEST_F(CommandLineTest, SoIsWhatIsWrongWithAPatternWhereverJsonIsAskedFor) {
    const QTemporaryDir folder;
    const QString directory = folder.filePath(Text("new"));
    const QString url = Text("http://127.0.0.1:1/");
    for (const QStringList& command : {QStringList({Text("ls"), url}), QStringList({Text("sync"), directory, url}),
                                       QStringList({Text("folders"), Text("add"), directory, url})}) {
        for (const QStringList& pattern :
             {QStringList({Text("--exclude"), Text("a//b")}), QStringList({Text("--include"), Text("a//b")}),
              QStringList({Text("--exclude-from"), Text("/nope")}), QStringList({Text("--exclude-from"), Text("/")})}) {
            const QStringList json(Text("--json"));
            for (const QStringList& arguments : {json + command + pattern, command + pattern + json}) {
                const ProgramResult result = RunOvsync(arguments);
                EXPECT_EQ(result.exitCode, 2);
                EXPECT_EQ(result.output, QByteArray());
                const nlohmann::json error = nlohmann::json::parse(result.errors.constData(), nullptr, false);
                ASSERT_TRUE(error.is_object()) << result.errors.toStdString();
                EXPECT_EQ(error["kind"], "usage");
                EXPECT_EQ(error["exitStatus"], 2);
                EXPECT_THAT(error["error"].get<std::string>(), HasSubstr(pattern.first().toStdString()));
            }
        }
    }
    EXPECT_FALSE(QFileInfo::exists(directory));
}

TEST_F(CommandLineTest, TheHelpOfAGroupShowsWhatAllOfItsCommandsTake) {
    for (const char* group : {"agent", "folders", "trash"}) {
        EXPECT_THAT(RunOvsync({Text(group), Text("--help")}).output.toStdString(),
                    AllOf(HasSubstr("--json"), HasSubstr("-q,--quiet"), HasSubstr("-v,--verbose")));
    }
}

TEST_F(CommandLineTest, RulesOfExclusionHoldInTheOrderInWhichTheyAreGiven) {
    Service service;
    for (const char* path : {"a.txt", "b.txt", "f/a.txt", "f/g/c.txt", "f/g/d.bin"}) {
        service.AddFile(Text(path), "x");
    }
    QTemporaryDir folder;
    QFile file(folder.filePath(Text("rules")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("# what is built\n/f/g/\n");
    file.close();
    const auto tree = [&service](const QStringList& options) {
        return RunOvsync(QStringList({Text("tree"), service.Url()}) + options).output;
    };
    EXPECT_EQ(tree({Text("--exclude"), Text("*.txt")}), QByteArray("f/\nf/g/\nf/g/d.bin\n"));
    EXPECT_EQ(tree({Text("--exclude"), Text("*.txt"), Text("--include"), Text("a.txt")}),
              QByteArray("a.txt\nf/\nf/a.txt\nf/g/\nf/g/d.bin\n"));
    EXPECT_EQ(tree({Text("--include"), Text("a.txt"), Text("--exclude"), Text("*.txt")}),
              QByteArray("f/\nf/g/\nf/g/d.bin\n"));
    EXPECT_EQ(tree({Text("--exclude"), Text("f/**/c.txt"), Text("--exclude"), Text("/a.txt")}),
              QByteArray("b.txt\nf/\nf/a.txt\nf/g/\nf/g/d.bin\n"));
    EXPECT_EQ(tree({Text("--exclude-from"), file.fileName(), Text("--exclude"), Text("b*")}),
              QByteArray("a.txt\nf/\nf/a.txt\n"));
    EXPECT_EQ(RunOvsync({Text("ls"), service.Url() + Text("f"), Text("--exclude"), Text("/g/")}).output,
              QByteArray("a.txt\n"));
}

TEST_F(CommandLineTest, EveryCommandHasHelp) {
    for (const QStringList& arguments :
         {QStringList(Text("--help")), QStringList({Text("ls"), Text("--help")}),
          QStringList({Text("tree"), Text("--help")}), QStringList({Text("du"), Text("--help")}),
          QStringList({Text("stat"), Text("--help")}), QStringList({Text("mkdir"), Text("--help")}),
          QStringList({Text("rm"), Text("--help")}), QStringList({Text("mv"), Text("--help")}),
          QStringList({Text("settings"), Text("--help")}), QStringList({Text("version"), Text("--help")}),
          QStringList({Text("agent"), Text("--help")}), QStringList({Text("agent"), Text("start"), Text("--help")})}) {
        const ProgramResult result = RunOvsync(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_THAT(result.output.toStdString(), AllOf(HasSubstr("Usage: ovsync"), HasSubstr("Exit status:")));
    }
}

TEST(CertificateTest, IsTrustedByAFileThatTheEnvironmentOrTheCommandNames) {
    const tests::SelfSignedCertificate certificate;
    const QString file = certificate.Files().certificateFile;
    const auto list = [&certificate](const QStringList& options, const QStringList& environment) {
        const tests::ScriptedServer server(
            {tests::ScriptedServer::Answer(tests::FixtureAnswer(Text("statuses/options-foreign-200")).Bytes()),
             tests::ScriptedServer::Answer(tests::ListingAnswer(Text("apache.xml")))},
            certificate.Files());
        return RunOvsync(QStringList({Text("ls"), server.Url(Text("/Projects/A/")).toString()}) + options, environment);
    };
    // What the environment of the tests names is not meant.
    const QString noBundle = Text("CURL_CA_BUNDLE=");
    const ProgramResult stranger = list({}, {noBundle, Text("SSL_CERT_FILE=")});
    EXPECT_EQ(stranger.exitCode, 3);
    EXPECT_THAT(ErrorsOf(stranger), testing::MatchesRegex("ovsync: the certificate of 127.0.0.1:[0-9]+ is not trusted "
                                                          "\\(--ca-file FILE trusts it\\)\n"));
    EXPECT_EQ(list({Text("--ca-file"), file}, {}).exitCode, 0);
    EXPECT_EQ(list({}, {noBundle, Text("SSL_CERT_FILE=") + file}).exitCode, 0);
    EXPECT_EQ(list({}, {Text("CURL_CA_BUNDLE=") + file, Text("SSL_CERT_FILE=/missing")}).exitCode, 0);
    EXPECT_EQ(list({Text("--ca-file"), file}, {Text("SSL_CERT_FILE=/missing")}).exitCode, 0);
    const ProgramResult missing = list({}, {noBundle, Text("SSL_CERT_FILE=/missing")});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(ErrorsOf(missing), HasSubstr("SSL_CERT_FILE=/missing: "));
}

TEST(WebPageTest, IsNotShownUnlessAskedFor) {
    const Service service({Text("--fault"), Text("error-page,method=PROPFIND")});
    for (const char* command : {"ls", "tree", "du", "stat"}) {
        const ProgramResult result = RunOvsync({Text(command), service.Url()});
        EXPECT_THAT(ErrorsOf(result),
                    AllOf(HasSubstr("is not a WebDAV server, at least not at its root: a web page came"),
                          Not(HasSubstr("<")), Not(HasSubstr("status"))));
    }
    EXPECT_THAT(ErrorsOf(RunOvsync({Text("ls"), Text("-v"), service.Url()})), HasSubstr("<html>"));
}

TEST(WebPageTest, IsNotShownForASingleFileEither) {
    Service service({Text("--fault"), Text("status=403,method=GET")});
    service.AddFile(Text("a"), "1");
    const QTemporaryDir folder;
    const ProgramResult result = RunOvsync({Text("pull"), service.Url(), folder.path()});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(ErrorsOf(result), testing::MatchesRegex("refused a: 127.0.0.1:[0-9]+ does not let you read \"a\" "
                                                        "without a user \\(-u USER\\)\n"));
    const ProgramResult verbose = RunOvsync({Text("pull"), Text("-v"), service.Url(), folder.path()});
    EXPECT_THAT(ErrorsOf(verbose), AllOf(HasSubstr("GET http://"), HasSubstr("status 403")));
    const ProgramResult json = RunOvsync({Text("pull"), Text("--json"), service.Url(), folder.path()});
    const nlohmann::json event = nlohmann::json::parse(json.output.split('\n').first().constData());
    EXPECT_EQ(event["event"], "refused");
    EXPECT_EQ(event["kind"], "refused");
    EXPECT_EQ(event["status"], 403);
    EXPECT_THAT(event["error"].get<std::string>(), HasSubstr("does not let you read"));
    EXPECT_THAT(event["detail"].get<std::string>(), HasSubstr("GET http://"));
}

TEST(RedirectionTest, NamesItsPlaceForContentAsForListings) {
    for (const char* method : {"PROPFIND", "GET"}) {
        Service service({Text("--fault"), Text("redirect=302,method=") + Text(method)});
        service.AddFile(Text("folder/a"), "a");
        const QTemporaryDir place;
        const ProgramResult result = RunOvsync({Text("get"), service.Url() + Text("folder/a"), place.path()});
        EXPECT_EQ(result.exitCode, 3) << method;
        EXPECT_EQ(
            ErrorsOf(result),
            Text("ovsync: %1 redirects from \"folder/a\" to %2folder/a?redirected, which ovsync does not follow\n")
                .arg(QUrl(service.Url()).authority(), service.Url())
                .toStdString());
    }
}

TEST(BadRequestTest, IsNotTakenForAFileWhereAFolderIsAskedFor) {
    Service service({Text("--fault"), Text("status=400,method=PROPFIND")});
    service.AddFolder(Text("folder"));
    const QTemporaryDir place;
    const ProgramResult result =
        RunOvsync({Text("pull"), service.Url() + Text("folder/"), place.filePath(Text("new"))});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(ErrorsOf(result), HasSubstr("does not understand this, or does not allow such a name (status 400"));
    EXPECT_FALSE(QFile::exists(place.filePath(Text("new"))));
}

class LoginTest : public testing::Test {
protected:
    LoginTest() : _service({Text("--user"), Text("ann")}, Text("s\xC3\xA9\x63ret")) {
        _service.AddFile(Text("folder/a.txt"), "a");
    }

    QString Url() const { return _service.Url() + Text("folder/"); }

    Service _service;
};

TEST_F(LoginTest, WithoutCredentialsTheServiceRefuses) {
    const ProgramResult result = RunOvsync({Text("ls"), Url()});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(ErrorsOf(result), AllOf(HasSubstr("wants a user and a password"), HasSubstr("-u")));
}

TEST_F(LoginTest, ThePasswordComesFromTheEnvironment) {
    const ProgramResult result =
        RunOvsync({Text("ls"), Text("-u"), Text("ann"), Url()}, {Text("OVSYNC_PASSWORD=s\xC3\xA9\x63ret")});
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_EQ(result.output, QByteArray("a.txt\n"));
}

TEST_F(LoginTest, AUserInTheUrlIsAsGoodAsTheOption) {
    const QString url = Url().replace(Text("http://"), Text("http://ann@"));
    const ProgramResult result = RunOvsync({Text("ls"), url}, {Text("OVSYNC_PASSWORD=s\xC3\xA9\x63ret")});
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
}

TEST_F(LoginTest, AUserInTheUrlAndAnotherInTheOptionAreRefused) {
    const QString url = Url().replace(Text("http://"), Text("http://bob@"));
    for (const QStringList& command : {QStringList({Text("ls"), url}),
                                       {Text("login"), url},
                                       {Text("pull"), url, Text("/nowhere")},
                                       {Text("mv"), Url(), url}}) {
        const ProgramResult result =
            RunOvsync(command + QStringList({Text("-u"), Text("ann")}), {Text("OVSYNC_PASSWORD=s\xC3\xA9\x63ret")});
        EXPECT_EQ(result.exitCode, 2) << command.first().toStdString();
        EXPECT_THAT(ErrorsOf(result), HasSubstr("URL names "));
    }
}

TEST_F(LoginTest, TheCommandThatMakesAMissingFolderIsForTheSameUserAndAnyShell) {
    const QStringList environment(Text("OVSYNC_PASSWORD=s\xC3\xA9\x63ret"));
    const QStringList make({Text("mkdir"), Text("-u"), Text("ann"), _service.Url() + Text("it's $HOME/new")});
    const ProgramResult refused = RunOvsync(make, environment);
    EXPECT_EQ(refused.exitCode, 1);
    static const QRegularExpression quoted(Text("\"(ovsync mkdir [^\"]+)\""));
    const QString command = quoted.match(QString::fromUtf8(refused.errors)).captured(1);
    const ProgramResult done = RunTyped(command, environment);
    EXPECT_EQ(done.exitCode, 0) << command.toStdString() << ErrorsOf(done);
    EXPECT_EQ(RunOvsync(make, environment).exitCode, 0);
}

TEST_F(LoginTest, AWrongPasswordIsRefusedAndNotRepeated) {
    const ProgramResult result =
        RunOvsync({Text("ls"), Text("-u"), Text("ann"), Url()}, {Text("OVSYNC_PASSWORD=hunter2")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(ErrorsOf(result), AllOf(HasSubstr("the password for \"ann\" is wrong"), Not(HasSubstr("hunter2"))));
}

TEST_F(LoginTest, ThePasswordComesFromTheNetrc) {
    const QTemporaryDir home;
    QFile netrc(home.filePath(Text(".netrc")));
    ASSERT_TRUE(netrc.open(QIODevice::WriteOnly));
    netrc.write("machine 127.0.0.1 login ann password s\xC3\xA9\x63ret\n");
    netrc.close();
    const QStringList environment(Text("HOME=") + home.path());
    EXPECT_EQ(RunOvsync({Text("ls"), Text("-u"), Text("ann"), Url()}, environment).output, QByteArray("a.txt\n"));
    EXPECT_EQ(RunOvsync({Text("ls"), Url()}, environment).output, QByteArray("a.txt\n"));
    const QStringList another = QStringList(environment) << Text("OVSYNC_PASSWORD=hunter2");
    EXPECT_THAT(ErrorsOf(RunOvsync({Text("ls"), Url()}, another)), HasSubstr("the password for \"ann\" is wrong"));
}

struct Fault {
    const char* name;
    int exitCode;
    const char* message;
};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.name;
}

class FaultTest : public testing::TestWithParam<Fault> {};

TEST_P(FaultTest, EndsInAnErrorAndNeverInAListing) {
    Service service({Text("--fault"), Text(GetParam().name) + Text(",method=PROPFIND")});
    for (int i = 0; i < 20; ++i) {
        service.AddFile(QStringLiteral("folder/file-%1.txt").arg(i), "x");
    }
    for (const QStringList& arguments : {QStringList({Text("ls"), service.Url() + Text("folder/")}),
                                         QStringList({Text("ls"), Text("--json"), service.Url() + Text("folder/")}),
                                         QStringList({Text("stat"), service.Url() + Text("folder/file-1.txt")})}) {
        const ProgramResult result =
            RunOvsync(QStringList(arguments) << Text("--silence-limit") << Text("0.5") << Text("-v"));
        EXPECT_EQ(result.exitCode, GetParam().exitCode) << ErrorsOf(result);
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(ErrorsOf(result), AllOf(HasSubstr("/folder"), HasSubstr(GetParam().message)));
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultTest,
                         testing::Values(Fault{"cut=0", 3, "207"}, Fault{"cut=1", 3, "207"}, Fault{"cut=400", 3, "207"},
                                         Fault{"hang", 3, "no answer"}, Fault{"reset", 3, "no answer"},
                                         Fault{"reset=300", 3, ""}, Fault{"redirect=301", 3, "301"},
                                         Fault{"redirect=307", 3, "307"}, Fault{"error-page", 3, "text/html"},
                                         Fault{"status=204", 3, "204"}, Fault{"status=400", 1, "400"},
                                         Fault{"status=403", 1, "403"}, Fault{"status=500", 1, "500"},
                                         Fault{"status=503", 3, "503"}, Fault{"status=429", 3, "429"},
                                         Fault{"redirect=302", 3, "?redirected, which ovsync does not follow"},
                                         Fault{"content-type=text/html", 3, "text/html"},
                                         Fault{"error-in-body=350", 3, "207"}, Fault{"content-length=+10", 3, "207"},
                                         Fault{"content-length=-10", 3, "207"}));

}  // namespace
