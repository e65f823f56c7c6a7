#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QMap>
#include <QTemporaryDir>
#include <ostream>

#include "tests/client/Fixtures.h"
#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/Text.h"

namespace {

using tests::ProgramResult;
using tests::ScriptedServer;
using tests::Text;

/// A fixture for each request, which is its method, its depth and its target.
using Script = QMap<QByteArray, const char*>;

const Script Honest{{"PROPFIND 0 /files/", "lies/root-itself-207"},
                    {"OPTIONS  /files/", "statuses/options-foreign-200"},
                    {"PROPFIND infinity /files/", "lies/whole-tree-207"},
                    {"PROPFIND 1 /files/folder/deep/", "lies/deep-207"},
                    {"GET  /files/a.txt", "lies/a-200"},
                    {"GET  /files/folder/b.txt", "lies/b-200"},
                    {"GET  /files/folder/deep/c.txt", "lies/c-200"}};

struct Lie {
    const char* name;
    /// What it answers otherwise than an honest server.
    Script answers;
    int exitCode;
    const char* message;
    /// The files that are left here.
    const char* left;
};

void PrintTo(const Lie& lie, std::ostream* stream) {
    *stream << lie.name;
}

const char* const Everything = "a.txt folder/b.txt folder/deep/c.txt";
const char* const NotFound = "statuses/not-found-404";

/// A server that told the truth once lists less than there is, to a pull that may delete everything.
class LyingListingTest : public testing::TestWithParam<Lie> {
protected:
    static ScriptedServer::Step Answering(const Script& script) {
        return {[script](const ScriptedServer::Request& request) {
                    const QByteArray key = request.method + ' ' + request.headers.value("depth") + ' ' +
                                           QUrl(Text(request.target)).path().toUtf8();
                    const char* const fixture = script.value(key, nullptr);
                    return fixture == nullptr
                               ? "HTTP/1.1 500 Not in the script: " + key + "\r\nContent-Length: 0\r\n\r\n"
                               : tests::FixtureAnswer(Text(fixture)).Bytes();
                },
                ScriptedServer::Ending::Close};
    }

    ProgramResult Pull(const Script& script, const QStringList& options = QStringList()) {
        // More than a pull of three files can need.
        QList<ScriptedServer::Step> steps;
        for (int i = 0; i < 30; ++i) {
            steps.append(Answering(script));
        }
        const ScriptedServer server(steps);
        return tests::RunOvsync(
            QStringList{Text("pull"), Text("-j"), Text("1"), Text("http://service.invalid/files/"), folder.path()} +
                options,
            {Text("http_proxy=") + server.Url(QString()).toString()});
    }

    QString Left() const {
        QStringList files;
        QDirIterator all(folder.path(), QDir::Files, QDirIterator::Subdirectories);
        while (all.hasNext()) {
            files.append(QDir(folder.path()).relativeFilePath(all.next()));
        }
        files.sort();
        return files.join(QLatin1Char(' '));
    }

    const QTemporaryDir folder;
};

TEST_P(LyingListingTest, DeletesNothingThatIsThere) {
    const ProgramResult first = Pull(Honest);
    ASSERT_EQ(first.exitCode, 0) << tests::ErrorsOf(first);
    ASSERT_EQ(Left(), Text(Everything));
    Script script = Honest;
    for (auto answer = GetParam().answers.begin(); answer != GetParam().answers.end(); ++answer) {
        script[answer.key()] = answer.value();
    }
    const ProgramResult second = Pull(script, {Text("--delete"), Text("--max-delete"), Text("100%")});
    EXPECT_EQ(second.exitCode, GetParam().exitCode) << tests::ErrorsOf(second) << second.output.toStdString();
    EXPECT_THAT((second.output + second.errors).toStdString(), testing::HasSubstr(GetParam().message));
    EXPECT_EQ(Left(), Text(GetParam().left));
    // And when it tells the truth again, all is well.
    const ProgramResult third = Pull(Honest, {Text("--delete")});
    EXPECT_EQ(third.exitCode, 0) << tests::ErrorsOf(third) << third.output.toStdString();
    EXPECT_EQ(Left(), Text(Everything));
}

INSTANTIATE_TEST_SUITE_P(
    Lies, LyingListingTest,
    testing::Values(Lie{"one level",
                        {{"PROPFIND infinity /files/", "lies/first-level-207"},
                         {"PROPFIND 1 /files/folder/", "lies/folder-207"}},
                        0,
                        "",
                        Everything},
                    Lie{"two levels", {{"PROPFIND infinity /files/", "lies/two-levels-207"}}, 0, "", Everything},
                    Lie{"one level, and nothing of a folder below",
                        {{"PROPFIND infinity /files/", "lies/first-level-207"},
                         {"PROPFIND 1 /files/folder/", "statuses/forbidden-403"}},
                        1,
                        "does not let you read \"files/folder\"",
                        Everything},
                    Lie{"one level, and a folder below that is not there",
                        {{"PROPFIND infinity /files/", "lies/first-level-207"},
                         {"PROPFIND 1 /files/folder/", NotFound},
                         {"PROPFIND 1 /files/", "lies/first-level-207"}},
                        3,
                        "lists it in the one above",
                        Everything},
                    Lie{"a folder that could not be read for a moment",
                        {{"PROPFIND infinity /files/", "lies/first-level-207"},
                         {"PROPFIND 1 /files/folder/", "lies/folder-empty-207"},
                         {"PROPFIND 0 /files/folder/deep", "lies/deep-itself-207"},
                         {"PROPFIND 0 /files/folder/b.txt", "lies/b-207"}},
                        1,
                        "folder/b.txt",
                        Everything},
                    Lie{"a file without its folder",
                        {{"PROPFIND infinity /files/", "lies/file-without-its-folder-207"}},
                        1,
                        "folder/deep/c.txt",
                        Everything},
                    Lie{"everything gone, and no answer about the files",
                        {{"PROPFIND infinity /files/", "lies/nothing-207"}},
                        1,
                        "a.txt",
                        Everything},
                    Lie{"the truth about a folder that is gone",
                        {{"PROPFIND infinity /files/", "lies/first-level-207"},
                         {"PROPFIND 1 /files/folder/", "lies/folder-empty-207"},
                         {"PROPFIND 0 /files/folder/deep", NotFound},
                         {"PROPFIND 0 /files/folder/b.txt", NotFound}},
                        0,
                        "deleted folder/b.txt",
                        "a.txt"}));

}  // namespace
