#include "client/user/Passwords.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>

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

}  // namespace
