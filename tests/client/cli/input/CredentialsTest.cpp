#include "client/cli/input/Credentials.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>

#include "client/cli/input/UsageError.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::input::FindCredentials;
using ovsync::input::UsageError;
using tests::Text;

QString FindPassword(const QString& user, const QString& host) {
    return FindCredentials(user, host).credentials.password();
}

class CredentialsTest : public testing::Test {
protected:
    CredentialsTest() {
        qunsetenv("OVSYNC_PASSWORD");
        WriteNetrc("");
        qputenv("NETRC", _directory.filePath(Text("netrc")).toUtf8());
    }
    ~CredentialsTest() override {
        qunsetenv("OVSYNC_PASSWORD");
        qunsetenv("NETRC");
    }

    void WriteNetrc(const char* text) {
        QFile file(_directory.filePath(Text("netrc")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    const QTemporaryDir _directory;
};

TEST_F(CredentialsTest, ComesFromTheEnvironmentFirst) {
    WriteNetrc("machine service.test login ann password fromnetrc\n");
    qputenv("OVSYNC_PASSWORD", "s\xC3\xA9\x63ret");
    EXPECT_EQ(FindPassword(Text("ann"), Text("service.test")), Text("s\xC3\xA9\x63ret"));
    qputenv("OVSYNC_PASSWORD", "");
    EXPECT_EQ(FindPassword(Text("ann"), Text("service.test")), Text(""));
}

TEST_F(CredentialsTest, ComesFromTheNetrcOfTheHostAndTheUser) {
    WriteNetrc(
        "machine other.test login ann password wrong1\n"
        "machine service.test\n  login bob\n  password wrong2\n"
        "machine service.test login ann password right\n"
        "default login ann password wrong3\n");
    EXPECT_EQ(FindPassword(Text("ann"), Text("service.test")), Text("right"));
    EXPECT_EQ(FindPassword(Text("bob"), Text("SERVICE.test")), Text("wrong2"));
    EXPECT_EQ(FindPassword(Text("ann"), Text("third.test")), Text("wrong3"));
}

TEST_F(CredentialsTest, WithoutAUserAreThoseOfTheHostInTheNetrc) {
    WriteNetrc("machine service.test login ann password listed\n");
    const QAuthenticator listed = FindCredentials(QString(), Text("service.test")).credentials;
    EXPECT_EQ(listed.user(), Text("ann"));
    EXPECT_EQ(listed.password(), Text("listed"));
    EXPECT_TRUE(FindCredentials(QString(), Text("other.test")).credentials.isNull());
}

// Runs `action` in a process of its own that has `terminal` as its terminal, or none, and returns what it wrote.
template <typename Action>
std::string InSession(int terminal, Action action) {
    int pipeEnds[2];
    EXPECT_EQ(pipe(pipeEnds), 0);
    const pid_t child = fork();
    if (child == 0) {
        setsid();
        if (terminal >= 0) {
            ioctl(terminal, TIOCSCTTY, 0);
        }
        const std::string result = action();
        [[maybe_unused]] const ssize_t written = write(pipeEnds[1], result.data(), result.size());
        _exit(0);
    }
    close(pipeEnds[1]);
    char result[256] = {};
    const ssize_t size = read(pipeEnds[0], result, sizeof(result) - 1);
    close(pipeEnds[0]);
    waitpid(child, nullptr, 0);
    return std::string(result, static_cast<size_t>(size > 0 ? size : 0));
}

std::string FoundPassword() {
    try {
        return "found " + FindPassword(Text("ann"), Text("service.test")).toStdString();
    } catch (const UsageError& e) {
        return e.what();
    }
}

TEST_F(CredentialsTest, WithoutATerminalToAskAtItIsAnError) {
    WriteNetrc("machine service.test login bob password wrong1\ndefault login eve password wrong2\n");
    EXPECT_THAT(InSession(-1, FoundPassword), testing::HasSubstr("No password for ann at service.test"));
}

TEST_F(CredentialsTest, IsAskedForOnTheTerminalAndNotEchoed) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    const int user = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    ASSERT_GE(user, 0);

    const pid_t typist = fork();
    if (typist == 0) {
        // Types once the prompt is there: by then the echo is off or about to be, and the input waits.
        char prompt[256] = {};
        [[maybe_unused]] ssize_t ignored = read(terminal, prompt, sizeof(prompt));
        termios settings{};
        do {
            tcgetattr(user, &settings);
        } while ((settings.c_lflag & static_cast<tcflag_t>(ECHO)) != 0);
        ignored = write(terminal, "typed\n", 6);
        _exit(0);
    }
    EXPECT_EQ(InSession(user, FoundPassword), "found typed");
    waitpid(typist, nullptr, 0);

    char echoed[256] = {};
    fcntl(terminal, F_SETFL, O_NONBLOCK);
    [[maybe_unused]] const ssize_t ignored = read(terminal, echoed, sizeof(echoed) - 1);
    EXPECT_THAT(std::string(echoed), testing::Not(testing::HasSubstr("typed")));
    termios settings{};
    tcgetattr(user, &settings);
    EXPECT_NE(settings.c_lflag & static_cast<tcflag_t>(ECHO), 0U);
    close(user);
    close(terminal);
}

}  // namespace
