#include "client/sync/pass/PassCommand.h"

#include <gtest/gtest.h>

#include "tests/fakes/Text.h"

namespace {

using ovsync::pass::PassCommand;
using ovsync::pass::ServiceFolder;
using ovsync::pass::SyncOptions;
using tests::Text;

class PassCommandTest : public testing::Test {
protected:
    PassCommandTest() {
        service.folder.localPath = Text("/home/ann/it's");
        service.address = Text("http://h.test/$a/");
    }

    ServiceFolder service;
    SyncOptions options;
};

TEST_F(PassCommandTest, NamesWhatIsNotUsualAsAShellTakesIt) {
    EXPECT_EQ(PassCommand(Text("sync"), service, options),
              Text("ovsync sync '/home/ann/it'\\''s' 'http://h.test/$a/'"));
    service.user = Text("o'ann");
    service.caFile = Text("/ca.pem");
    options.daysKept = 3;
    options.exclusion = ovsync::local::Exclusion({Text("*.tmp")});
    EXPECT_EQ(PassCommand(Text("pull --delete"), service, options),
              Text("ovsync pull --delete --user='o'\\''ann' --ca-file='/ca.pem' --keep-deleted=3 --exclude='*.tmp' "
                   "'http://h.test/$a/' '/home/ann/it'\\''s'"));
}

TEST_F(PassCommandTest, WhatBecomesOfConflictsIsForPassesInBothDirections) {
    options.conflicts = SyncOptions::Conflicts::There;
    EXPECT_TRUE(PassCommand(Text("sync --max-delete 3"), service, options).contains(Text(" --conflict=there ")));
    EXPECT_FALSE(PassCommand(Text("pull"), service, options).contains(Text("--conflict")));
}

}  // namespace
