#include "client/cli/output/Output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/core/SyncException.h"
#include "tests/client/cli/input/Terminal.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::output::Output;
using sync::core::SyncException;
using tests::Pipe;
using tests::Redirection;
using tests::Terminal;

const char* const Evil = "a\x1B[31mb\nc\xC3\xA9\xC2\x9B\xE2\x80\xAE\xE2\x81\xA6.\x7F";

TEST(OutputTest, OnATerminalNothingIsShownThatCouldDriveIt) {
    const Terminal terminal;
    const Redirection redirection(STDOUT_FILENO, terminal.Descriptor());
    const Output output;
    EXPECT_EQ(output.Shown(QString::fromUtf8(Evil)), QByteArray("a?[31mb?c\xC3\xA9???.?"));
}

TEST(OutputTest, OnATerminalJsonIsWrittenWithEscapes) {
    const Terminal terminal;
    {
        const Redirection redirection(STDOUT_FILENO, terminal.Descriptor());
        Output output;
        output.Write(Evil);
        output.Flush();
    }
    EXPECT_EQ(terminal.Shown(), "a\\u001b[31mb\r\nc\xC3\xA9\\u009b\\u202e\\u2066.\\u007f");
}

TEST(OutputTest, ElsewhereNamesAreWrittenAsTheyAre) {
    const Pipe pipe;
    const Terminal terminal;
    QByteArray shown;
    {
        const Redirection redirection(STDOUT_FILENO, pipe.Descriptor());
        const Redirection other(STDERR_FILENO, terminal.Descriptor());
        Output output;
        shown = output.Shown(QString::fromUtf8(Evil));
        output.Write(Evil);
        output.Write("second");
        output.Flush();
    }
    EXPECT_EQ(pipe.Shown(), std::string(Evil) + "second");
    EXPECT_EQ(shown, QByteArray(Evil));
}

TEST(OutputTest, AFullDiskIsAnError) {
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    std::string error;
    {
        const Redirection redirection(STDOUT_FILENO, full);
        Output output;
        output.Write("something");
        try {
            output.Flush();
        } catch (const SyncException& e) {
            error = e.what();
        }
    }
    close(full);
    EXPECT_EQ(error, "Standard output: No space left on device");
}

}  // namespace
