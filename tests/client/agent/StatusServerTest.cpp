#include "client/agent/StatusServer.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QCoreApplication>
#include <QLocalSocket>
#include <QTemporaryDir>

#include "host/core/SyncException.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::agent::StatusServer;
using tests::Text;

class StatusServerTest : public testing::Test {
protected:
    StatusServerTest() { _server.Listen(_path); }

    std::unique_ptr<QLocalSocket> Connect() {
        auto socket = std::make_unique<QLocalSocket>();
        socket->connectToServer(_path);
        EXPECT_TRUE(socket->waitForConnected());
        return socket;
    }

    QByteArray LineTo(QLocalSocket& socket) {
        for (int i = 0; i < 1000 && !socket.canReadLine(); ++i) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            socket.waitForReadyRead(10);
        }
        return socket.readLine();
    }

    int _argc = 1;
    char _name[5] = "test";
    char* _argv[2] = {_name, nullptr};
    const QCoreApplication _application{_argc, _argv};
    const QTemporaryDir _folder;
    const QString _path = StatusServer::PathIn(_folder.path());
    QByteArray _status = "one\n";
    QByteArrayList _done;
    StatusServer _server{{[this] { return _status; }, [this] { _done.append("reload"); },
                          [this] { _done.append("stop"); },
                          [this](const QString& directory) { _done.append("look " + directory.toUtf8()); }}};
};

TEST_F(StatusServerTest, AnswersThisUserAloneAndEachRequestByALine) {
    struct stat status {};
    ASSERT_EQ(stat(_path.toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    const auto socket = Connect();
    socket->write("status\nreload\nstop\n");
    EXPECT_EQ(LineTo(*socket), "one\n");
    EXPECT_EQ(LineTo(*socket), "one\n");
    EXPECT_EQ(LineTo(*socket), "one\n");
    EXPECT_EQ(_done, QByteArrayList({"reload", "stop"}));
}

TEST_F(StatusServerTest, IsToldWhichFolderToLookAtWhateverItsName) {
    const auto socket = Connect();
    const QString folder = Text("/a b\n%20/") + QString(4000, QChar(0xe4));
    socket->write(StatusServer::LookRequest(folder) + '\n');
    EXPECT_EQ(LineTo(*socket), "one\n");
    EXPECT_EQ(_done, QByteArrayList({"look " + folder.toUtf8()}));
}

TEST_F(StatusServerTest, TellsThoseWhoWatchWhatChanged) {
    const auto watcher = Connect();
    const auto other = Connect();
    watcher->write("watch\n");
    other->write("status\n");
    EXPECT_EQ(LineTo(*watcher), "one\n");
    EXPECT_EQ(LineTo(*other), "one\n");
    _status = "two\n";
    _server.TellWatchers();
    EXPECT_EQ(LineTo(*watcher), "two\n");
    EXPECT_EQ(other->bytesAvailable(), 0);
}

TEST_F(StatusServerTest, AWatcherThatIsSlowIsToldTheLastInTheEnd) {
    const auto watcher = Connect();
    watcher->write("watch\n");
    LineTo(*watcher);
    const QByteArray large = QByteArray(5000000, 'x') + '\n';
    for (const QByteArray& status : {large, QByteArray("two\n"), QByteArray("three\n")}) {
        _status = status;
        _server.TellWatchers();
    }
    EXPECT_EQ(LineTo(*watcher), large);
    EXPECT_EQ(LineTo(*watcher), "three\n");
}

TEST_F(StatusServerTest, AWatcherThatWentIsForgotten) {
    auto watcher = Connect();
    watcher->write("watch\n");
    LineTo(*watcher);
    watcher.reset();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    _server.TellWatchers();
    const auto another = Connect();
    another->write("status\n");
    EXPECT_EQ(LineTo(*another), "one\n");
}

TEST_F(StatusServerTest, WhoeverSaysSomethingElseIsSentAway) {
    for (const QByteArray& request : {QByteArray("GET / HTTP/1.1\n"), QByteArray(20000, 'x')}) {
        const auto socket = Connect();
        socket->write(request);
        EXPECT_EQ(LineTo(*socket), "");
        EXPECT_EQ(socket->state(), QLocalSocket::UnconnectedState);
    }
}

TEST_F(StatusServerTest, TakesThePlaceOfADeadOneAndNamesAPlaceThatCannotBe) {
    StatusServer second({[] { return QByteArray("second\n"); }, [] {}, [] {}, [](const QString&) {}});
    second.Listen(_path);
    const auto socket = Connect();
    socket->write("status\n");
    EXPECT_EQ(LineTo(*socket), "second\n");
    StatusServer third({[] { return QByteArray(); }, [] {}, [] {}, [](const QString&) {}});
    EXPECT_THROW(third.Listen(_folder.filePath(Text("missing/agent.sock"))), sync::core::SyncException);
}

}  // namespace
