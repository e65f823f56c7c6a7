#include "client/cli/output/Complaint.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "client/cli/output/SyncOutput.h"
#include "tests/client/cli/input/Terminal.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::output::Complain;
using ovsync::output::ErrorMessage;
using ovsync::output::ErrorStyle;
using ovsync::output::ErrorText;
using ovsync::output::Output;
using ovsync::output::SyncOutput;
using ovsync::output::Warn;
using ovsync::report::SyncEvent;
using tests::Pipe;
using tests::Redirection;
using tests::Terminal;
using tests::Text;

TEST(ComplaintTest, OnATerminalNothingIsShownThatCouldDriveIt) {
    const Terminal terminal;
    {
        const Redirection redirection(STDERR_FILENO, terminal.Descriptor());
        Complain(Text("no \x1B]0;x\x07\nfile \xE2\x80\xAE\xE2\x81\xA9"));
    }
    EXPECT_EQ(terminal.Shown(), "ovsync: no ?]0;x??file ??\r\n");
}

TEST(ComplaintTest, ElsewhereItIsWrittenAsItIs) {
    const Pipe pipe;
    const Terminal terminal;
    {
        const Redirection redirection(STDERR_FILENO, pipe.Descriptor());
        const Redirection other(STDOUT_FILENO, terminal.Descriptor());
        Complain(Text("no \x1B[31m\xE2\x80\xAE"));
    }
    EXPECT_EQ(pipe.Shown(), "ovsync: no \x1B[31m\xE2\x80\xAE\n");
}

TEST(ComplaintTest, AWarningIsAnObjectWhereErrorsAre) {
    const Pipe pipe;
    const ErrorMessage failure{"refused", Text("the date is missing"), Text("PROPFIND failed"), 403};
    const auto shown = [&](const ErrorMessage& message, const ErrorStyle& style) {
        const Redirection redirection(STDERR_FILENO, pipe.Descriptor());
        Warn(message, style);
        return pipe.Shown();
    };
    EXPECT_EQ(shown(failure, {false, false}), "ovsync: the date is missing\n");
    EXPECT_EQ(shown(failure, {false, true}), "ovsync: the date is missing\novsync: PROPFIND failed\n");
    EXPECT_EQ(
        shown(failure, {true, false}),
        "{\"warning\":\"the date is missing\",\"kind\":\"refused\",\"status\":403,\"detail\":\"PROPFIND failed\"}\n");
    EXPECT_EQ(shown({"agent", Text("no agent runs")}, {true, true}),
              "{\"warning\":\"no agent runs\",\"kind\":\"agent\"}\n");
}

TEST(ComplaintTest, WhatAPassTellsIsJudgedByWhereItGoes) {
    const SyncEvent problem{SyncEvent::Kind::Refused, Text("a\x1B"), Text("\xE2\x80\xAE"), 0};
    const SyncEvent success{SyncEvent::Kind::Fetched, Text("b\x1B"), QString(), 1};
    const Terminal terminal;
    const Pipe pipe;
    const auto tell = [&](int outputTo, int errorsTo) {
        const Redirection output(STDOUT_FILENO, outputTo);
        const Redirection errors(STDERR_FILENO, errorsTo);
        Output lines;
        SyncOutput told(lines, SyncOutput::Format::Lines, false, ErrorText({}), false);
        told.OnEvent(problem);
        told.OnEvent(success);
        lines.Flush();
    };
    tell(pipe.Descriptor(), terminal.Descriptor());
    EXPECT_EQ(terminal.Shown(), "refused a?: ?\r\n");
    EXPECT_EQ(pipe.Shown(), "fetched b\x1B\n");
    tell(terminal.Descriptor(), pipe.Descriptor());
    EXPECT_EQ(terminal.Shown(), "fetched b?\r\n");
    EXPECT_EQ(pipe.Shown(), "refused a\x1B: \xE2\x80\xAE\n");
}

}  // namespace
