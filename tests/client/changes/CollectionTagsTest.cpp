#include "client/changes/CollectionTags.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <optional>

#include "client/library/ServiceConnection.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/changes/ChangeSourceTest.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace changes {
namespace {

using library::ServiceConnection;
using testing::HasSubstr;
using testing::Not;
using tests::AnswerOf;
using tests::Script;
using tests::ScriptedServer;
using tests::StepsOf;
using tests::With;
using Answer = ServiceChanges::Answer;

/// Of a server of which nothing is known yet.
const Script EverythingIsListed{{"0 /Projects/A/", {"tags/now-207"}},
                                {"1 /Projects/A/", {"tags/root-207"}},
                                {"1 /Projects/A/B/", {"tags/b-207"}},
                                {"1 /Projects/A/B/D%20d/", {"tags/d-207"}},
                                {"1 /Projects/A/C/", {"tags/c-207"}}};

/// Something changed in the lowest folder.
const Script ChangedDeep{{"0 /Projects/A/", {"tags/now-changed-207"}},
                         {"1 /Projects/A/", {"tags/root-changed-207"}},
                         {"1 /Projects/A/B/", {"tags/b-changed-207"}},
                         {"1 /Projects/A/B/D%20d/", {"tags/d-changed-207"}}};

class CollectionTagsTest : public ChangeSourceTest {
protected:
    /// Asks for the state, lists everything, and returns what to ask with from then on.
    std::optional<QString> Listed(const Script& script = EverythingIsListed) {
        return AnswerTo(
            [this](ServiceConnection& connection, IChangeSource& source) {
                std::optional<QString> state = source.StateNow();
                if (state && !state->isEmpty()) {
                    ListAll(connection);
                    state = source.Listed(*state);
                }
                return state;
            },
            StepsOf(script));
    }

    void ListAll(ServiceConnection& connection) {
        ::sync::config::FolderConfiguration listed = connection.Folder(folder);
        std::shared_ptr<QVector<::sync::config::FolderConfiguration>> folders;
        std::shared_ptr<QVector<::sync::config::FileConfiguration>> files;
        EXPECT_EQ(connection.Folders().GetAllFilesAndSubFoldersByFolder(listed, folders, files), 0);
    }

    std::optional<QString> StateNow(const char* answer) { return Listed({{"0 /Projects/A/", {answer}}}); }

    ServiceChanges Changes(const QString& state, const Script& script) { return ChangesSince(state, StepsOf(script)); }

    /// A sync would list everything.
    void ExpectForgotten(const Script& script) {
        const ServiceChanges changes = Changes(*Listed(), script);
        EXPECT_EQ(changes.answer, Answer::Forgotten);
        EXPECT_EQ(changes.state, QString());
    }

    /// The state after a listing of which `others` differs from the usual, as if all tags had stayed as they were but
    /// the root's.
    QStringList EnteredAfter(const Script& others, const Script& then) {
        const std::optional<QString> state = Listed(With(EverythingIsListed, others));
        return WholeOf(Changes(state.value_or(QString()), then));
    }

    static QStringList WholeOf(const ServiceChanges& changes) {
        EXPECT_EQ(changes.answer, Answer::Known);
        QStringList whole = changes.whole;
        whole.sort();
        return whole;
    }

    static QStringList FilesOf(const ServiceChanges& changes) {
        QStringList files;
        for (const ::sync::config::FileConfiguration& file : changes.files) {
            files.append(file.serverPath);
        }
        return files;
    }

