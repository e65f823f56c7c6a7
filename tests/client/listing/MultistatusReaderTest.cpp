#include "client/listing/MultistatusReader.h"

#include <gmock/gmock.h>

#include <string>

#include "host/core/SyncException.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/BadAnswers.h"
#include "tests/fakes/Text.h"

namespace ovsync {
namespace listing {

namespace {

using sync::core::SyncException;
using sync::http::DAVPropfindRequest;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;
using testing::HasSubstr;
using tests::BadAnswer;
using tests::BadAnswers;
using tests::Describe;
using tests::FixtureAnswer;
using tests::FixtureBytes;
using tests::FixtureNameOf;
using tests::NameOf;
using tests::Text;

using wire::FileAttributes;
using wire::ListingLimits;
using wire::ListingSupplement;
using Depth = DAVPropfindRequest::Depth;

const Depth Resource = DAVPropfindRequest::Resource;
const Depth Children = DAVPropfindRequest::Children;
const Depth Tree = DAVPropfindRequest::Tree;

DAVPropfindResult ReadBytes(const QByteArray& bytes, const QString& path, Depth depth, int pieceSize) {
    MultistatusReader reader(QUrl(QStringLiteral("http://127.0.0.1:8080") + path), depth);
    for (int at = 0; at < bytes.size(); at += pieceSize) {
        reader.Feed(bytes.constData() + at, static_cast<size_t>(qMin(pieceSize, bytes.size() - at)));
    }
    return *reader.Finish();
}

DAVPropfindResult ReadBytes(const QByteArray& bytes, const QString& path = QStringLiteral("/Projects/A/"),
                            Depth depth = Children) {
    return ReadBytes(bytes, path, depth, qMax(1, bytes.size()));
}

DAVPropfindResult ReadListing(const char* name, const QString& path = QStringLiteral("/Projects/A/"),
                              Depth depth = Children) {
    return ReadBytes(FixtureBytes(QStringLiteral("listings/") + QLatin1String(name)), path, depth);
}

std::string ErrorOf(const QByteArray& bytes, Depth depth, int pieceSize) {
    try {
        ReadBytes(bytes, QStringLiteral("/Projects/A/"), depth, pieceSize);
    } catch (const SyncException& error) {
        return error.Utf8Message();
    }
    return "no error";
}

QStringList Keys(const QMap<QString, DAVPropfindResponse>& entries) {
    return entries.keys();
}

QDateTime Utc(const char* text) {
    return QDateTime::fromString(QLatin1String(text), Qt::ISODate);
}

std::shared_ptr<ListingSupplement> SupplementOf(const char* fixture, const ListingLimits& limits = ListingLimits()) {
    MultistatusReader reader(QUrl(Text("http://host/bin/")), Children, HrefScope::OfUrl, limits, nullptr);
    const QByteArray bytes = FixtureBytes(Text("listings/") + Text(fixture));
    reader.Feed(bytes.constData(), static_cast<size_t>(bytes.size()));
    reader.Finish();
    return limits.supplement;
}

TEST(MultistatusReaderTest, ReadsAnApacheListing) {
    const DAVPropfindResult result = ReadListing("apache.xml");
    EXPECT_EQ(Keys(result.collectionResponses), QStringList{QStringLiteral("Projects/A/old drafts")});
    EXPECT_EQ(Keys(result.fileResponses), (QStringList{QStringLiteral("Projects/A/plan.txt"),
                                                       QString::fromUtf8("Projects/A/\xC3\xA9t\xC3\xA9 (1);#1.txt")}));
    EXPECT_FALSE(result.isSingleResponse);

    const DAVPropfindResponse file = result.fileResponses.first();
    EXPECT_EQ(file.getHref(), QStringLiteral("/Projects/A/plan.txt"));
    EXPECT_EQ(file.getFilename(), QStringLiteral("plan.txt"));
    EXPECT_EQ(file.getResourceClassType(), QStringLiteral("drovane.objects.File"));
    EXPECT_EQ(file.getLastModifiedDate(), Utc("2026-11-20T10:15:30Z"));
    EXPECT_EQ(file.getCreatedDate(), Utc("2026-11-19T08:00:00Z"));
    EXPECT_FALSE(file.getLinksExtractedAtFileTime().isValid());
    EXPECT_EQ(file.contentLength, 1234);
    EXPECT_EQ(file.versionNumber, 0);
    EXPECT_EQ(file.attribute, '\0');

    EXPECT_EQ(result.fileResponses.last().getFilename(), QStringLiteral("%c3%a9t%c3%a9%20(1);%231.txt"));
    EXPECT_EQ(result.fileResponses.last().getLastModifiedDate(), QDateTime::fromSecsSinceEpoch(0, Qt::UTC));

    const DAVPropfindResponse folder = result.collectionResponses.first();
    EXPECT_EQ(folder.getHref(), QStringLiteral("/Projects/A/old%20drafts/"));
    EXPECT_EQ(folder.getFilename(), QStringLiteral("old drafts"));
    EXPECT_EQ(folder.getResourceClassType(), QStringLiteral("drovane.objects.Folder"));
    EXPECT_EQ(folder.contentLength, 0);
}

TEST(MultistatusReaderTest, ReadsAnNginxListingWithUnescapedHrefs) {
    const DAVPropfindResult result = ReadListing("nginx.xml");
    EXPECT_EQ(Keys(result.fileResponses), (QStringList{QStringLiteral("Projects/A/100%25 sure.txt"),
                                                       QStringLiteral("Projects/A/b@c:d's,e&f=g.txt")}));
    EXPECT_EQ(result.fileResponses.first().getHref(), QStringLiteral("/Projects/A/100%25%20sure.txt"));
    EXPECT_EQ(result.fileResponses.first().getFilename(), QStringLiteral("100%25%20sure.txt"));
    EXPECT_EQ(result.fileResponses.last().getHref(), QStringLiteral("/Projects/A/b@c:d's,e&f=g.txt"));
}

TEST(MultistatusReaderTest, HoldsLargeSizesAsTheContractSays) {
    const DAVPropfindResult nginx = ReadListing("nginx.xml");
    EXPECT_EQ(nginx.fileResponses.first().contentLength, static_cast<int>(3000000000LL - 4294967296LL));
    EXPECT_EQ(nginx.fileResponses.last().contentLength, -1);
    EXPECT_EQ(ReadListing("iis.xml").fileResponses.first().contentLength, std::numeric_limits<int>::min());
}

TEST(MultistatusReaderTest, NotesWhichFilesAreExecutableBesideTheResult) {
    const ListingLimits limits;
    FileAttributes before;
    before.isExecutable = true;
    limits.supplement->SetAttributes(Text("bin/no longer"), before);
    limits.supplement->SetAttributes(Text("bin/a text"), before);
    SupplementOf("executables.xml", limits);
    EXPECT_EQ(limits.supplement->AttributesOf(Text("bin/a tool")).isExecutable, true);
    EXPECT_EQ(limits.supplement->AttributesOf(Text("bin/no longer")).isExecutable, false);
    for (const char* other : {"bin/a text", "bin/of another namespace", "bin/odd"}) {
        EXPECT_EQ(limits.supplement->AttributesOf(Text(other)).isExecutable, std::nullopt) << other;
    }
}

TEST(MultistatusReaderTest, WhatItNotedOfFilesCanBeForgotten) {
    const ListingLimits limits;
    SupplementOf("executables.xml", limits);
    limits.supplement->AddSize(Text("bin/a tool"), Q_INT64_C(1) << 33);
    ASSERT_TRUE(limits.supplement->KnowsAttributes());
    limits.supplement->ForgetFiles();
    EXPECT_FALSE(limits.supplement->KnowsAttributes());
    EXPECT_EQ(limits.supplement->SizeOf(Text("bin/a tool")), -1);
}

TEST(MultistatusReaderTest, NotesTheDatesThatClientsLeftWithFilesBesideTheResult) {
    const auto supplement = SupplementOf("content-dates.xml");
    const QDateTime listed = QDateTime::fromSecsSinceEpoch(1795169730, Qt::UTC);
    const QString md5 = Text("9e107d9d372bb6826bd81d3542a419d6");
    const FileAttributes dated = supplement->AttributesOf(Text("bin/dated"));
    EXPECT_EQ(dated.DateOf(md5, listed), QDateTime::fromSecsSinceEpoch(1600000000, Qt::UTC));
    EXPECT_EQ(dated.DateOf(Text("e4d909c290d0fb1ca068ffaddf22cbd0"), listed), listed) << "that content is another one";
    for (const char* other : {"bin/none", "bin/short", "bin/not a date", "bin/no space", "bin/of another namespace"}) {
        EXPECT_EQ(supplement->AttributesOf(Text(other)).DateOf(md5, listed), listed) << other;
    }
}

TEST(MultistatusReaderTest, ReadsAnIisListingWithAbsoluteUrls) {
    const DAVPropfindResult result = ReadListing("iis.xml");
    EXPECT_EQ(Keys(result.fileResponses), QStringList{QString::fromUtf8("Projects/A/Caf\xC3\xA9 Menu.docx")});
    EXPECT_EQ(result.fileResponses.first().getHref(), QStringLiteral("/Projects/A/Caf%C3%A9%20Menu.docx"));
    EXPECT_EQ(result.fileResponses.first().getLastModifiedDate(), Utc("2026-11-20T10:15:30Z"));
    EXPECT_EQ(result.fileResponses.first().getCreatedDate(), Utc("2026-11-19T08:00:00Z"));
    EXPECT_EQ(Keys(result.collectionResponses), QStringList{QStringLiteral("Projects/A/Archive")});
    EXPECT_EQ(result.collectionResponses.first().getHref(), QStringLiteral("/Projects/A/Archive"));
    EXPECT_EQ(result.collectionResponses.first().getLastModifiedDate(), Utc("2026-11-20T10:15:30Z"));
    EXPECT_EQ(result.collectionResponses.first().contentLength, 0);
}

TEST(MultistatusReaderTest, ReadsASabreListingWithPropertiesOfOtherNamespaces) {
    const DAVPropfindResult result =
        ReadListing("sabre.xml", QStringLiteral("/remote.php/dav/files/alice/Projects/A/"));
    EXPECT_EQ(Keys(result.fileResponses),
              QStringList{QStringLiteral("remote.php/dav/files/alice/Projects/A/notes & more.md")});
    EXPECT_EQ(result.fileResponses.first().contentLength, 77);
    EXPECT_EQ(Keys(result.collectionResponses),
              QStringList{QStringLiteral("remote.php/dav/files/alice/Projects/A/Photos")});
}

TEST(MultistatusReaderTest, ReadsAllPropertiesOfTheService) {
    const DAVPropfindResult result = ReadListing("drovane.xml", QStringLiteral("/Projects/A/"), Tree);
    const DAVPropfindResponse file = result.fileResponses.value(QStringLiteral("Projects/A/b c.txt"));
    EXPECT_EQ(file.getFilename(), QStringLiteral("b%20c.txt"));
    EXPECT_EQ(file.getResourceClassType(), QStringLiteral("drovane.objects.File"));
    EXPECT_EQ(file.resourceId, 17);
    EXPECT_EQ(file.parentResourceId, 4);
    EXPECT_EQ(file.versionNumber, 3);
    EXPECT_EQ(file.getVersionId(), QStringLiteral("v-17-3"));
    EXPECT_EQ(file.getItemId(), QStringLiteral("item-17"));
    EXPECT_EQ(file.getOwnerId(), QStringLiteral("alice"));
    EXPECT_EQ(file.getPrivileges(), QStringLiteral("rw"));
    EXPECT_EQ(file.getVisibility(), QStringLiteral("show"));
    EXPECT_EQ(file.getCheckSumMD5(), QStringLiteral("d41d8cd98f00b204e9800998ecf8427e"));
    EXPECT_EQ(file.getSyncOption(), QStringLiteral("a,b <c>"));
    EXPECT_EQ(file.getLinksExtractedAtFileTime(), Utc("2026-11-20T07:00:00Z"));
    EXPECT_EQ(file.attribute, ' ');
}

TEST(MultistatusReaderTest, ReadsSyncPropertiesThatStandByThemselves) {
    const DAVPropfindResult result = ReadListing("drovane.xml", QStringLiteral("/Projects/A/"), Tree);
    const DAVPropfindResponse file = result.fileResponses.value(QStringLiteral("Projects/A/Forms/entry 1.txt"));
    EXPECT_EQ(file.resourceId, 19);
    EXPECT_EQ(file.parentResourceId, 18);
    EXPECT_EQ(file.versionNumber, 2);
    EXPECT_EQ(file.contentLength, 8);
    EXPECT_EQ(file.attribute, 'q');
    EXPECT_FALSE(file.getLastModifiedDate().isValid());
    EXPECT_FALSE(file.getCreatedDate().isValid());
}

TEST(MultistatusReaderTest, NothingOfAnEntryReachesTheNext) {
    const DAVPropfindResult result = ReadListing("drovane.xml", QStringLiteral("/Projects/A/"), Tree);
    const DAVPropfindResponse form = result.fileResponses.value(QStringLiteral("Projects/A/Forms"));
    EXPECT_EQ(form.getOwnerId(), QString());
    EXPECT_EQ(form.getVersionId(), QString());
    EXPECT_EQ(form.getCheckSumMD5(), QString());
    EXPECT_EQ(form.contentLength, 0);
    EXPECT_EQ(form.attribute, '\0');
    EXPECT_FALSE(form.getLinksExtractedAtFileTime().isValid());
}

TEST(MultistatusReaderTest, PutsFormsAmongTheFiles) {
    const DAVPropfindResult result = ReadListing("drovane.xml", QStringLiteral("/Projects/A/"), Tree);
    EXPECT_EQ(Keys(result.fileResponses),
              (QStringList{QStringLiteral("Projects/A/Forms"), QStringLiteral("Projects/A/Forms/entry 1.txt"),
                           QStringLiteral("Projects/A/b c.txt")}));
    EXPECT_EQ(result.fileResponses.first().getResourceClassType(), QStringLiteral("DROVANE.Objects.form"));
    EXPECT_EQ(result.fileResponses.first().getFilename(), QStringLiteral("Forms"));
    EXPECT_EQ(result.fileResponses.first().getHref(), QStringLiteral("/Projects/A/Forms"));
    EXPECT_EQ(Keys(result.collectionResponses), QStringList{QStringLiteral("Projects/A/Sub")});
}

TEST(MultistatusReaderTest, SplitsPathsBeforeItDecodesThem) {
    const DAVPropfindResult result = ReadListing("slashes.xml", QStringLiteral("/Projects/A/"), Tree);
    EXPECT_EQ(Keys(result.fileResponses),
              (QStringList{QStringLiteral("Projects/A/a%252Fb"), QStringLiteral("Projects/A/a/b.txt"),
                           QStringLiteral("Projects/A/not%FFtext"), QStringLiteral("Projects/A/relative name.txt"),
                           QStringLiteral("Projects/A/what?#<1>.txt")}));
    EXPECT_EQ(result.fileResponses.last().getHref(), QStringLiteral("/Projects/A/what%3F%23%3C1%3E.txt"));
    EXPECT_EQ(Keys(result.collectionResponses), QStringList{QStringLiteral("Projects/A/a%2Fb")});
    EXPECT_EQ(result.collectionResponses.first().getFilename(), QStringLiteral("a%2Fb"));
}

TEST(MultistatusReaderTest, AnEmptyHrefIsWhatWasAskedFor) {
    EXPECT_EQ(Keys(ReadListing("empty-href.xml").fileResponses), QStringList{QStringLiteral("Projects/A/b.txt")});
}

TEST(MultistatusReaderTest, ReadsTheEncodingThatTheDocumentDeclares) {
    EXPECT_EQ(Keys(ReadListing("latin1.xml").fileResponses),
              QStringList{QString::fromUtf8("Projects/A/\xC3\xA9t\xC3\xA9.txt")});
    const QString utf8 = QString::fromUtf8(FixtureBytes(QStringLiteral("listings/apache.xml")));
    QString text = utf8;
    text.replace(QLatin1String("utf-8"), QLatin1String("utf-16"));
    const QByteArray utf16(reinterpret_cast<const char*>(text.utf16()), 2 * text.size());
    EXPECT_EQ(Describe(ReadBytes("\xFF\xFE" + utf16)), Describe(ReadListing("apache.xml")));
    const QByteArray byteOrderMark = "\xEF\xBB\xBF";
    EXPECT_EQ(Describe(ReadBytes(byteOrderMark + utf8.toUtf8())), Describe(ReadListing("apache.xml")));
}

TEST(MultistatusReaderTest, MakesUpIdsThatAreTheSameInEveryListing) {
    const DAVPropfindResult folder = ReadListing("slashes.xml", QStringLiteral("/Projects/A/"), Tree);
    const DAVPropfindResponse file = folder.fileResponses.value(QStringLiteral("Projects/A/relative name.txt"));
    EXPECT_EQ(file.getItemId(), QStringLiteral("path:Projects/A/relative name.txt"));
    const DAVPropfindResult itself = ReadListing("empty-folder.xml", QStringLiteral("/Projects/A"), Resource);
    EXPECT_EQ(file.parentResourceId, itself.singleResponse.resourceId);
    EXPECT_GT(itself.singleResponse.parentResourceId, 0);
    EXPECT_NE(itself.singleResponse.parentResourceId, itself.singleResponse.resourceId);
    // FNV-1a of "Projects/A/relative name.txt", without the highest bit.
    EXPECT_EQ(file.resourceId, 1197478697);
}

TEST(MultistatusReaderTest, ASingleResourceIsTheSingleResponse) {
    const DAVPropfindResult folder = ReadListing("empty-folder.xml", QStringLiteral("/Projects/A"), Resource);
    EXPECT_TRUE(folder.isSingleResponse);
    EXPECT_EQ(folder.singleResponse.getHref(), QStringLiteral("/Projects/A/"));
    EXPECT_EQ(folder.singleResponse.getFilename(), QStringLiteral("A"));
    EXPECT_TRUE(folder.fileResponses.isEmpty());
    EXPECT_TRUE(folder.collectionResponses.isEmpty());
}

TEST(MultistatusReaderTest, AnEmptyFolderHasNoEntries) {
    for (const Depth depth : {Children, Tree}) {
        const DAVPropfindResult result = ReadListing("empty-folder.xml", QStringLiteral("/Projects/A/"), depth);
        EXPECT_FALSE(result.isSingleResponse);
        EXPECT_TRUE(result.fileResponses.isEmpty());
        EXPECT_TRUE(result.collectionResponses.isEmpty());
    }
}

TEST(MultistatusReaderTest, AFileThatWasAskedForIsAFileAndTheSingleResponse) {
    for (const QString& path : {QStringLiteral("/Projects/A/b%20c.txt"), QStringLiteral("/Projects/A/b%20c.txt/")}) {
        for (const Depth depth : {Resource, Children, Tree}) {
            const DAVPropfindResult result = ReadListing("file.xml", path, depth);
            EXPECT_TRUE(result.isSingleResponse);
            EXPECT_EQ(result.singleResponse.getFilename(), QStringLiteral("b%20c.txt"));
            EXPECT_EQ(result.singleResponse.contentLength, 12);
            EXPECT_EQ(Keys(result.fileResponses), QStringList{QStringLiteral("Projects/A/b c.txt")});
        }
    }
}

TEST(MultistatusReaderTest, AListedFormIsNoEntryOfItself) {
    const DAVPropfindResult result = ReadListing("form.xml");
    EXPECT_FALSE(result.isSingleResponse);
    EXPECT_EQ(Keys(result.fileResponses), QStringList{QStringLiteral("Projects/A/x")});
}

TEST(MultistatusReaderTest, KnowsTheAskedFolderByItsNameInAnySpelling) {
    for (const QString& path :
         {QStringLiteral("/Projects/A"), QStringLiteral("/Projects/%41/"), QStringLiteral("//Projects/A//")}) {
        EXPECT_EQ(Describe(ReadListing("apache.xml", path)), Describe(ReadListing("apache.xml")));
    }
}

TEST(MultistatusReaderTest, TheRootHasNoParent) {
    QByteArray bytes = FixtureBytes(QStringLiteral("listings/empty-folder.xml"));
    bytes.replace("/Projects/A/", "/");
    const DAVPropfindResult result = ReadBytes(bytes, QStringLiteral("/"), Resource);
    EXPECT_EQ(result.singleResponse.parentResourceId, 0);
    EXPECT_GT(result.singleResponse.resourceId, 0);
    EXPECT_EQ(result.singleResponse.getHref(), QStringLiteral("/"));
    EXPECT_EQ(result.singleResponse.getFilename(), QStringLiteral(""));
}

struct GoodListing {
    const char* file;
    const char* path;
};

void PrintTo(const GoodListing& listing, std::ostream* stream) {
    *stream << listing.file;
}

class GoodListingTest : public testing::TestWithParam<GoodListing> {
protected:
    const QByteArray bytes = FixtureBytes(QStringLiteral("listings/") + QLatin1String(GetParam().file));
    const QString path = QLatin1String(GetParam().path);
};

TEST_P(GoodListingTest, ReadsTheSameInPiecesOfAnySize) {
    const QStringList whole = Describe(ReadBytes(bytes, path, Tree));
    for (const int pieceSize : {1, 2, 3, 5, 7, 11, 64, 1000}) {
        EXPECT_EQ(Describe(ReadBytes(bytes, path, Tree, pieceSize)), whole) << pieceSize;
    }
}

TEST_P(GoodListingTest, ReadsTheSameSplitInTwoAtAnyPlace) {
    const QStringList whole = Describe(ReadBytes(bytes, path, Tree));
    for (int at = 1; at < bytes.size(); ++at) {
        MultistatusReader reader(QUrl(QStringLiteral("http://127.0.0.1:8080") + path), Tree);
        reader.Feed(bytes.constData(), static_cast<size_t>(at));
        reader.Feed(bytes.constData() + at, static_cast<size_t>(bytes.size() - at));
        ASSERT_EQ(Describe(*reader.Finish()), whole) << at;
    }
}

TEST_P(GoodListingTest, NoBeginningOfItIsAListing) {
    const int lastByte = bytes.lastIndexOf('>');
    for (int size = 0; size <= lastByte; ++size) {
        ASSERT_THROW(ReadBytes(bytes.left(size), path, Tree), SyncException) << size;
    }
    EXPECT_NO_THROW(ReadBytes(bytes.left(lastByte + 1), path, Tree));
}

INSTANTIATE_TEST_SUITE_P(
    Servers, GoodListingTest,
    testing::Values(GoodListing{"apache.xml", "/Projects/A/"}, GoodListing{"nginx.xml", "/Projects/A/"},
                    GoodListing{"iis.xml", "/Projects/A/"},
                    GoodListing{"sabre.xml", "/remote.php/dav/files/alice/Projects/A/"},
                    GoodListing{"drovane.xml", "/Projects/A/"}, GoodListing{"slashes.xml", "/Projects/A/"},
                    GoodListing{"latin1.xml", "/Projects/A/"}, GoodListing{"file.xml", "/Projects/A/b%20c.txt"},
                    GoodListing{"empty-folder.xml", "/Projects/A/"}, GoodListing{"empty-href.xml", "/Projects/A/"}),
    [](const testing::TestParamInfo<GoodListing>& tested) {
        std::string name = tested.param.file;
        name.resize(name.find('.'));
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

std::vector<BadAnswer> AnswersForTheReader() {
    std::vector<BadAnswer> answers;
    for (const BadAnswer& answer : BadAnswers()) {
        if (answer.isForReader) {
            answers.push_back(answer);
        }
    }
    return answers;
}

class BadListingTest : public testing::TestWithParam<BadAnswer> {};

TEST_P(BadListingTest, IsRefusedInOnePieceAndInMany) {
    const QByteArray body = FixtureAnswer(FixtureNameOf(GetParam()), GetParam().fillSize).body;
    const auto depth = static_cast<Depth>(GetParam().depth);
    EXPECT_THAT(ErrorOf(body, depth, qMax(1, body.size())), HasSubstr(GetParam().reason));
    EXPECT_THAT(ErrorOf(body, depth, 1000), HasSubstr(GetParam().reason));
    EXPECT_THAT(ErrorOf(body, depth, 1), HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(Answers, BadListingTest, testing::ValuesIn(AnswersForTheReader()),
                         [](const testing::TestParamInfo<BadAnswer>& tested) { return NameOf(tested.param); });

TEST(MultistatusReaderTest, LimitsEndWhereTheyAreSaidToEnd) {
    const auto read = [](const char* file, int fillSize) {
        return ErrorOf(FixtureAnswer(QLatin1String(file), fillSize).body, Children, 4096);
    };
    const int prefix = static_cast<int>(qstrlen("/Projects/A/"));
    EXPECT_EQ(read("bad/href-too-long", 16384 - prefix), "no error");
    EXPECT_THAT(read("bad/href-too-long", 16384 - prefix + 1), HasSubstr("above 16384 bytes"));
    EXPECT_EQ(read("bad/value-too-large", 65536), "no error");
    EXPECT_THAT(read("bad/value-too-large", 65537), HasSubstr("above 65536 bytes"));
    // Around the filling there is a space on either side.
    EXPECT_EQ(read("bad/comment-too-large", 65536 - 2), "no error");
    EXPECT_THAT(read("bad/comment-too-large", 65536 - 1), HasSubstr("a comment above"));
    EXPECT_EQ(read("bad/tag-too-large", 65536), "no error");
    EXPECT_THAT(read("bad/tag-too-large", 65537), HasSubstr("an attribute"));
}

}  // namespace
}  // namespace listing
}  // namespace ovsync
