#include "client/user/NetrcFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QFile>

#include "client/library/Netrc.h"
#include "host/core/SyncException.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::user::NetrcWith;
using ovsync::user::WriteToNetrc;
using tests::Text;

QByteArray With(const QByteArray& text) {
    return NetrcWith(text, Text("h.test"), Text("ann"), Text("new"));
}

TEST(NetrcFileTest, ANewEntryComesToTheEnd) {
    const QByteArray entry = "machine h.test login ann password new\n";
    EXPECT_EQ(With(""), entry);
    EXPECT_EQ(With("# mine\n"), "# mine\n" + entry);
    EXPECT_EQ(With("machine other.test login ann password old"), "machine other.test login ann password old\n" + entry);
    EXPECT_EQ(With("machine h.test login bob password old\n"), "machine h.test login bob password old\n" + entry);
}

TEST(NetrcFileTest, ANewEntryComesBeforeWhatIsSaidOfAllOtherHosts) {
    EXPECT_EQ(With("# mine\ndefault login ann password old\n"),
              "# mine\nmachine h.test login ann password new\ndefault login ann password old\n");
}

TEST(NetrcFileTest, OfAKnownEntryThePasswordAloneChanges) {
    EXPECT_EQ(With("machine i.test login ann password a\n\nmachine H.test\n  login ann # who\n  password old # what\n"),
              "machine i.test login ann password a\n\nmachine H.test\n  login ann # who\n  password new # what\n");
    EXPECT_EQ(With("machine h.test password \"o l\\\"d\" login ann account x\n"),
              "machine h.test password new login ann account x\n");
    EXPECT_EQ(With("machine h.test login bob password b machine h.test login ann password old"),
              "machine h.test login bob password b machine h.test login ann password new");
    EXPECT_EQ(With("machine h.test login ann\n"), "machine h.test login ann password new\n");
}

TEST(NetrcFileTest, CommentsAndMacrosAreNoEntries) {
    const QByteArray text =
        "# machine h.test login ann password old\n"
        "machine i.test login ann password a\nmacdef init\nmachine h.test login ann password old\n\n";
    EXPECT_EQ(With(text), text + "machine h.test login ann password new\n");
    EXPECT_EQ(With("macdef init\nfoo"), "macdef init\nfoo\n\nmachine h.test login ann password new\n");
}

class WriteToNetrcTest : public testing::Test {
protected:
    WriteToNetrcTest() { qunsetenv("NETRC"); }

    QString Path() const { return _environment.HomeFile(Text(".netrc")); }
    void Write(const char* text) {
        QFile file(Path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    unsigned Mode() const {
        struct stat status {};
        EXPECT_EQ(stat(Path().toUtf8().constData(), &status), 0);
        return status.st_mode & 0777U;
    }

    const tests::CleanEnvironment _environment;
};

TEST_F(WriteToNetrcTest, EveryPasswordIsReadAsItWasWritten) {
    for (const char* password : {"simple", "with space", "\"quoted\" \\ and # more", "tab\tand\nline", "s\xC3\xA9same",
                                 "#first", "pass#word:2", "'", "default", "machine"}) {
        WriteToNetrc(Text("h.test"), Text("an n"), Text(password));
        EXPECT_EQ(ovsync::library::NetrcCredentials(Text("h.test"), Text("an n")).password(), Text(password));
    }
    EXPECT_EQ(Mode(), 0600U);
}

TEST_F(WriteToNetrcTest, TheFileIsForThisUserAloneFromThenOn) {
    Write("machine h.test login ann password new\n");
    ASSERT_TRUE(QFile::setPermissions(Path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    WriteToNetrc(Text("h.test"), Text("ann"), Text("new"));
    EXPECT_EQ(Mode(), 0600U);
}

TEST_F(WriteToNetrcTest, AFileThatCannotBeReadIsLeftAsItIs) {
    const char* const text = "machine h.test login ann password \"never closed\n";
    Write(text);
    EXPECT_THROW(WriteToNetrc(Text("h.test"), Text("ann"), Text("new")), sync::core::SyncException);
    QFile file(Path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), text);
}

}  // namespace
