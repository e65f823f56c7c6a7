#include "client/sync/local/Exclusion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <ostream>
#include <string>

#include "host/core/SyncException.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::local::Exclusion;
using tests::Text;

struct RuleCase {
    /// As in a file, with line feeds between them.
    const char* rules;
    /// A folder ends in '/'.
    const char* path;
    bool isExcluded;
};

void PrintTo(const RuleCase& one, std::ostream* stream) {
    *stream << one.rules << " -> " << one.path;
}

// What gitignore(5) says, sentence by sentence.
const RuleCase RuleCases[] = {
    // A blank line matches nothing, one that begins with '#' is a comment, unless a '\' stands before it.
    {"\n\n", "a", false},
    {"# a\nb", "# a", false},
    {"# a\nb", "b", true},
    {"\\#a", "#a", true},
    {"a#", "a#", true},
    // Trailing spaces are ignored unless a '\' quotes them.
    {"a  ", "a", true},
    {"a  ", "a  ", false},
    {"a\\ ", "a ", true},
    {"a\\ ", "a", false},
    {"a\\  ", "a ", true},
    {"a b", "a b", true},
    {" a", " a", true},
    {" a", "a", false},
    {"a\r", "a", true},
    // '!' includes again what an earlier pattern excluded, but not below a folder that is excluded.
    {"*.txt\n!a.txt", "a.txt", false},
    {"*.txt\n!a.txt", "b.txt", true},
    {"!a.txt\n*.txt", "a.txt", true},
    {"*.txt\n!a.txt\na.*", "a.txt", true},
    {"f\n!f/a", "f/a", true},
    {"f/*\n!f/a", "f/a", false},
    {"f/*\n!f/a", "f/b", true},
    {"/*\n!/f\n/f/*\n!/f/g", "f/g/a", false},
    {"/*\n!/f\n/f/*\n!/f/g", "f/h/a", true},
    {"/*\n!/f\n/f/*\n!/f/g", "h", true},
    {"\\!a", "!a", true},
    // A separator at the beginning or in the middle makes it relative to the tree.
    {"/a", "a", true},
    {"/a", "f/a", false},
    {"f/a", "f/a", true},
    {"f/a", "g/f/a", false},
    {"/f/a", "f/a", true},
    {"a", "a", true},
    {"a", "f/g/a", true},
    {"a", "ab", false},
    {"a", "A", false},
    {"//a", "a", false},
    {"f//a", "f/a", false},
    {"f//", "f/", false},
    {"**//a", "f/a", false},
    {"f/**//a", "f/a", false},
    {"*//a", "f/a", false},
    {"f/*//", "f/g/", false},
    // No path has these names in it.
    {"./a", "a", false},
    {"f/./a", "f/a", false},
    {"f/../a", "a", false},
    {"f/.", "f/", false},
    {".", "a", false},
    {"..", "a", false},
    {"\\./a", "a", false},
    {".a", ".a", true},
    {"...", "...", true},
    {"f/.*", "f/.a", true},
    // A separator at the end matches folders only.
    {"f/", "f/", true},
    {"f/", "f", false},
    {"f/", "g/f/", true},
    {"f/", "f/a", true},
    {"f/g/", "f/g/", true},
    {"f/g/", "f/g", false},
    {"f/g/", "h/f/g/", false},
    {"/f/", "f/", true},
    {"/f/", "g/f/", false},
    {"/", "a", false},
    // '*' matches anything but a '/', '?' one character but a '/'.
    {"*", "a", true},
    {"*", ".a", true},
    {"*.o", "x.o", true},
    {"*.o", ".o", true},
    {"*.o", "x.op", false},
    {"f/*", "f/a", true},
    {"f/*", "f/", false},
    {"f/*.o", "f/g/x.o", false},
    {"*/a", "f/a", true},
    {"*/a", "f/g/a", false},
    {"*/a", "a", false},
    {"f*a", "f/a", false},
    {"f*a", "fxa", true},
    {"a*b*c", "axxbc", true},
    {"a*b*c", "axxcb", false},
    {"a?c", "abc", true},
    {"a?c", "ac", false},
    {"f?a/b", "f/a/b", false},
    // Brackets match one character of a range.
    {"[ab]", "a", true},
    {"[ab]", "c", false},
    {"[a-c]x", "bx", true},
    {"[a-c]x", "dx", false},
    {"[!a-c]", "d", true},
    {"[!a-c]", "b", false},
    {"[^a-c]", "d", true},
    {"[]a]", "]", true},
    {"[!]a]", "b", true},
    {"[!]a]", "]", false},
    {"[a-]", "-", true},
    {"[-a]", "-", true},
    {"[a-c-e]", "-", true},
    {"[a-c-e]", "d", false},
    {"[z-a]", "z", true},
    {"[z-a]", "m", false},
    {"[\\]]", "]", true},
    {"[\\a-\\c]", "b", true},
    {"[a\\-c]", "b", false},
    {"[a\\-c]", "-", true},
    {"[*]", "*", true},
    {"[*]", "a", false},
    {"[?]x", "?x", true},
    {"[[:digit:]]x", "5x", true},
    {"[[:digit:]]x", "ax", false},
    {"[![:digit:]]x", "ax", true},
    {"[[:upper:][:digit:]_]", "_", true},
    {"[[:upper:][:digit:]_]", "B", true},
    {"[[:upper:][:digit:]_]", "b", false},
    {"[[:digit:]-z]", "-", true},
    {"[[:x]", ":", true},
    {"[[:x]", "[", true},
    {"f[/]a", "f/a", false},
    {"f[/x]a", "fxa", true},
    {"f[x//]/a", "fx/a", true},
    {"f\\/a", "f/a", true},
    {"f[!x]a", "f/a", false},
    {"f/[!x]", "f/y", true},
    // '\' makes the next character an ordinary one.
    {"\\*", "*", true},
    {"\\*", "a", false},
    {"\\a", "a", true},
    {"a\\?", "a?", true},
    {"\\[a]", "[a]", true},
    {"\\\\", "\\", true},
    // A leading "**/" matches in all folders.
    {"**/a", "a", true},
    {"**/a", "f/a", true},
    {"**/a", "f/g/a", true},
    {"**/a", "f/ba", false},
    {"**/f/a", "f/a", true},
    {"**/f/a", "g/h/f/a", true},
    {"**/f/a", "g/f/h/a", false},
    {"/**/a", "f/g/a", true},
    // A trailing "/**" matches everything inside.
    {"f/**", "f/a", true},
    {"f/**", "f/g/a", true},
    {"f/**", "f/", false},
    {"f/**", "g/f/a", false},
    {"/**", "a", true},
    // "/**/" matches zero or more folders.
    {"a/**/b", "a/b", true},
    {"a/**/b", "a/x/b", true},
    {"a/**/b", "a/x/y/b", true},
    {"a/**/b", "ab", false},
    {"a/**/b", "x/a/b", false},
    {"a/**/**/b", "a/b", true},
    {"a/***/b", "a/x/y/b", true},
    // Other asterisks next to each other are as good as one.
    {"**", "a", true},
    {"**a", "xa", true},
    {"f/**a", "f/xa", true},
    {"f/**a", "f/g/a", false},
    {"f**/a", "fx/a", true},
    {"**/", "f/", true},
    {"**/", "a", false},
};

