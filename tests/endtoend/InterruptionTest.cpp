#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <csignal>
#include <functional>

#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::Service;
using tests::Text;

const int EndLimitInMilliseconds = 30000;

class InterruptionTest : public testing::TestWithParam<int> {
protected:
    QStringList Names() const { return QDir(_folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    /// Starts the command, sends it the signal once `isReady`, and waits for its end.
    ProgramResult Interrupt(const QStringList& arguments, const std::function<bool()>& isReady) {
        QProcess process;
        process.start(QStringLiteral(OVSYNC_PROGRAM), arguments);
        EXPECT_TRUE(process.waitForStarted(EndLimitInMilliseconds));
        QElapsedTimer timer;
        timer.start();
        while (!isReady() && timer.elapsed() < EndLimitInMilliseconds) {
            QThread::msleep(5);
        }
        EXPECT_TRUE(isReady());
        EXPECT_EQ(kill(static_cast<pid_t>(process.processId()), GetParam()), 0);
        EXPECT_TRUE(process.waitForFinished(EndLimitInMilliseconds));
        ProgramResult result;
        result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        result.output = process.readAllStandardOutput();
        result.errors = process.readAllStandardError();
        return result;
    }

    QTemporaryDir _folder;
};

TEST_P(InterruptionTest, EndsAPullInGoodOrder) {
    // The second file comes one byte a second.
    Service service({Text("--fault"), Text("drip,method=GET,request=2")});
    service.AddFile(Text("a"), "1");
    service.AddFile(Text("b"), QByteArray(1000, 'x'));
    const ProgramResult result = Interrupt({Text("pull"), Text("-j"), Text("1"), service.Url(), _folder.path()},
                                           [this] { return Names().contains(Text("a")) && Names().size() == 2; });
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.output, QByteArray("fetched a\nStopped: 1 fetched (1 B)\n"));
    EXPECT_EQ(result.errors, QByteArray());
    EXPECT_EQ(Names(), QStringList(Text("a")));
    const ProgramResult next = RunOvsync({Text("pull"), service.Url(), _folder.path()});
    EXPECT_EQ(next.exitCode, 0);
    EXPECT_THAT(next.output.toStdString(), StartsWith("fetched b\n"));
}

TEST_P(InterruptionTest, ComesBeforeALargeFileThatMayTakeLittleOfTheBandwidth) {
    Service service;
    service.AddFile(Text("a"), QByteArray(64 * 1024 * 1024, 'x'));
    const ProgramResult result =
        Interrupt({Text("pull"), Text("--bandwidth"), Text("8K"), service.Url(), _folder.path()},
                  [this] { return Names().size() == 1; });
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.output, QByteArray("Stopped\n"));
    EXPECT_EQ(Names(), QStringList());
}

TEST_P(InterruptionTest, EndsAPushInGoodOrder) {
    Service service({Text("--fault"), Text("hang,method=PUT,request=2")});
    for (const char* name : {"a", "b"}) {
        QFile file(_folder.filePath(Text(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(name);
    }
    const ProgramResult result = Interrupt({Text("push"), Text("-j"), Text("1"), _folder.path(), service.Url()},
                                           [&service] { return service.HasFile(Text("a")); });
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.errors, QByteArray());
    EXPECT_THAT(result.output.toStdString(), HasSubstr("Stopped"));
    EXPECT_FALSE(service.HasFile(Text("b")));
}

TEST_P(InterruptionTest, IsNoFailureOfTheFileThatIsLookedUpAfterItWasSent) {
    // After those for the state and the listing.
    Service service({Text("--fault"), Text("hang,method=PROPFIND,request=3")});
    QFile file(_folder.filePath(Text("a")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const ProgramResult result =
        Interrupt({Text("push"), _folder.path(), service.Url()}, [&service] { return service.HasFile(Text("a")); });
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.errors, QByteArray());
    EXPECT_EQ(result.output, QByteArray("Stopped\n"));
}

TEST_P(InterruptionTest, EndsAListingThatDoesNotCome) {
    const Service service({Text("--fault"), Text("hang,method=PROPFIND")});
    const ProgramResult result = Interrupt({Text("pull"), service.Url(), _folder.path()}, [this] {
        return QFile::exists(_folder.filePath(Text(".ovsync/records.db")));
    });
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.output, QByteArray("Stopped\n"));
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptionTest, testing::Values(SIGINT, SIGTERM));

}  // namespace
