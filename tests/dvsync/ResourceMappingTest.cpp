#include "dvsync/ResourceMapping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDateTime>

#include "tests/fakes/Text.h"

namespace {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::dv::dvsync::BuildFileConfigFromFindResponse;
using sync::dv::dvsync::BuildFileConfigsFromFindResult;
using sync::dv::dvsync::IsFileClassType;
using sync::dv::dvsync::IsFolderClassType;
using sync::dv::dvsync::IsFormClassType;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;
using tests::Text;

DAVPropfindResponse ResponseOfClass(const char* classType, const char* href = "/a/b.txt") {
    DAVPropfindProperties properties;
    properties.resourceClassType = Text(classType);
    return DAVPropfindResponse(Text(href), properties);
}

QString ServerPathOf(const char* href) {
    return BuildFileConfigFromFindResponse(FolderConfiguration(), ResponseOfClass("", href)).serverPath;
}

FileConfiguration FileWith(const DAVPropfindProperties& properties) {
    return BuildFileConfigFromFindResponse(FolderConfiguration(), DAVPropfindResponse(Text("/x"), properties));
}

TEST(ClassTypeTest, AFileIsAFileInAnyLetterCase) {
    EXPECT_TRUE(IsFileClassType(ResponseOfClass("drovane.objects.File")));
    EXPECT_TRUE(IsFileClassType(ResponseOfClass("DROVANE.OBJECTS.FILE")));
    EXPECT_TRUE(IsFileClassType(ResponseOfClass("drovane.objects.file")));
}

TEST(ClassTypeTest, TheWholeTextIsCompared) {
    EXPECT_FALSE(IsFileClassType(ResponseOfClass("drovane.objects.File ")));
    EXPECT_FALSE(IsFileClassType(ResponseOfClass(" drovane.objects.File")));
    EXPECT_FALSE(IsFileClassType(ResponseOfClass("drovane.objects.FileX")));
    EXPECT_FALSE(IsFileClassType(ResponseOfClass("")));
    EXPECT_FALSE(IsFormClassType(ResponseOfClass("drovane.objects.Forms")));
    EXPECT_FALSE(IsFormClassType(ResponseOfClass("x.drovane.objects.Form")));
    EXPECT_FALSE(IsFolderClassType(ResponseOfClass("drovane.objects.Folder ")));
    EXPECT_FALSE(IsFolderClassType(ResponseOfClass("Folder")));
    EXPECT_FALSE(IsFolderClassType(ResponseOfClass("drovane.objects.Projects")));
    EXPECT_FALSE(IsFolderClassType(ResponseOfClass("drovane_objects_Project")));
}

TEST(ClassTypeTest, EveryTypeIsOneThing) {
    EXPECT_FALSE(IsFolderClassType(ResponseOfClass("drovane.objects.File")));
    EXPECT_FALSE(IsFormClassType(ResponseOfClass("drovane.objects.File")));
    for (const char* folder : {"drovane.objects.Folder", "drovane.objects.Project"}) {
        EXPECT_FALSE(IsFileClassType(ResponseOfClass(folder)));
        EXPECT_FALSE(IsFormClassType(ResponseOfClass(folder)));
    }
}

TEST(ClassTypeTest, AFolderAndAProjectAreFolders) {
    EXPECT_TRUE(IsFolderClassType(ResponseOfClass("drovane.objects.Folder")));
    EXPECT_TRUE(IsFolderClassType(ResponseOfClass("DROVANE.OBJECTS.FOLDER")));
    EXPECT_TRUE(IsFolderClassType(ResponseOfClass("drovane.objects.Project")));
    EXPECT_TRUE(IsFolderClassType(ResponseOfClass("drovane.objects.pROJECT")));
}

TEST(ClassTypeTest, AFormIsNoFolderAndNoFile) {
    const DAVPropfindResponse form = ResponseOfClass("Drovane.Objects.Form");
    EXPECT_TRUE(IsFormClassType(form));
    EXPECT_FALSE(IsFolderClassType(form));
    EXPECT_FALSE(IsFileClassType(form));
}

TEST(ClassTypeTest, AnEntryWithoutClassTypeIsNothing) {
    const DAVPropfindResponse none = ResponseOfClass("");
    EXPECT_FALSE(IsFileClassType(none));
    EXPECT_FALSE(IsFolderClassType(none));
    EXPECT_FALSE(IsFormClassType(none));
}

TEST(BuildFileConfigFromFindResponseTest, EveryFieldComesFromItsProperty) {
    FolderConfiguration folder;
    folder.serverId = 42;
    folder.serverRootPath = Text("Projects");
    folder.localPath = Text("/home/user/work");

    DAVPropfindProperties properties;
    properties.filename = Text("b%20c.txt");
    properties.resourceClassType = Text("drovane.objects.File");
    properties.versionId = Text("v-7");
    properties.itemId = Text("item-1");
    properties.ownerId = Text("owner-1");
    properties.privileges = Text("rw");
    properties.visibility = Text("show");
    properties.checkSumMD5 = Text("0123456789abcdef0123456789abcdef");
    properties.syncOption = Text("a,b");
    properties.createdDate = QDateTime::fromMSecsSinceEpoch(1000);
    properties.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(2000);
    properties.linksExtractedAtFileTime = QDateTime::fromMSecsSinceEpoch(3000);
    DAVPropfindResponse response(Text("/Projects/A/b%20c.txt"), properties);
    response.contentLength = 1234;
    response.versionNumber = 7;
    response.resourceId = 17;
    response.parentResourceId = 4;
    response.attribute = 'q';

    const FileConfiguration file = BuildFileConfigFromFindResponse(folder, response);
    EXPECT_EQ(file.name, Text("b c.txt"));
    EXPECT_EQ(file.attribute, Text("q"));
    EXPECT_EQ(file.serverPath, Text("Projects/A/b c.txt"));
    EXPECT_EQ(file.localPath, Text("/home/user/work/A/b c.txt"));
    EXPECT_EQ(file.customProperties.size(), 4);
    EXPECT_EQ(file.customProperties.value(Text("version")), Text("7"));
    EXPECT_EQ(file.customProperties.value(Text("versionId")), Text("v-7"));
    EXPECT_EQ(file.customProperties.value(Text("resourceId")), Text("17"));
    EXPECT_EQ(file.customProperties.value(Text("visibility")), Text("1"));
    EXPECT_EQ(file.size, 1234);
    EXPECT_EQ(file.lastModifiedDate, QDateTime::fromMSecsSinceEpoch(2000));
    EXPECT_EQ(file.createdDate, QDateTime::fromMSecsSinceEpoch(1000));
    EXPECT_EQ(file.ownerId, Text("owner-1"));
    EXPECT_EQ(file.serverId, 42);
    EXPECT_EQ(file.getPrivileges(), Text("rw"));
    EXPECT_EQ(file.itemId, Text("item-1"));
    EXPECT_EQ(file.versionId, Text("v-7"));
    EXPECT_EQ(file.md5Checksum, Text("0123456789abcdef0123456789abcdef"));
    EXPECT_EQ(file.linksExtractedAtTime, QDateTime::fromMSecsSinceEpoch(3000));
    EXPECT_EQ(file.getSyncOptionPersistentAcrossMachines(), QStringList() << Text("a") << Text("b"));
}

TEST(BuildFileConfigFromFindResponseTest, EveryOtherFieldKeepsItsDefault) {
    const FileConfiguration file = FileWith(DAVPropfindProperties());
    const FileConfiguration untouched;
    EXPECT_EQ(file.stateCode, untouched.stateCode);
    EXPECT_EQ(file.ownerAttribute, untouched.ownerAttribute);
    EXPECT_EQ(file.syncMode, untouched.syncMode);
    EXPECT_TRUE(file.links.isEmpty());
}

TEST(BuildFileConfigFromFindResponseTest, NothingElseComesFromTheFolder) {
    FolderConfiguration folder;
    folder.serverKey = 5;
    folder.name = folder.resourceId = folder.serverPath = folder.companionServerPath = folder.ownerId = Text("folder");
    folder.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(1000);
    folder.accessMask = 31;
    folder.setLastSyncTime(QDateTime::fromMSecsSinceEpoch(2000));
    folder.setLastServerSyncRequestTime(QDateTime::fromMSecsSinceEpoch(3000));
    folder.setPrivileges(Text("folder"));
    folder.setServerFolderId(Text("folder"));
    const FileConfiguration file =
        BuildFileConfigFromFindResponse(folder, DAVPropfindResponse(Text("/x"), DAVPropfindProperties()));
    EXPECT_EQ(file.serverId, 0);
    EXPECT_EQ(file.serverPath, Text("x"));
    EXPECT_EQ(file.localPath, Text("x"));
    for (const QString& text : {file.name, file.ownerId, file.itemId, file.versionId, file.md5Checksum,
                                file.getPrivileges(), file.customProperties.value(Text("versionId"))}) {
        EXPECT_EQ(text, Text(""));
    }
    for (const QDateTime& date : {file.createdDate, file.lastModifiedDate, file.linksExtractedAtTime}) {
        EXPECT_FALSE(date.isValid());
    }
    EXPECT_EQ(file.customProperties.value(Text("resourceId")), Text("0"));
    EXPECT_EQ(file.ownerAttribute, 0);
    EXPECT_EQ(file.stateCode, 0);
    EXPECT_EQ(file.syncMode, 0);
}

TEST(BuildFileConfigFromFindResponseTest, NumbersAreDecimalWithTheirSign) {
    DAVPropfindResponse response = ResponseOfClass("");
    const auto numbers = [&](int number) {
        response.versionNumber = number;
        response.resourceId = number;
        const FileConfiguration file = BuildFileConfigFromFindResponse(FolderConfiguration(), response);
        EXPECT_EQ(file.customProperties.value(Text("version")), file.customProperties.value(Text("resourceId")));
        return file.customProperties.value(Text("version"));
    };
    EXPECT_EQ(numbers(-17), Text("-17"));
    EXPECT_EQ(numbers(1234567), Text("1234567"));
    EXPECT_EQ(numbers(2147483647), Text("2147483647"));
    EXPECT_EQ(numbers(-2147483647 - 1), Text("-2147483648"));
}

TEST(BuildFileConfigFromFindResponseTest, MissingPropertiesAreStoredAsEmptyValues) {
    const FileConfiguration file = FileWith(DAVPropfindProperties());
    EXPECT_TRUE(file.name.isEmpty());
    EXPECT_TRUE(file.itemId.isEmpty());
    EXPECT_TRUE(file.md5Checksum.isEmpty());
    EXPECT_FALSE(file.createdDate.isValid());
    EXPECT_FALSE(file.lastModifiedDate.isValid());
    EXPECT_EQ(file.size, 0);
    EXPECT_EQ(file.customProperties.value(Text("version")), Text("0"));
    EXPECT_TRUE(file.customProperties.contains(Text("versionId")));
    EXPECT_EQ(file.customProperties.value(Text("resourceId")), Text("0"));
    EXPECT_TRUE(file.getSyncOptionPersistentAcrossMachines().isEmpty());
}

TEST(BuildFileConfigFromFindResponseTest, TheFileNameIsDecodedAsUtf8) {
    DAVPropfindProperties properties;
    properties.filename = Text("r%C3%A9sum%C3%A9.pdf");
    EXPECT_EQ(FileWith(properties).name, Text("r\xC3\xA9sum\xC3\xA9.pdf"));
    properties.filename = Text("100%25.txt");
    EXPECT_EQ(FileWith(properties).name, Text("100%.txt"));
    properties.filename = Text("a+b.txt");
    EXPECT_EQ(FileWith(properties).name, Text("a+b.txt"));
    properties.filename = Text("\xC3\xA9%C3%A9%");
    EXPECT_EQ(FileWith(properties).name, Text("\xC3\xA9\xC3\xA9%"));
}

TEST(BuildFileConfigFromFindResponseTest, ANameWithoutEscapesGoesThroughUtf8LikeOneWithThem) {
    const QString halfACharacter = QString(QChar(0xD83D));
    const QString mark = QString(QChar(QChar::ByteOrderMark));
    for (const QString& text : {halfACharacter, mark, mark + Text("x"), Text("\xC3\xA9"), Text("x")}) {
        DAVPropfindProperties escaped;
        escaped.filename = text + Text("%61");
        DAVPropfindProperties plain;
        plain.filename = text + Text("a");
        EXPECT_EQ(FileWith(plain).name, FileWith(escaped).name) << text.toStdString();
    }
}

TEST(BuildFileConfigFromFindResponseTest, OneLeadingSlashIsRemovedFromThePath) {
    EXPECT_EQ(ServerPathOf("/a%20b/c.txt"), Text("a b/c.txt"));
    EXPECT_EQ(ServerPathOf("a/c.txt"), Text("a/c.txt"));
    EXPECT_EQ(ServerPathOf("/"), Text(""));
    EXPECT_EQ(ServerPathOf(""), Text(""));
}

TEST(BuildFileConfigFromFindResponseTest, AnHrefThatStartsWithTwoSlashesIsAPath) {
    EXPECT_EQ(ServerPathOf("//x//"), Text("/x//"));
    EXPECT_EQ(ServerPathOf("///x"), Text("//x"));
    EXPECT_EQ(ServerPathOf("//"), Text("/"));
    EXPECT_EQ(ServerPathOf("//host:port/a%20b"), Text("/host:port/a b"));
}

TEST(BuildFileConfigFromFindResponseTest, EveryEscapeOfThePathIsDecodedOnce) {
    EXPECT_EQ(ServerPathOf("/100%25.txt"), Text("100%.txt"));
    EXPECT_EQ(ServerPathOf("/100%2525.txt"), Text("100%25.txt"));
    EXPECT_EQ(ServerPathOf("/a%2Fb"), Text("a/b"));
    EXPECT_EQ(ServerPathOf("/a%23b%3Fc%3Bd"), Text("a#b?c;d"));
    EXPECT_EQ(ServerPathOf("/%C3%A9"), Text("\xC3\xA9"));
    EXPECT_EQ(ServerPathOf("/\xC3\xA9"), Text("\xC3\xA9"));
}

TEST(BuildFileConfigFromFindResponseTest, EveryHexadecimalDigitOfAnEscapeIsOneAndNothingElse) {
    for (const char* href : {"/%41%4a%4A%4f%4F%5A%5a%7A%6F%6f%49%50", "/a b%41%4a%4A%4f%4F%5A%5a%7A%6F%6f%49%50"}) {
        EXPECT_TRUE(ServerPathOf(href).endsWith(Text("AJJOOZZzooIP"))) << href;
    }
    EXPECT_EQ(ServerPathOf("/a%4Gb"), Text("a%4Gb"));
    EXPECT_EQ(ServerPathOf("/a%G4b"), Text("a%G4b"));
    EXPECT_EQ(ServerPathOf("/a%4gb"), Text("a%4gb"));
    EXPECT_EQ(ServerPathOf("/a%4:b"), Text("a%4:b"));
    EXPECT_EQ(ServerPathOf("/a%4@b"), Text("a%4@b"));
    EXPECT_EQ(ServerPathOf("/a%/4b"), Text("a%/4b"));
}

TEST(BuildFileConfigFromFindResponseTest, LettersOutsideAsciiStandForThemselvesBesideEscapes) {
    EXPECT_EQ(ServerPathOf("/\xC3\xA9%20\xE6\xBC\xA2"), Text("\xC3\xA9 \xE6\xBC\xA2"));
    EXPECT_EQ(ServerPathOf("/%C3%A9\xC3\xA9"), Text("\xC3\xA9\xC3\xA9"));
    EXPECT_EQ(ServerPathOf("/\xF0\x9F\x98\x80%F0%9F%98%80"), Text("\xF0\x9F\x98\x80\xF0\x9F\x98\x80"));
    DAVPropfindProperties properties;
    properties.filename = Text("\xC3\xA9%20\xE6\xBC\xA2%C3%A9");
    EXPECT_EQ(FileWith(properties).name, Text("\xC3\xA9 \xE6\xBC\xA2\xC3\xA9"));
}

TEST(BuildFileConfigFromFindResponseTest, WhatDoesNotStandForItselfInAPathIsReadAsInAnyUrl) {
    EXPECT_EQ(ServerPathOf("/a b/c"), Text("a b/c"));
    EXPECT_EQ(ServerPathOf("/a?query"), Text("a"));
    EXPECT_EQ(ServerPathOf("/a#fragment"), Text("a"));
    EXPECT_EQ(ServerPathOf("/a/./b/../c"), Text("a/./b/../c"));
}

TEST(BuildFileConfigFromFindResponseTest, APercentThatIsNoEscapeStandsForItselfBesideEscapes) {
    EXPECT_EQ(ServerPathOf("/100%.txt"), Text("100%.txt"));
    EXPECT_EQ(ServerPathOf("/a%2"), Text("a%2"));
    EXPECT_EQ(ServerPathOf("/a%20b/100%.txt"), Text("a b/100%.txt"));
    EXPECT_EQ(ServerPathOf("/50%-off/r%C3%A9s.txt"), Text("50%-off/r\xC3\xA9s.txt"));
    EXPECT_EQ(ServerPathOf("/100%25/5%"), Text("100%/5%"));
    EXPECT_EQ(ServerPathOf("/%%20"), Text("% "));
    EXPECT_EQ(ServerPathOf("/%%%41%2%"), Text("%%A%2%"));
    EXPECT_EQ(ServerPathOf("/%4G%G4%4g%4f"), Text("%4G%G4%4gO"));
    EXPECT_EQ(ServerPathOf("/%\xC3\xA9%C3%A9"), Text("%\xC3\xA9\xC3\xA9"));
    EXPECT_EQ(ServerPathOf("a%20b/5%"), Text("a b/5%"));
    EXPECT_EQ(ServerPathOf("//x%/%20"), Text("/x%/ "));
    EXPECT_EQ(ServerPathOf("http://service.test/5%/%20?%"), Text("5%/ "));
}

TEST(BuildFileConfigFromFindResponseTest, EveryCharacterOfAUrlPathKeepsItsMeaning) {
    for (char character = 0x21; character < 0x7F; ++character) {
        const QByteArray href = QByteArray("/a") + character + QByteArray("b%20c");
        const bool endsThePath = character == '?' || character == '#';
        const QByteArray path = endsThePath ? QByteArray("a") : QByteArray("a") + character + QByteArray("b c");
        EXPECT_EQ(ServerPathOf(href.constData()), Text(path.constData())) << href.constData();
    }
}

TEST(BuildFileConfigFromFindResponseTest, AColonInTheFirstSegmentOfARelativeHrefEndsASchemeOnlyWhereOneCanStand) {
    EXPECT_EQ(ServerPathOf("a b:c/d"), Text("a b:c/d"));
    EXPECT_EQ(ServerPathOf("a%20b:c/d%20e"), Text("a b:c/d e"));
    EXPECT_EQ(ServerPathOf("\xC3\xA9:c"), Text("\xC3\xA9:c"));
    EXPECT_EQ(ServerPathOf("5%:c"), Text("5%:c"));
    EXPECT_EQ(ServerPathOf("a_b:c:d"), Text("a_b:c:d"));
    EXPECT_EQ(ServerPathOf("a/b:c"), Text("a/b:c"));
    EXPECT_EQ(ServerPathOf(":x"), Text("x"));
    EXPECT_EQ(ServerPathOf(":x:y/z"), Text("x:y/z"));
    EXPECT_EQ(ServerPathOf("a:b/c"), Text("b/c"));
    EXPECT_EQ(ServerPathOf("1a:b/c"), Text(""));
}

TEST(BuildFileConfigFromFindResponseTest, AnyPortIsAPort) {
    EXPECT_EQ(ServerPathOf("http://service.test:65536/a%20b"), Text("a b"));
    EXPECT_EQ(ServerPathOf("http://service.test:99999999999/a:70000/b"), Text("a:70000/b"));
    EXPECT_EQ(ServerPathOf("http://user:70000@[::1]:70000/a"), Text("a"));
    EXPECT_EQ(ServerPathOf("http://service.test:/a"), Text("a"));
    EXPECT_EQ(ServerPathOf("http://service.test:70000"), Text(""));
    EXPECT_EQ(ServerPathOf("http://service.test:70000?a:70000/b"), Text(""));
    EXPECT_EQ(ServerPathOf("http://service.test:7x/a"), Text(""));
    EXPECT_EQ(ServerPathOf("s:a//b:70000/c"), Text("a//b:70000/c"));
}

TEST(BuildFileConfigFromFindResponseTest, ThePathOfAnAbsoluteHrefIsTaken) {
    EXPECT_EQ(ServerPathOf("https://service.test:8443/a%20b/c.txt"), Text("a b/c.txt"));
    EXPECT_EQ(ServerPathOf("http://service.test"), Text(""));
}

TEST(BuildFileConfigFromFindResponseTest, NonCharactersAreDecodedInEveryFormOfAnHref) {
    EXPECT_EQ(ServerPathOf("/a%EF%BF%BF"), Text("a\xEF\xBF\xBF"));
    EXPECT_EQ(ServerPathOf("/a b%EF%BF%BF"), Text("a b\xEF\xBF\xBF"));
    EXPECT_EQ(ServerPathOf("http://service.test/%F2%BF%BF%BF"), Text("\xF2\xBF\xBF\xBF"));
}

TEST(BuildFileConfigFromFindResponseTest, AnInvalidHrefGivesEmptyPaths) {
    FolderConfiguration folder;
    folder.serverRootPath = Text("Projects");
    folder.localPath = Text("/home/user/work");
    for (const char* href : {"http://[bad/x", "http://service.test:port/x", "1a:b", ""}) {
        const FileConfiguration file =
            BuildFileConfigFromFindResponse(folder, ResponseOfClass("drovane.objects.File", href));
        EXPECT_TRUE(file.serverPath.isEmpty()) << href;
        EXPECT_TRUE(file.localPath.isEmpty()) << href;
    }
}

TEST(BuildFileConfigFromFindResponseTest, AnHrefOfTheRootIsNotAnInvalidOne) {
    FolderConfiguration folder;
    folder.localPath = Text("/home/user/work");
    for (const char* href : {"/", "http://service.test", "http://service.test/"}) {
        const FileConfiguration file =
            BuildFileConfigFromFindResponse(folder, ResponseOfClass("drovane.objects.File", href));
        EXPECT_TRUE(file.serverPath.isEmpty()) << href;
        EXPECT_EQ(file.localPath, Text("/home/user/work")) << href;
    }
}

TEST(BuildFileConfigFromFindResponseTest, TheLocalPathReplacesTheLengthOfTheRootPathWhateverStandsThere) {
    FolderConfiguration folder;
    folder.serverRootPath = Text("Projects");
    folder.localPath = Text("L");
    EXPECT_EQ(BuildFileConfigFromFindResponse(folder, ResponseOfClass("", "/Projects/a.txt")).localPath,
              Text("L/a.txt"));
    EXPECT_EQ(BuildFileConfigFromFindResponse(folder, ResponseOfClass("", "/12345678/a.txt")).localPath,
              Text("L/a.txt"));
    EXPECT_EQ(BuildFileConfigFromFindResponse(folder, ResponseOfClass("", "/abc")).localPath, Text("L"));
    folder.serverRootPath.clear();
    EXPECT_EQ(BuildFileConfigFromFindResponse(folder, ResponseOfClass("", "/abc")).localPath, Text("Labc"));
}

TEST(BuildFileConfigFromFindResponseTest, TheVisibilityIsZeroForHideInAnyLetterCaseAndOneOtherwise) {
    const auto visibilityOf = [](const char* text) {
        DAVPropfindProperties properties;
        properties.visibility = Text(text);
        return FileWith(properties).customProperties.value(Text("visibility"));
    };
    EXPECT_EQ(visibilityOf("Hide"), Text("0"));
    EXPECT_EQ(visibilityOf("hide"), Text("0"));
    EXPECT_EQ(visibilityOf(""), Text("1"));
    EXPECT_EQ(visibilityOf("show"), Text("1"));
    EXPECT_EQ(visibilityOf("hidden"), Text("1"));
    EXPECT_EQ(visibilityOf("HIDE"), Text("0"));
    EXPECT_EQ(visibilityOf("hide "), Text("1"));
    EXPECT_EQ(visibilityOf("0"), Text("1"));
}

TEST(BuildFileConfigFromFindResponseTest, EmptySyncOptionsAreDropped) {
    DAVPropfindProperties properties;
    properties.syncOption = Text("a,,b,");
    EXPECT_EQ(FileWith(properties).getSyncOptionPersistentAcrossMachines(), QStringList() << Text("a") << Text("b"));
    properties.syncOption = Text(" a ;b, ,A");
    EXPECT_EQ(FileWith(properties).getSyncOptionPersistentAcrossMachines(),
              QStringList() << Text(" a ;b") << Text(" ") << Text("A"));
    properties.syncOption = Text(",");
    EXPECT_TRUE(FileWith(properties).getSyncOptionPersistentAcrossMachines().isEmpty());
}

TEST(BuildFileConfigFromFindResponseTest, AContentLengthAboveTwoGibibytesArrivesNegative) {
    DAVPropfindResponse response = ResponseOfClass("drovane.objects.File");
    // 3 GiB in 32 bits.
    response.contentLength = -1073741824;
    EXPECT_EQ(BuildFileConfigFromFindResponse(FolderConfiguration(), response).size, Q_INT64_C(-1073741824));
    response.contentLength = 2147483647;
    EXPECT_EQ(BuildFileConfigFromFindResponse(FolderConfiguration(), response).size, Q_INT64_C(2147483647));
}

TEST(BuildFileConfigFromFindResponseTest, TheAttributeIsOneCharacterWhateverItIs) {
    DAVPropfindResponse response = ResponseOfClass("");
    response.attribute = '\0';
    EXPECT_EQ(BuildFileConfigFromFindResponse(FolderConfiguration(), response).attribute, QString(QChar(0)));
    response.attribute = '\xE9';
    EXPECT_EQ(BuildFileConfigFromFindResponse(FolderConfiguration(), response).attribute, QString(QChar(0xE9)));
}

TEST(BuildFileConfigFromFindResponseTest, TheClassTypeIsNotLookedAt) {
    EXPECT_EQ(BuildFileConfigFromFindResponse(FolderConfiguration(), ResponseOfClass("drovane.objects.Form", "/f"))
                  .serverPath,
              Text("f"));
}

TEST(BuildFileConfigsFromFindResultTest, NoResultGivesAnEmptyVector) {
    FolderConfiguration folder;
    const auto files = BuildFileConfigsFromFindResult(folder, nullptr);
    ASSERT_TRUE(files);
    EXPECT_TRUE(files->isEmpty());
}

TEST(BuildFileConfigsFromFindResultTest, AnAnswerOfFoldersGivesAnEmptyVector) {
    FolderConfiguration folder;
    const auto result = std::make_shared<DAVPropfindResult>();
    result->fileResponses.insert(Text("a"), ResponseOfClass("drovane.objects.Folder"));
    result->collectionResponses.insert(Text("b"), ResponseOfClass("drovane.objects.File"));
    const auto files = BuildFileConfigsFromFindResult(folder, result);
    ASSERT_TRUE(files);
    EXPECT_TRUE(files->isEmpty());
}

TEST(BuildFileConfigsFromFindResultTest, OnlyFilesAreTakenAndInKeyOrder) {
    FolderConfiguration folder;
    const auto result = std::make_shared<DAVPropfindResult>();
    result->fileResponses.insert(Text("c"), ResponseOfClass("drovane.objects.File", "/1"));
    result->fileResponses.insert(Text("a"), ResponseOfClass("DROVANE.OBJECTS.FILE", "/2"));
    result->fileResponses.insert(Text("b"), ResponseOfClass("drovane.objects.Form", "/3"));
    result->fileResponses.insert(Text("d"), ResponseOfClass("", "/4"));
    result->fileResponses.insert(Text("e"), ResponseOfClass("drovane.objects.Project", "/5"));
    const auto files = BuildFileConfigsFromFindResult(folder, result);
    ASSERT_EQ(files->size(), 2);
    EXPECT_EQ(files->at(0).serverPath, Text("2"));
    EXPECT_EQ(files->at(1).serverPath, Text("1"));
}

TEST(BuildFileConfigsFromFindResultTest, OfEntriesOfEveryTypeOnlyFilesAreTaken) {
    FolderConfiguration folder;
    const auto result = std::make_shared<DAVPropfindResult>();
    for (const char* type : {"drovane.objects.File", "drovane.objects.Folder", "drovane.objects.Project",
                             "drovane.objects.Form", "drovane.objects.Strange", ""}) {
        result->fileResponses.insert(Text(type), ResponseOfClass(type, "/file"));
        result->collectionResponses.insert(Text(type), ResponseOfClass(type, "/collection"));
    }
    const auto files = BuildFileConfigsFromFindResult(folder, result);
    ASSERT_EQ(files->size(), 1);
    EXPECT_EQ(files->at(0).serverPath, Text("file"));
    EXPECT_EQ(result->fileResponses.size(), 6);
    EXPECT_EQ(result->collectionResponses.size(), 6);
}

TEST(BuildFileConfigsFromFindResultTest, EveryRecordIsThatOfAFileInTheFolder) {
    FolderConfiguration folder;
    folder.serverId = 42;
    folder.serverRootPath = Text("P");
    folder.localPath = Text("L");
    const auto result = std::make_shared<DAVPropfindResult>();
    result->fileResponses.insert(Text("a"), ResponseOfClass("drovane.objects.File", "/P/a"));
    result->fileResponses.insert(Text("b"), ResponseOfClass("drovane.objects.File", "/P/b"));
    const auto files = BuildFileConfigsFromFindResult(folder, result);
    ASSERT_EQ(files->size(), 2);
    EXPECT_EQ(files->at(0).localPath, Text("L/a"));
    EXPECT_EQ(files->at(1).localPath, Text("L/b"));
    EXPECT_EQ(files->at(1).serverId, 42);
}

TEST(BuildFileConfigsFromFindResultTest, TheSingleResponseIsNotLookedAt) {
    FolderConfiguration folder;
    const auto result = std::make_shared<DAVPropfindResult>();
    result->isSingleResponse = true;
    result->singleResponse = ResponseOfClass("drovane.objects.File");
    EXPECT_TRUE(BuildFileConfigsFromFindResult(folder, result)->isEmpty());
}

TEST(BuildFileConfigsFromFindResultTest, ACopyOfTheMapHeldElsewhereStaysAsItIs) {
    FolderConfiguration folder;
    const auto result = std::make_shared<DAVPropfindResult>();
    result->fileResponses.insert(Text("a"), ResponseOfClass("drovane.objects.File"));
    const QMap<QString, DAVPropfindResponse> copy = result->fileResponses;
    EXPECT_FALSE(copy.isDetached());
    BuildFileConfigsFromFindResult(folder, result);
    EXPECT_TRUE(copy.isDetached());
    EXPECT_EQ(copy.size(), 1);
}

TEST(BuildFileConfigsFromFindResultTest, EveryCallMakesAVectorOfItsOwn) {
    FolderConfiguration folder;
    const auto result = std::make_shared<DAVPropfindResult>();
    result->fileResponses.insert(Text("a"), ResponseOfClass("drovane.objects.File"));
    const auto first = BuildFileConfigsFromFindResult(folder, result);
    const auto second = BuildFileConfigsFromFindResult(folder, result);
    EXPECT_NE(first, second);
    EXPECT_EQ(first->size(), second->size());
}

}  // namespace