Exclusion ExclusionOf(const char* rules) {
    return Exclusion(Exclusion::RulesIn(rules));
}

bool Excludes(const Exclusion& exclusion, const QString& path) {
    return path.endsWith(QLatin1Char('/')) ? exclusion.HasFolderAt(path.chopped(1)) : exclusion.HasFileAt(path);
}

class ExclusionRuleTest : public testing::TestWithParam<RuleCase> {};

INSTANTIATE_TEST_SUITE_P(Gitignore, ExclusionRuleTest, testing::ValuesIn(RuleCases));

TEST_P(ExclusionRuleTest, MeansWhatTheManualOfGitSays) {
    const char* const rules = GetParam().rules;
    const QString path = Text(GetParam().path);
    // Git reads these and lets them match nothing.
    static const QStringList matchNothing{Text("/"),     Text("//a"),     Text("f//a"),   Text("f//"),
                                          Text("**//a"), Text("f/**//a"), Text("*//a"),   Text("f/*//"),
                                          Text("./a"),   Text("f/./a"),   Text("f/../a"), Text("f/."),
                                          Text("."),     Text(".."),      Text("\\./a"),  Text("f[/]a")};
    if (matchNothing.contains(Text(rules))) {
        EXPECT_THROW(ExclusionOf(rules), sync::core::SyncException);
        return;
    }
    EXPECT_EQ(Excludes(ExclusionOf(rules), path), GetParam().isExcluded);
}

