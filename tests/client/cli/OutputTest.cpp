#include "client/cli/Output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/core/SyncException.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::cli::Output;
using sync::core::SyncException;

/// Standard output, put in another's place as long as this object lives.
class RedirectedOutput {
public:
    explicit RedirectedOutput(int target) : _saved(dup(STDOUT_FILENO)) { dup2(target, STDOUT_FILENO); }
    ~RedirectedOutput() {
        dup2(_saved, STDOUT_FILENO);
        close(_saved);
    }
    RedirectedOutput(const RedirectedOutput&) = delete;
    RedirectedOutput& operator=(const RedirectedOutput&) = delete;

private:
    const int _saved;
};

TEST(OutputTest, OnATerminalControlCharactersAreNotPassedOn) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    const int user = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    ASSERT_GE(user, 0);
    QByteArray shown;
    bool isTerminal = false;
    {
        const RedirectedOutput redirected(user);
        const Output output;
        isTerminal = output.IsTerminal();
        shown = output.Shown(QString::fromUtf8("a\x1B[31mb\nc\xC3\xA9"));
    }
    close(user);
    close(terminal);
    EXPECT_TRUE(isTerminal);
    EXPECT_EQ(shown, QByteArray("a?[31mb?c\xC3\xA9"));
}

TEST(OutputTest, ElsewhereNamesAreWrittenAsTheyAre) {
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    QByteArray shown;
    {
        const RedirectedOutput redirected(pipeEnds[1]);
        Output output;
        shown = output.Shown(QString::fromUtf8("a\x1B[31mb\nc"));
        output.Write("first ");
        output.Write("second");
        output.Flush();
    }
    close(pipeEnds[1]);
    char read_[64] = {};
    EXPECT_EQ(read(pipeEnds[0], read_, sizeof(read_)), 12);
    close(pipeEnds[0]);
    EXPECT_STREQ(read_, "first second");
    EXPECT_EQ(shown, QByteArray("a\x1B[31mb\nc"));
}

TEST(OutputTest, AFullDiskIsAnError) {
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    std::string error;
    {
        const RedirectedOutput redirected(full);
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
