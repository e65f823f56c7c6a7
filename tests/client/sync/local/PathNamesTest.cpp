#include "client/sync/local/PathNames.h"

#include <gtest/gtest.h>

#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using namespace ovsync::local;  // NOLINT(google-build-using-namespace)
using tests::Text;

TEST(NamesTest, NamesThatCanBeStored) {
    for (const char* name :
         {"a", "...", " ", "a\\b", "\n", "\xF0\x9F\x98\x80", ".ovsyncx", "{SyncTemp}", "x.{SyncTemp}.txt"}) {
        EXPECT_EQ(ReasonAgainst(Text(name)), QString()) << name;
    }
    EXPECT_EQ(ReasonAgainst(QString(255, QLatin1Char('x'))), QString());
}

TEST(NamesTest, NamesThatAreRefused) {
    for (const char* name :
         {"", ".", "..", "a/b", "/", ".ovsync", ".OvSync", "a.{SyncTemp}", "a.{synctemp}", ".{SyncBackup}"}) {
        EXPECT_NE(ReasonAgainst(Text(name)), QString()) << name;
    }
    EXPECT_NE(ReasonAgainst(QString(256, QLatin1Char('x'))), QString());
    EXPECT_NE(ReasonAgainst(QChar(QChar::ByteOrderMark) + Text("x")), QString());
    EXPECT_NE(ReasonAgainst(QString(128, QChar(0xE9))), QString());
    EXPECT_NE(ReasonAgainst(QString(QChar(0))), QString());
    EXPECT_NE(ReasonAgainst(QString(QChar(0xD800))), QString());
    EXPECT_NE(ReasonAgainst(QString::fromUtf8("\xFF")), QString());
}

TEST(NamesTest, ATemporaryNameIsNewEachTimeAndKnownAgain) {
    const QString first = TemporaryBeside(Text("a/b.txt"));
    EXPECT_NE(first, TemporaryBeside(Text("a/b.txt")));
    EXPECT_EQ(FolderOf(first), Text("a"));
    EXPECT_TRUE(IsTemporaryName(NameOf(first)));
    EXPECT_TRUE(IsTemporaryName(TemporaryBeside(Text("b"))));
    EXPECT_NE(ReasonAgainst(NameOf(first)), QString());
    EXPECT_FALSE(IsTemporaryName(Text("b.txt.{SyncTemp}")));
    EXPECT_FALSE(IsTemporaryName(NameOf(first) + Text("\n")));
    EXPECT_FALSE(IsTemporaryName(Text("x") + NameOf(first)));
}

TEST(NamesTest, ANoteStandsBeforeTheEndingOfAName) {
    EXPECT_EQ(PathWithNote(Text("a.b/c.txt"), Text("n"), 1), Text("a.b/c (n).txt"));
    EXPECT_EQ(PathWithNote(Text("a.b/c"), Text("n"), 2), Text("a.b/c (n 2)"));
    EXPECT_EQ(PathWithNote(Text(".profile"), Text("n"), 1), Text(".profile (n)"));
    EXPECT_EQ(PathWithNote(Text("a. this is no ending"), Text("n"), 1), Text("a. this is no ending (n)"));
}

TEST(NamesTest, ANameWithANoteIsNeverTooLong) {
    const QString emoji = QString::fromUtf8("\xF0\x9F\x98\x80").repeated(62);
    const QString path = PathWithNote(emoji + Text(".txt"), Text("from the service"), 12);
    EXPECT_EQ(ReasonAgainst(path), QString());
    EXPECT_TRUE(path.endsWith(Text(" (from the service 12).txt")));
    EXPECT_GT(path.toUtf8().size(), 240);
}

TEST(NamesTest, PathsAreFoldedByWhatADiskTellsApart) {
    const QString composed = Text("A/\xC3\xA9");
    const QString decomposed = Text("a/e\xCC\x81");
    EXPECT_EQ(FoldedPath(composed, true, true), composed);
    EXPECT_EQ(FoldedPath(composed, false, false), FoldedPath(decomposed, false, false));
    EXPECT_NE(FoldedPath(composed, true, false), FoldedPath(decomposed, true, false));
    EXPECT_NE(FoldedPath(composed, false, true), FoldedPath(decomposed, false, true));
    EXPECT_EQ(FoldedPath(Text("STRASSE"), false, true), FoldedPath(Text("strasse"), false, true));
}

}  // namespace
