#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QThread>
#include <csignal>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include "tests/client/Fixtures.h"
#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/Text.h"

namespace {

using testing::HasSubstr;
using tests::FixtureAnswer;
using tests::ListingAnswer;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::ScriptedServer;
using tests::Service;
using tests::Text;

const int ShowLimitInMilliseconds = 30000;
const char* const LineStart = "\r\x1B[K";

/// `ovsync`, running with a terminal of its own for all it reads and writes.
class TerminalRun {
public:
    explicit TerminalRun(const QStringList& arguments) {
        QList<QByteArray> texts{OVSYNC_PROGRAM};
        for (const QString& argument : arguments) {
            texts.append(argument.toUtf8());
        }
        std::vector<char*> argv;
        for (QByteArray& text : texts) {
            argv.push_back(text.data());
        }
        argv.push_back(nullptr);
        _process = forkpty(&_terminal, nullptr, nullptr, nullptr);
        if (_process == 0) {
            execv(OVSYNC_PROGRAM, argv.data());
            _exit(127);
        }
    }
    ~TerminalRun() {
        kill(_process, SIGKILL);
        close(_terminal);
        waitpid(_process, nullptr, 0);
    }
    TerminalRun(const TerminalRun&) = delete;
    TerminalRun& operator=(const TerminalRun&) = delete;

    /// Reads until `text` was shown. False when the program ends without, or takes unreasonably long.
    bool Shows(const char* text) {
        const QDeadlineTimer deadline(ShowLimitInMilliseconds);
        while (_shown.find(text) == std::string::npos) {
            pollfd readable{_terminal, POLLIN, 0};
            char bytes[256];
            if (poll(&readable, 1, static_cast<int>(deadline.remainingTime())) != 1) {
                return false;
            }
            const ssize_t size = read(_terminal, bytes, sizeof(bytes));
            if (size <= 0) {
                return false;
            }
            _shown.append(bytes, static_cast<size_t>(size));
        }
        return true;
    }

    void Interrupt() { kill(_process, SIGINT); }

    const std::string& Shown() const { return _shown; }

private:
    int _terminal = -1;
    pid_t _process = -1;
    std::string _shown;
};

/// The answers to a program that lists /Projects/A/; the listing comes after `delay`.
QList<ScriptedServer::Step> SlowListing(const std::function<void()>& delay) {
    ScriptedServer::Step listing;
    listing.answer = [delay](const ScriptedServer::Request&) {
        delay();
        return ListingAnswer(Text("apache.xml"));
    };
    return {ScriptedServer::Answer(FixtureAnswer(Text("statuses/options-service-200")).Bytes()), listing};
}

TEST(ProgressTest, ALongListingShowsOnATerminalWhatCameUntilItIsThere) {
    std::promise<void> isShown;
    const ScriptedServer server(SlowListing([wait = isShown.get_future().share()] { wait.wait(); }));
    TerminalRun run({Text("tree"), server.Url(Text("/Projects/A/")).toString()});
    EXPECT_TRUE(run.Shows("ovsync: 0 bytes received")) << run.Shown();
    isShown.set_value();
    EXPECT_TRUE(run.Shows("the service's time is")) << run.Shown();
    EXPECT_THAT(run.Shown(), HasSubstr(LineStart + std::string("ovsync: 0 bytes received")));
    EXPECT_THAT(run.Shown(), HasSubstr(LineStart + std::string("ovsync: the service's time is")));
}

TEST(ProgressTest, APullShowsABar) {
    Service service({Text("--fault"), Text("drip,method=GET")});
    service.AddFile(Text("a"), QByteArray(1000, 'x'));
    const QTemporaryDir folder;
    TerminalRun run({Text("pull"), service.Url(), folder.path()});
    EXPECT_TRUE(run.Shows("] 0/1 files, ")) << run.Shown();
    run.Interrupt();
    EXPECT_TRUE(run.Shows("Stopped")) << run.Shown();
    EXPECT_THAT(run.Shown(), HasSubstr(LineStart + std::string("Stopped")));
}

TEST(ProgressTest, IsNotShownWhereThereIsNoTerminal) {
    const ScriptedServer server(SlowListing([] { QThread::msleep(1500); }));
    const ProgramResult result = RunOvsync({Text("tree"), server.Url(Text("/Projects/A/")).toString()});
    EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
    EXPECT_EQ(result.errors, QByteArray("ovsync: the service's time is 2026-11-20T10:15:31Z\n"));
}

}  // namespace
