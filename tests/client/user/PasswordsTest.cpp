#include "client/user/Passwords.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <cstring>

#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::user::Passwords;
using tests::Text;

class PasswordsTest : public testing::Test {
protected:
    PasswordsTest() {
        qunsetenv("NETRC");
        qputenv("XDG_RUNTIME_DIR", _environment.HomeFile(QString()).toUtf8());
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
    ~PasswordsTest() override {
        qunsetenv("XDG_RUNTIME_DIR");
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    int _argc = 1;
    char _name[5] = "test";
    char* _argv[2] = {_name, nullptr};
    const QCoreApplication _application{_argc, _argv};
    const tests::CleanEnvironment _environment;
};

TEST_F(PasswordsTest, WithoutASessionBusTheyAreInTheNetrc) {
    Passwords passwords;
    EXPECT_TRUE(passwords.Find(Text("h.test"), Text("ann")).isNull());
    EXPECT_EQ(passwords.Keep(Text("h.test"), Text("ann"), Text("secret")), Passwords::Place::Netrc);
    EXPECT_EQ(passwords.Find(Text("h.test"), Text("ann")).password(), Text("secret"));
    EXPECT_EQ(passwords.Find(Text("h.test"), QString()).user(), Text("ann"));
    EXPECT_TRUE(QFile::exists(_environment.HomeFile(Text(".netrc"))));
}

TEST_F(PasswordsTest, ABusThatIsNotThereCountsAsNone) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
    EXPECT_EQ(Passwords().Keep(Text("h.test"), Text("ann"), Text("secret")), Passwords::Place::Netrc);
}

TEST_F(PasswordsTest, AKeyringThatDoesNotAnswerCountsAsNoneAndIsNotAskedAgain) {
    const QByteArray path = _environment.HomeFile(Text("bus")).toUtf8();
    const int silent = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.constData(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(bind(silent, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(listen(silent, 16), 0);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path);
    Passwords passwords;
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(passwords.Keep(Text("h.test"), Text("ann"), Text("secret")), Passwords::Place::Netrc);
    }
    close(silent);
}

}  // namespace