class GitTest : public testing::Test {
protected:
    GitTest() { Run({Text("init"), Text("-q"), _repository.path()}, {}); }

    bool Ignores(const QByteArray& rules, const QString& path) {
        const QTemporaryDir tree;
        const bool isFolder = path.endsWith(QLatin1Char('/'));
        const QString place = tree.path() + QLatin1Char('/') + path;
        EXPECT_TRUE(QDir().mkpath(isFolder ? place : QFileInfo(place).path()));
        Write(isFolder ? place + Text("any") : place, {});
        Write(_repository.filePath(Text(".git/info/exclude")), rules);
        const QStringList question{Text("--git-dir=") + _repository.filePath(Text(".git")),
                                   Text("--work-tree=") + tree.path(),
                                   Text("-c"),
                                   Text("core.excludesFile="),
                                   Text("check-ignore"),
                                   Text("-z"),
                                   Text("--stdin")};
        const QByteArray asked = "./" + (isFolder ? path.chopped(1) : path).toUtf8() + '\0';
        return !Run(question, asked, tree.path()).isEmpty();
    }

private:
    static QByteArray Run(const QStringList& arguments, const QByteArray& input, const QString& folder = QString()) {
        QProcess git;
        git.setWorkingDirectory(folder);
        git.start(Text("git"), arguments);
        git.write(input);
        git.closeWriteChannel();
        EXPECT_TRUE(git.waitForFinished()) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(git.readAllStandardError(), QByteArray());
        return git.readAllStandardOutput();
    }

    static void Write(const QString& path, const QByteArray& content) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(content);
    }

    QTemporaryDir _repository;
};

TEST_F(GitTest, EveryRuleIsTakenAsGitTakesIt) {
    if (QStandardPaths::findExecutable(Text("git")).isEmpty()) {
        GTEST_SKIP() << "there is no git";
    }
    for (const RuleCase& one : RuleCases) {
        EXPECT_EQ(Ignores(one.rules, Text(one.path)), one.isExcluded) << testing::PrintToString(one);
    }
}

// Git itself takes these for "**/" where only ordinary characters stand before them.
TEST(ExclusionTest, AsterisksBehindOtherCharactersOfANameStayInIt) {
    EXPECT_FALSE(Exclusion({Text("f**/a")}).HasFileAt(Text("f/g/a")));
}

TEST(ExclusionTest, NoRuleExcludesNothing) {
    EXPECT_FALSE(Exclusion().HasFileAt(Text("a/b")));
    EXPECT_FALSE(Exclusion().HasFolderAt(Text("a/b")));
    EXPECT_EQ(Exclusion().Text(), QString());
}

