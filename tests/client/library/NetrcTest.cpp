#include "client/library/Netrc.h"

#include <gmock/gmock.h>

#include <QFile>
#include <string>

#include "host/core/SyncException.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/Text.h"

namespace ovsync {
namespace library {

namespace {

using tests::CleanEnvironment;
using tests::Text;

class NetrcTest : public testing::Test {
protected:
    NetrcTest() { qunsetenv("NETRC"); }
    ~NetrcTest() override { qunsetenv("NETRC"); }

    void Write(const char* text, const char* name = ".netrc") {
        QFile file(environment.HomeFile(Text(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    /// "user:password"; "none" when there are none.
    static std::string Found(const char* host, const char* user = "") {
        const QAuthenticator found = NetrcCredentials(Text(host), Text(user));
        return found.isNull() ? "none" : (found.user() + Text(":") + found.password()).toStdString();
    }

    const CleanEnvironment environment;
};

TEST_F(NetrcTest, NamesTheUserAndThePasswordOfAHost) {
    EXPECT_EQ(Found("h.test"), "none");
    EXPECT_EQ(Found("h.test", "ann"), "none");
    Write(
        "machine other.test login ann password wrong1\n"
        "machine h.test\n  login bob\n  password right1\n"
        "machine h.test login ann password right2\n"
        "machine 127.0.0.1 login eve password right3\n");
    EXPECT_EQ(Found("h.test"), "bob:right1");
    EXPECT_EQ(Found("H.TEST", "bob"), "bob:right1");
    EXPECT_EQ(Found("h.test", "ann"), "ann:right2");
    EXPECT_EQ(Found("h.test", "eve"), "none");
    EXPECT_EQ(Found("127.0.0.1", "eve"), "eve:right3");
    EXPECT_EQ(Found("third.test"), "none");
}

TEST_F(NetrcTest, ReadsQuotesCommentsAccountsAndMacros) {
    Write(
        "# machine h.test login ann password wrong1\n"
        "macdef init\nmachine h.test login ann password wrong2\n\n"
        "machine h.test login \"ann b\" account some password \"a \\\"quoted\\\" # \\\\ word\" # rest\n"
        "machine i.test login bob password pass#word:2\n");
    EXPECT_EQ(Found("h.test"), "ann b:a \"quoted\" # \\ word");
    EXPECT_EQ(Found("h.test", "ann b"), "ann b:a \"quoted\" # \\ word");
    EXPECT_EQ(Found("i.test", "bob"), "bob:pass#word:2");
}

TEST_F(NetrcTest, AValueMayLookLikeACommentOrAKey) {
    Write(
        "machine h.test login ann password #secret\n"
        "machine i.test login macdef password login # machine i.test\n"
        "machine j.test login bob password right");
    EXPECT_EQ(Found("h.test"), "ann:#secret");
    EXPECT_EQ(Found("i.test"), "macdef:login");
    EXPECT_EQ(Found("j.test"), "bob:right");
}

TEST_F(NetrcTest, AMacroEndsAtAnEmptyLineHoweverLinesEnd) {
    Write(
        "macdef init\r\nmachine h.test login ann password wrong\r\n\r\n"
        "machine h.test login ann password right\r\nmacdef last\r\nmachine i.test login ann password wrong");
    EXPECT_EQ(Found("h.test"), "ann:right");
    EXPECT_EQ(Found("i.test"), "none");
}

TEST_F(NetrcTest, AByteOrderMarkIsNoPartOfTheFirstWord) {
    Write("\xEF\xBB\xBFmachine h.test login ann password right\n");
    EXPECT_EQ(Found("h.test"), "ann:right");
}

TEST_F(NetrcTest, WhatIsNoFileIsNotRead) {
    ASSERT_TRUE(QFile::link(Text("/dev/zero"), environment.HomeFile(Text(".netrc"))));
    EXPECT_THROW(NetrcCredentials(Text("h.test")), sync::core::SyncException);
}

TEST_F(NetrcTest, TakesTheDefaultForOtherHosts) {
    Write("machine h.test login ann password right1\ndefault login anyone password s\xC3\xA9same\n");
    EXPECT_EQ(Found("h.test"), "ann:right1");
    EXPECT_EQ(Found("i.test"), "anyone:s\xC3\xA9same");
    EXPECT_EQ(Found("i.test", "anyone"), "anyone:s\xC3\xA9same");
}

TEST_F(NetrcTest, APasswordStandsForTheLoginBesideItAndForNoOther) {
    for (const char* text : {"machine h.test login bob password wrong1\n", "machine h.test password wrong1 login bob\n",
                             "machine h.test login Ann password wrong1\n", "default login bob password wrong1\n",
                             "machine h.test password wrong1\n", "machine h.test login ann\n",
                             "machine h.test login ann machine h.test login bob password wrong1\n",
                             "machine other.test login ann password wrong1\n", "machine h.test login ann password"}) {
        Write(text);
        EXPECT_EQ(Found("h.test", "ann"), "none") << text;
    }
    Write("machine h.test login bob password right1\ndefault login ann password right2\n");
    EXPECT_EQ(Found("h.test", "ann"), "ann:right2");
    EXPECT_EQ(Found("h.test"), "bob:right1");
}

TEST_F(NetrcTest, ReadsNamesOfHostsInEitherOfTheirForms) {
    Write(
        "machine b\xC3\xBC\x63her.test login ann password right1\nMACHINE xn--mhle-0ra.test LOGIN ann PASSWORD "
        "right2\n");
    EXPECT_EQ(Found("b\xC3\xBC\x63her.test", "ann"), "ann:right1");
    EXPECT_EQ(Found("m\xC3\xBChle.test", "ann"), "ann:right2");
}

TEST_F(NetrcTest, TakesThePasswordBeforeTheUser) {
    Write("machine h.test password right login ann\n");
    EXPECT_EQ(Found("h.test"), "ann:right");
    EXPECT_EQ(Found("h.test", "ann"), "ann:right");
}

TEST_F(NetrcTest, TakesUsersWhoseNamesAreNoPartOfAUrl) {
    Write("machine h.test login a:b@c/%41 password right\nmachine i.test login s\xC3\xA9 password right\n");
    EXPECT_EQ(Found("h.test", "a:b@c/%41"), "a:b@c/%41:right");
    EXPECT_EQ(Found("i.test", "s\xC3\xA9"), "s\xC3\xA9:right");
}

TEST_F(NetrcTest, ReadsTheFileThatTheEnvironmentNames) {
    Write("machine h.test login ann password wrong\n");
    Write("machine h.test login ann password right\n", "other");
    qputenv("NETRC", environment.HomeFile(Text("other")).toUtf8());
    EXPECT_EQ(Found("h.test"), "ann:right");
    qputenv("NETRC", environment.HomeFile(Text("missing")).toUtf8());
    EXPECT_EQ(Found("h.test"), "none");
}

TEST_F(NetrcTest, AFileThatCannotBeReadIsNamed) {
    Write("machine h.test\nlogin ann password \"never closed\nmachine h.test login ann password \"closed\"\n");
    try {
        Found("h.test");
        FAIL();
    } catch (const sync::core::SyncException& error) {
        EXPECT_THAT(error.Utf8Message(), testing::HasSubstr("/.netrc cannot be read: a quote in line 2 "));
    }
}

}  // namespace
}  // namespace library
}  // namespace ovsync