    static QStringList FoldersOf(const ServiceChanges& changes) {
        QStringList folders;
        for (const ::sync::config::FolderConfiguration& folder : changes.folders) {
            folders.append(folder.serverPath);
        }
        return folders;
    }
};

QStringList Paths(std::initializer_list<const char*> paths) {
    QStringList list;
    for (const char* path : paths) {
        list.append(QLatin1String(path));
    }
    return list;
}

TEST_F(CollectionTagsTest, OneRequestTellsThatNothingChanged) {
    const std::optional<QString> state = Listed();
    ASSERT_TRUE(state && !state->isEmpty());
    const ServiceChanges changes = Changes(*state, {{"0 /Projects/A/", {"tags/now-207"}}});
    EXPECT_EQ(changes.answer, Answer::Known);
    EXPECT_EQ(changes.state, *state);
    EXPECT_EQ(changes.at, QDateTime(QDate(2026, 11, 20), QTime(10, 15, 31), Qt::UTC));
    EXPECT_TRUE(changes.files.isEmpty() && changes.folders.isEmpty() && changes.gone.isEmpty());
    EXPECT_TRUE(changes.whole.isEmpty());
}

TEST_F(CollectionTagsTest, TheListingIsAskedForTagsAndIdsAndGoesFolderByFolder) {
    Listed();
    for (const ScriptedServer::Request& request : requests) {
        EXPECT_EQ(request.method, QByteArray("PROPFIND"));
        for (const char* property : {"<D:getetag/>", "http://owncloud.org/ns", ":id", ":fileid"}) {
            EXPECT_THAT(request.body.toStdString(), HasSubstr(property));
        }
    }
}

TEST_F(CollectionTagsTest, OtherListingsAreNotAskedForIds) {
    ScriptedServer server(
        {AnswerOf("tags/now-207"), AnswerOf("statuses/options-foreign-200"), AnswerOf("tags/root-207")});
    ServiceConnection connection(server.Url(QString()));
    const auto source = connection.NewChangeSource(folder);
    source->Listed(*source->StateNow());
    connection.List(connection.Folder(folder));
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    EXPECT_THAT(server.Requests().last().body.toStdString(), Not(HasSubstr("owncloud")));
}

TEST_F(CollectionTagsTest, OnlyFoldersWithAnotherTagAreListed) {
    const ServiceChanges changes = Changes(*Listed(), ChangedDeep);
    EXPECT_EQ(WholeOf(changes), Paths({"Projects/A", "Projects/A/B", "Projects/A/B/D d"}));
    EXPECT_EQ(FoldersOf(changes), Paths({"Projects/A/B", "Projects/A/B/D d", "Projects/A/C"}));
    EXPECT_EQ(FilesOf(changes), Paths({"Projects/A/B/D d/d.txt", "Projects/A/B/b.txt", "Projects/A/a.txt"}));
    EXPECT_EQ(changes.files[0].size, 4);
    EXPECT_EQ(changes.files[0].versionId, QStringLiteral("\"d 2\""));
    EXPECT_TRUE(changes.gone.isEmpty());
    EXPECT_EQ(changes.at, QDateTime(QDate(2026, 11, 20), QTime(10, 15, 31), Qt::UTC));
}

TEST_F(CollectionTagsTest, WhatWasFoundIsKnownTheNextTimeAndWhatWasNotListedStaysKnown) {
    const QString first = *Listed();
    const QString second = Changes(first, ChangedDeep).state;
    EXPECT_EQ(Changes(second, {{"0 /Projects/A/", {"tags/now-changed-207"}}}).state, second);
    // Nothing below the root is listed, and then B, but not what lies in it.
    const ServiceChanges third =
        Changes(second, {{"0 /Projects/A/", {"tags/now-207"}}, {"1 /Projects/A/", {"tags/root-changed-207"}}});
    EXPECT_EQ(WholeOf(third), Paths({"Projects/A"}));
    const ServiceChanges fourth = Changes(third.state, {{"0 /Projects/A/", {"tags/now-changed-207"}},
                                                        {"1 /Projects/A/", {"tags/root-207"}},
                                                        {"1 /Projects/A/B/", {"tags/b-changed-207"}}});
    EXPECT_EQ(WholeOf(fourth), Paths({"Projects/A", "Projects/A/B"}));
    EXPECT_EQ(FoldersOf(fourth), Paths({"Projects/A/B", "Projects/A/B/D d", "Projects/A/C"}));
}

TEST_F(CollectionTagsTest, WhatIsGoneIsToldByWhatTheFolderHasLeft) {
    const ServiceChanges changes = Changes(
        *Listed(), {{"0 /Projects/A/", {"tags/now-changed-207"}}, {"1 /Projects/A/", {"tags/root-without-most-207"}}});
    EXPECT_EQ(WholeOf(changes), Paths({"Projects/A"}));
    EXPECT_EQ(FoldersOf(changes), Paths({"Projects/A/B"}));
    EXPECT_TRUE(changes.files.isEmpty());
}

TEST_F(CollectionTagsTest, ANewFolderIsListedWithAllThatIsInIt) {
    const ServiceChanges changes = Changes(*Listed(), {{"0 /Projects/A/", {"tags/now-changed-207"}},
                                                       {"1 /Projects/A/", {"tags/root-with-a-new-folder-207"}},
                                                       {"1 /Projects/A/E%20e/", {"tags/e-207"}},
                                                       {"1 /Projects/A/E%20e/F/", {"tags/f-207"}}});
    EXPECT_EQ(WholeOf(changes), Paths({"Projects/A", "Projects/A/E e", "Projects/A/E e/F"}));
    EXPECT_EQ(FilesOf(changes), Paths({"Projects/A/E e/F/f.txt", "Projects/A/E e/e.txt", "Projects/A/a.txt"}));
}

TEST_F(CollectionTagsTest, AnotherFolderInThePlaceOfOneIsListedWhateverItsTag) {
    const ServiceChanges changes = Changes(*Listed(), {{"0 /Projects/A/", {"tags/now-changed-207"}},
                                                       {"1 /Projects/A/", {"tags/root-with-another-folder-207"}},
                                                       {"1 /Projects/A/B/", {"tags/b-207"}}});
    EXPECT_EQ(WholeOf(changes), Paths({"Projects/A", "Projects/A/B"}));
}

TEST_F(CollectionTagsTest, AFolderWithoutTagOrIdIsAlwaysListed) {
    for (const char* root : {"tags/root-with-no-tag-of-c-207", "tags/root-with-no-id-of-c-207"}) {
        const Script then{{"0 /Projects/A/", {"tags/now-changed-207"}},
                          {"1 /Projects/A/", {root}},
                          {"1 /Projects/A/C/", {"tags/c-207"}}};
        EXPECT_EQ(EnteredAfter({{"1 /Projects/A/", {root}}}, then), Paths({"Projects/A", "Projects/A/C"})) << root;
    }
}

TEST_F(CollectionTagsTest, ATagThatIsNewerThanTheListingDoesNotCount) {
    // It changed between the listing of the folder above and its own.
    const QString state = *Listed(With(EverythingIsListed, {{"1 /Projects/A/B/", {"tags/b-with-a-newer-tag-207"}}}));
    EXPECT_EQ(Changes(state, {{"0 /Projects/A/", {"tags/now-207"}}}).state, state);
    EXPECT_EQ(state, *Listed());
}

TEST_F(CollectionTagsTest, TheFirstTagOfAFolderThatIsListedTwiceCounts) {
    // C went while the others were listed, so that the folder above is asked once more, and then has a newer tag of B.
    for (const char* first : {"tags/root-207", "tags/root-with-no-tag-of-b-207"}) {
        const QString state = *Listed(
            With(EverythingIsListed, {{"1 /Projects/A/", {first, "tags/root-without-c-and-a-newer-tag-of-b-207"}},
                                      {"1 /Projects/A/C/", {"statuses/not-found-404"}}}));
        const ServiceChanges changes =
            Changes(state, {{"0 /Projects/A/", {"tags/now-changed-207"}},
                            {"1 /Projects/A/", {"tags/root-without-c-and-a-newer-tag-of-b-207"}},
                            {"1 /Projects/A/B/", {"tags/b-207"}}});
        EXPECT_EQ(WholeOf(changes), Paths({"Projects/A", "Projects/A/B"})) << first;
    }
}

TEST_F(CollectionTagsTest, TheTagsOfAListingThatFailedDoNotCount) {
    const Script now = With(ChangedDeep, {{"1 /Projects/A/C/", {"tags/c-207"}}});
    ScriptedServer server(
        StepsOf(With(now, {{"0 /Projects/A/", {"tags/now-207", "tags/now-changed-207"}},
                           {"1 /Projects/A/", {"tags/root-without-most-207", "tags/root-changed-207"}},
                           {"1 /Projects/A/B/", {"statuses/broken-500", "tags/b-changed-207"}}})));
    ServiceConnection connection(server.Url(QString()));
    const auto source = connection.NewChangeSource(folder);
    source->StateNow();
    EXPECT_THROW(ListAll(connection), ::sync::http::HttpException);
    const std::optional<QString> state = source->StateNow();
    ListAll(connection);
    EXPECT_EQ(source->Listed(*state), *Listed(now));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(CollectionTagsTest, AFolderThatGoesMeanwhileIsNotTold) {
    const ServiceChanges changes =
        Changes(*Listed(), {{"0 /Projects/A/", {"tags/now-changed-207"}},
                            {"1 /Projects/A/", {"tags/root-with-a-new-folder-207", "tags/root-207"}},
                            {"1 /Projects/A/E%20e/", {"statuses/not-found-404"}}});
    EXPECT_EQ(WholeOf(changes), Paths({"Projects/A"}));
    EXPECT_EQ(FoldersOf(changes), Paths({"Projects/A/B", "Projects/A/C"}));
}

TEST_F(CollectionTagsTest, OnlyATagWithAnIdIsTrusted) {
    for (const char* answer : {"tags/now-without-id-207", "tags/now-with-empty-id-207", "tags/now-without-tag-207",
                               "tags/now-with-tag-without-quotes-207", "tags/now-with-empty-tag-207",
                               "tags/now-with-id-of-another-namespace-207", "tags/now-without-end-207",
                               "tags/now-cut-off-207", "statuses/forbidden-403", "statuses/bad-request-400"}) {
        EXPECT_EQ(StateNow(answer), QString()) << answer;
    }
    for (const char* answer : {"statuses/not-found-404", "statuses/broken-500"}) {
        EXPECT_FALSE(StateNow(answer)) << answer;
    }
    for (const char* answer : {"tags/now-weak-207", "tags/now-with-fileid-alone-207"}) {
        const QString state = *Listed(With(EverythingIsListed, {{"0 /Projects/A/", {answer}}}));
        EXPECT_EQ(Changes(state, {{"0 /Projects/A/", {answer}}}).state, state) << answer;
    }
}

TEST_F(CollectionTagsTest, AnAnswerThatTellsNothingHasEverythingListed) {
    for (const char* answer :
         {"tags/now-of-another-207", "tags/now-without-id-207", "tags/now-without-tag-207", "tags/now-without-end-207",
          "tags/now-cut-off-207", "statuses/unauthorized-basic-401", "statuses/forbidden-403", "statuses/not-found-404",
          "statuses/locked-423", "statuses/broken-500", "reports/page-200"}) {
        SCOPED_TRACE(answer);
        ExpectForgotten({{"0 /Projects/A/", {answer}}});
    }
}

TEST_F(CollectionTagsTest, AListingThatCannotBeTakenHasEverythingListed) {
    for (const char* listing : {"tags/root-with-a-folder-twice-207", "tags/root-with-what-lies-outside-207",
                                "tags/root-with-itself-in-it-207", "tags/root-cut-off-207", "statuses/forbidden-403",
                                "statuses/not-found-404", "statuses/broken-500"}) {
        SCOPED_TRACE(listing);
        ExpectForgotten({{"0 /Projects/A/", {"tags/now-changed-207"}}, {"1 /Projects/A/", {listing}}});
    }
    for (const char* listing : {"tags/root-207", "statuses/forbidden-403", "statuses/broken-500"}) {
        SCOPED_TRACE(listing);
        ExpectForgotten({{"0 /Projects/A/", {"tags/now-changed-207"}},
                         {"1 /Projects/A/", {"tags/root-changed-207"}},
                         {"1 /Projects/A/B/", {listing}}});
    }
}

TEST_F(CollectionTagsTest, TheLimitOfListingsHoldsForAllThatIsListed) {
    const QString state = *Listed();
    settings.listing.entries.value = 6;
    EXPECT_EQ(Changes(state, ChangedDeep).answer, Answer::Forgotten);
    settings.listing.entries.value = 7;
    EXPECT_EQ(Changes(state, ChangedDeep).answer, Answer::Known);
}

TEST_F(CollectionTagsTest, NoAnswerAtAllIsAnErrorOfTagsToo) {
    const QString state = *Listed();
    ScriptedServer server({});
    const QUrl url = server.Url(QString());
    server.Stop();
    ServiceConnection connection(url);
    const auto source = connection.NewChangeSource(folder);
    source->Ask(state);
    EXPECT_THROW(source->Take(), wire::TransactionError);
}

TEST_F(CollectionTagsTest, AStateIsNeverAskedWithInTheOtherWay) {
    Changes(QStringLiteral("urn:t:1"), {{"0 /Projects/A/", {"reports/nothing-207"}}});
    EXPECT_EQ(requests[0].method, QByteArray("REPORT"));
    const QString state = *Listed();
    Changes(state, {{"0 /Projects/A/", {"tags/now-with-report-207"}}});
    EXPECT_EQ(requests[0].method, QByteArray("PROPFIND"));
    // What nobody wrote so is no state.
    for (const char* answer : {"tags/now-207", "tags/now-without-tag-207"}) {
        EXPECT_EQ(Changes(QStringLiteral(" {}"), {{"0 /Projects/A/", {answer}}}).answer, Answer::Forgotten) << answer;
    }
}

TEST_F(CollectionTagsTest, AServerThatReportsIsNotAskedForTags) {
    ScriptedServer server({AnswerOf("tags/now-with-report-207"), AnswerOf("statuses/options-service-200")});
    ServiceConnection connection(server.Url(QString()));
    const auto source = connection.NewChangeSource(folder);
    EXPECT_EQ(source->StateNow(), QStringLiteral("urn:t:1"));
    EXPECT_EQ(source->Listed(QStringLiteral("urn:t:1")), QStringLiteral("urn:t:1"));
    server.Stop();
}

}  // namespace
}  // namespace changes
}  // namespace ovsync