TEST(ExclusionTest, ARuleThatNothingCanMatchIsRefusedByItsName) {
    for (const char* rule : {"", "!", "/", "[a", "a\\", "[[:name:]]", "[a-\\", "[!]", "a//b", "!a//b", "./a", "[/]"}) {
        try {
            const Exclusion exclusion({Text("a"), Text(rule)});
            ADD_FAILURE() << rule;
        } catch (const sync::core::SyncException& e) {
            EXPECT_THAT(e.Utf8Message(), testing::StartsWith(std::string("\"") + rule + "\" is not a valid pattern: "));
        }
    }
}

TEST(ExclusionTest, ACharacterIsMoreThanAByte) {
    EXPECT_TRUE(Exclusion({Text("?")}).HasFile(Text("\xC3\xA9")));
    EXPECT_TRUE(Exclusion({Text("?")}).HasFile(Text("\xF0\x9F\x98\x80")));
    EXPECT_TRUE(Exclusion({Text("[\xC3\xA0-\xC3\xBF]")}).HasFile(Text("\xC3\xA9")));
    EXPECT_TRUE(Exclusion({Text("a*")}).HasFile(Text("a\nb")));
}

TEST(ExclusionTest, ALineIsNotARuleOnTheCommandLine) {
    EXPECT_TRUE(Exclusion({Text("#a")}).HasFile(Text("#a")));
    EXPECT_TRUE(Exclusion({Text("a ")}).HasFile(Text("a ")));
}

TEST(ExclusionTest, AFileMayBeginWithAByteOrderMark) {
    EXPECT_EQ(Exclusion::RulesIn("\xEF\xBB\xBF"
                                 "a\n#b\n\n!c \n"),
              QStringList({Text("a"), Text("!c")}));
}

TEST(ExclusionTest, ARuleOfAFileThatNothingCanMatchIsRefusedByItsLine) {
    try {
        Exclusion::RulesIn("a\n# b\n\nc//d\n//e\n");
        ADD_FAILURE();
    } catch (const sync::core::SyncException& e) {
        EXPECT_EQ(e.Utf8Message(), "line 4: \"c//d\" is not a valid pattern: no path has two \"/\" next to each other");
    }
}

TEST(ExclusionTest, ARefusalSaysWhy) {
    const auto reasonFor = [](const char* rule) {
        try {
            Exclusion::RuleIn(rule);
        } catch (const sync::core::SyncException& e) {
            return e.Message().section(Text(": "), 1).toStdString();
        }
        return std::string();
    };
    EXPECT_EQ(reasonFor(""), "it has no name in it");
    EXPECT_EQ(reasonFor("/"), "it has no name in it");
    EXPECT_EQ(reasonFor("//a"), "no path has two \"/\" next to each other");
    EXPECT_EQ(reasonFor("a/.."), "no path has \".\" or \"..\" in it");
    EXPECT_EQ(reasonFor("a\\"), "nothing follows the \"\\\" at its end");
    EXPECT_EQ(reasonFor("[!]"), "a \"[\" has no \"]\"");
    EXPECT_EQ(reasonFor("[a-"), "a \"[\" has no \"]\"");
    EXPECT_EQ(reasonFor("[[:name:]]"), "there is no such class of characters");
    EXPECT_EQ(reasonFor("[/]"), "no name has a \"/\" in it");
    EXPECT_EQ(reasonFor("\xC3"), "it is not UTF-8");
    EXPECT_EQ(reasonFor("\xEF\xBF\xBD"), "");
    EXPECT_EQ(reasonFor("[z-a]"), "");
}

TEST(ExclusionTest, WhatIsNotUtf8DoesNotCountInAComment) {
    EXPECT_EQ(Exclusion::RulesIn("# f\xFCr\na\n"), QStringList(Text("a")));
}

TEST(ExclusionTest, TheTextTellsRulesApart) {
    EXPECT_NE(Exclusion({Text("a"), Text("b")}).Text(), Exclusion({Text("b"), Text("a")}).Text());
    EXPECT_NE(Exclusion({Text("a"), Text("b")}).Text(), Exclusion({Text("ab")}).Text());
}

}  // namespace
