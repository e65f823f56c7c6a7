#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <string>

#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using tests::ErrorsOf;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::Service;
using tests::Text;

class CheckCommandTest : public testing::Test {
protected:
    void SetUp() override {
        _service.AddFile(Text("S/a.txt"), "a");
        _service.AddFile(Text("S/b.txt"), "b");
        ASSERT_EQ(RunOvsync({Text("pull"), _service.Url() + Text("S"), _folder.path()}).exitCode, 0);
    }

    ProgramResult Check(const QStringList& options = QStringList()) {
        return RunOvsync(QStringList(Text("check")) << options << _folder.path() << _service.Url() + Text("S"));
    }
    void Differ() {
        QFile file(_folder.filePath(Text("a.txt")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write("x"), 1);
        _service.AddFile(Text("S/c.txt"), "c");
    }

    Service _service;
    QTemporaryDir _folder;
};

TEST_F(CheckCommandTest, WhatIsInStepIsTheSame) {
    const ProgramResult result = Check();
    EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
    EXPECT_EQ(result.output, "2 files the same\n");
}

TEST_F(CheckCommandTest, EveryDifferenceHasALineAndTheExitStatusTellsOfThem) {
    Differ();
    const ProgramResult result = Check();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output,
              "different a.txt: the content\nonly there c.txt\n1 file the same, 1 only there, 1 different\n");
}

TEST_F(CheckCommandTest, WhatIsExcludedIsNotCompared) {
    Differ();
    EXPECT_EQ(Check({Text("--exclude"), Text("a.txt"), Text("--exclude"), Text("c.txt")}).output, "1 file the same\n");
}

TEST_F(CheckCommandTest, JsonIsAnObjectForEachFindingAndASummary) {
    Differ();
    const ProgramResult result = Check({Text("--json")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output,
              "{\"event\":\"different\",\"path\":\"a.txt\",\"detail\":\"the content\"}\n"
              "{\"event\":\"onlyThere\",\"path\":\"c.txt\"}\n"
              "{\"event\":\"summary\",\"same\":1,\"sameBySizeAlone\":0,\"skipped\":0,\"onlyHere\":0,\"onlyThere\":1,"
              "\"different\":1,\"unknown\":0}\n");
}

TEST_F(CheckCommandTest, BothFoldersHaveToBeThere) {
    EXPECT_EQ(RunOvsync({Text("check"), _folder.filePath(Text("gone")), _service.Url()}).exitCode, 2);
    EXPECT_EQ(RunOvsync({Text("check"), _folder.path(), _service.Url() + Text("gone")}).exitCode, 1);
}

}  // namespace
