#include "client/listing/Href.h"

#include <gtest/gtest.h>

#include <QUrl>
#include <string>

#include "host/core/QtCompat.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace listing {

namespace {

class HrefTest : public testing::Test {
protected:
    std::string Path(const std::string& text) {
        href.Read(text.data(), text.size());
        return href.Path();
    }

    std::string Key(const std::string& text) {
        href.Read(text.data(), text.size());
        return href.Key();
    }

    void ExpectRefused(const std::string& text) {
        EXPECT_THROW(href.Read(text.data(), text.size()), sync::core::SyncException) << text;
    }

    Href href{QUrl(QStringLiteral("https://Files.example:8443/dav/Projects/A/"))};
};

TEST_F(HrefTest, LeavesAWellFormedPathAsItIs) {
    for (const char* path : {"/", "/a", "/a/", "/a%20b/c%2fd/e%2Ff/", "/a!$&'()*+,;=:@-._~z", "/%7Euser/%41"}) {
        EXPECT_EQ(Path(path), path);
    }
}

TEST_F(HrefTest, EncodesWhatCannotStandInAPath) {
    EXPECT_EQ(Path("/a b"), "/a%20b");
    EXPECT_EQ(Path("/a#b?c"), "/a%23b%3Fc");
    EXPECT_EQ(Path("/\xC3\xA9"), "/%C3%A9");
    EXPECT_EQ(Path("/100%"), "/100%25");
    EXPECT_EQ(Path("/100%/5%zz%4"), "/100%25/5%25zz%254");
    EXPECT_EQ(Path("/[a]\\\"<b>|{c}^`\x01\x7F"), "/%5Ba%5D%5C%22%3Cb%3E%7C%7Bc%7D%5E%60%01%7F");
}

TEST_F(HrefTest, LeavesEmptySegmentsOut) {
    EXPECT_EQ(Path("//a///b//"), "/a/b/");
    EXPECT_EQ(Path("///"), "/");
    EXPECT_EQ(Key("//a///b//"), "a/b");
}

TEST_F(HrefTest, GivesOneKeyToAllSpellingsOfAPath) {
    for (const char* path : {"/a b/c'd", "/a%20b/c%27d", "/%61%20b/c%27%64/", "//a b//c'd//",
                             "http://files.example/a%20b/c'd", "HTTPS://FILES.EXAMPLE:99/a%20b/c'd"}) {
        EXPECT_EQ(Key(path), "a b/c'd") << path;
    }
    EXPECT_EQ(Key("/"), "");
    EXPECT_EQ(Key("http://files.example"), "");
    EXPECT_EQ(Key("/\xC3\xA9"), Key("/%c3%A9"));
}

TEST_F(HrefTest, GivesDifferentKeysToDifferentPaths) {
    EXPECT_EQ(Key("/a/b"), "a/b");
    EXPECT_EQ(Key("/a%2Fb"), "a%2Fb");
    EXPECT_EQ(Key("/a%252Fb"), "a%252Fb");
    EXPECT_EQ(Key("/a%25252Fb"), "a%25252Fb");
    EXPECT_EQ(Key("/100%"), "100%25");
    EXPECT_EQ(Key("/100%25"), "100%25");
}

TEST_F(HrefTest, LeavesASegmentThatIsNoTextEncoded) {
    EXPECT_EQ(Key("/a%20%ff"), "a%20%FF");
    EXPECT_EQ(Key("/a %FF/b c"), "a%20%FF/b c");
    EXPECT_NE(Key("/%FF"), Key("/%25FF"));
    EXPECT_NE(Key("/%EF%BB%BFa"), Key("/a"));
    href.Read("/%ff%2f/", 8);
    EXPECT_EQ(href.DecodedName(), "%ff%2f");
}

TEST_F(HrefTest, ResolvesRelativeReferencesAgainstWhatWasAsked) {
    EXPECT_EQ(Path("b.txt"), "/dav/Projects/A/b.txt");
    EXPECT_EQ(Path("c:d/"), "/dav/Projects/A/c:d/");
    Href ofFile(QUrl(QStringLiteral("http://h/dav/a.txt")));
    ofFile.Read("b", 1);
    EXPECT_EQ(ofFile.Path(), "/dav/b");
    ofFile.Read("", 0);
    EXPECT_EQ(ofFile.Path(), "/dav/a.txt");
}

TEST_F(HrefTest, GivesTheNameEncodedAndDecoded) {
    href.Read("/a/b%20c%2Fd%25/", 16);
    EXPECT_EQ(href.EncodedName(), "b%20c%2Fd%25");
    EXPECT_EQ(href.DecodedName(), "b c%2Fd%");
    href.Read("/x", 2);
    EXPECT_EQ(href.EncodedName(), "x");
    href.Read("/", 1);
    EXPECT_EQ(href.EncodedName(), "");
    EXPECT_EQ(href.DecodedName(), "");
}

TEST_F(HrefTest, GivesTheKeyOfTheParent) {
    EXPECT_EQ(Href::ParentKey("a/b/c"), "a/b");
    EXPECT_EQ(Href::ParentKey("a"), "");
}

TEST_F(HrefTest, RefusesDotsAndNul) {
    for (const char* path : {"/.", "/..", "/a/./b", "/a/../b", "/a/%2e", "/a/%2E%2e/b", "/a/.%2E", "./b", "../b", ".",
                             "http://files.example/.."}) {
        ExpectRefused(path);
    }
    ExpectRefused("/a%00b");
    ExpectRefused(std::string("/a\0b", 4));
    EXPECT_EQ(Path("/.a/..b/c./d../..."), "/.a/..b/c./d../...");
}

TEST_F(HrefTest, RefusesAnotherHost) {
    for (const char* url : {"http://other.example/a", "https://files.example.evil/a", "http://files.exampl/",
                            "http://files.example@evil.example/a", "http:///a"}) {
        ExpectRefused(url);
    }
    EXPECT_EQ(Path("http://user@files.example:1/a"), "/a");
}

TEST_F(HrefTest, KnowsAHostThatIsAnAddress) {
    Href v6(QUrl(QStringLiteral("http://[::1]:8080/")));
    v6.Read("http://[::1]:9090/a", 19);
    EXPECT_EQ(v6.Path(), "/a");
    EXPECT_THROW(v6.Read("http://[::2]/a", 14), sync::core::SyncException);
}

TEST_F(HrefTest, TheLibraryReadsTheDecodedPathOutOfTheCanonicalOne) {
    const std::string hrefs[] = {"/a b/100%/x#y?z", "/a%20b/c'd;e@f:g", "/\xC3\xA9t\xC3\xA9/%C3%A9",
                                 "/[a]|{b}\\\"",    "/~u/%7Eu/%2B+&=,", "//a//b",
                                 "/a%25b",          "/-._~!$()*"};
    for (const std::string& text : hrefs) {
        // Neither '%' nor '/' is inside a segment's key here, but for the two that are decoded by hand.
        QString expected = QLatin1Char('/') + QString::fromStdString(Key(text));
        expected.replace(QLatin1String("%25"), QLatin1String("%"));
        const QUrl canonical = QUrl::fromEncoded(QByteArray::fromStdString(href.Path()));
        EXPECT_EQ(sync::core::compat::DecodedPath(canonical), expected) << text;
    }
}

TEST_F(HrefTest, EveryByteThatIsEscapedIsTheByteItself) {
    for (int byte = 1; byte < 128; ++byte) {
        const char c = static_cast<char>(byte);
        if (c == '/' || c == '%') {
            continue;
        }
        const std::string escaped = "/x" + QByteArray(1, c).toPercentEncoding({}, QByteArray(1, c)).toStdString();
        const std::string raw = std::string("/x") + c;
        EXPECT_EQ(Key(raw), Key(escaped)) << byte;
        EXPECT_EQ(Key(raw), std::string("x") + c) << byte;
    }
}

}  // namespace
}  // namespace listing
}  // namespace ovsync
