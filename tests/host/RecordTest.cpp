#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMetaObject>
#include <initializer_list>
#include <string>
#include <utility>

#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"
#include "host/configuration/ServerConfiguration.h"
#include "host/core/SyncResults.h"
#include "host/http/DAVPropfindResult.h"
#include "tests/fakes/Layout.h"
#include "tests/fakes/Records.h"
#include "tests/fakes/Text.h"

namespace {

using sync::config::FileConfiguration;
using sync::config::FileLink;
using sync::config::FolderConfiguration;
using sync::config::ServerConfiguration;
using sync::core::SyncResults;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;
using sync::http::DAVResponse;
using testing::ElementsAre;
using tests::FieldsOf;
using tests::FullFile;
using tests::FullFolder;
using tests::OffsetsIn;
using tests::Text;

// The fields of records lie exactly here in what hosts were built with.

TEST(FolderConfigurationTest, EveryFieldLiesWhereHostsLookForIt) {
    const FolderConfiguration folder;
    EXPECT_THAT(
        OffsetsIn(folder,
                  {&folder.serverKey, &folder.serverId, &folder.name, &folder.resourceId, &folder.serverPath,
                   &folder.companionServerPath, &folder.localPath, &folder.serverRootPath, &folder.lastModifiedDate,
                   &folder.ownerId, &folder.accessMask, &folder.getLastSyncTime(),
                   &folder.getLastServerSyncRequestTime(), &folder.getPrivileges(), &folder.getServerFolderId()}),
        ElementsAre(16, 20, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 104, 112, 120));
    EXPECT_EQ(sizeof(FolderConfiguration), 128U);
    EXPECT_EQ(tests::SlotCountOf<FolderConfiguration>(), tests::SlotCountOf<QObject>());
}

TEST(FolderConfigurationTest, ADefaultRecordHoldsNothing) {
    const FolderConfiguration folder;
    for (const std::string& field : FieldsOf(folder)) {
        EXPECT_THAT(field, testing::AnyOf(testing::EndsWith(" = ''"), testing::EndsWith(" = '0'"),
                                          testing::EndsWith(" = 'none'")));
    }
}

TEST(FolderConfigurationTest, ACopyHasEveryFieldAndIsIndependent) {
    FolderConfiguration folder = FullFolder();
    const FolderConfiguration copy(folder);
    FolderConfiguration assigned;
    assigned = folder;
    folder = FolderConfiguration();
    EXPECT_EQ(FieldsOf(copy), FieldsOf(FullFolder()));
    EXPECT_EQ(FieldsOf(assigned), FieldsOf(FullFolder()));
    EXPECT_EQ(FieldsOf(folder), FieldsOf(FolderConfiguration()));
    EXPECT_EQ(copy.getServerPath(), copy.serverPath);
}

TEST(FolderConfigurationTest, WhatIsSetReplacesWhatWasThere) {
    FolderConfiguration folder = FullFolder();
    folder.setLastSyncTime(tests::TimeOf(1));
    folder.setLastServerSyncRequestTime(tests::TimeOf(2));
    folder.setPrivileges(Text("p"));
    folder.setServerFolderId(Text("i"));
    EXPECT_EQ(folder.getLastSyncTime(), tests::TimeOf(1));
    EXPECT_EQ(folder.getLastServerSyncRequestTime(), tests::TimeOf(2));
    EXPECT_EQ(folder.getPrivileges(), Text("p"));
    EXPECT_EQ(folder.getServerFolderId(), Text("i"));
}

TEST(FolderConfigurationTest, HasAMetaObjectOfItsOwn) {
    EXPECT_STREQ(FolderConfiguration::staticMetaObject.className(), "sync::config::FolderConfiguration");
    EXPECT_STREQ(FolderConfiguration::staticMetaObject.superClass()->className(), "QObject");
}

TEST(FileConfigurationTest, EveryFieldLiesWhereHostsLookForIt) {
    const FileConfiguration file;
    EXPECT_THAT(OffsetsIn(file, {&file.serverId,
                                 &file.name,
                                 &file.localPath,
                                 &file.serverPath,
                                 &file.attribute,
                                 &file.md5Checksum,
                                 &file.createdDate,
                                 &file.lastModifiedDate,
                                 &file.size,
                                 &file.stateCode,
                                 &file.customProperties,
                                 &file.ownerId,
                                 &file.ownerAttribute,
                                 &file.itemId,
                                 &file.versionId,
                                 &file.linksExtractedAtTime,
                                 &file.syncMode,
                                 &file.links,
                                 &file.getPrivileges(),
                                 &file.getSyncOptionPersistentAcrossMachines()}),
                ElementsAre(0, 8, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 104, 112, 120, 128, 136, 144, 152));
    EXPECT_EQ(sizeof(FileConfiguration), 160U);
}

TEST(FileConfigurationTest, ADefaultRecordHoldsNothingAndNamesNoServer) {
    FileConfiguration file;
    EXPECT_EQ(file.serverId, -1);
    file.serverId = 0;
    for (const std::string& field : FieldsOf(file)) {
        EXPECT_THAT(field, testing::AnyOf(testing::EndsWith(" = ''"), testing::EndsWith(" = '0'"),
                                          testing::EndsWith(" = 'none'")));
    }
}

TEST(FileConfigurationTest, ACopyHasEveryFieldAndIsIndependent) {
    FileConfiguration file = FullFile();
    const FileConfiguration copy(file);
    FileConfiguration assigned;
    assigned = file;
    file.customProperties.insert(Text("version"), Text("changed"));
    file.links.begin()->path = Text("changed");
    file.name = Text("changed");
    EXPECT_EQ(FieldsOf(copy), FieldsOf(FullFile()));
    EXPECT_EQ(FieldsOf(assigned), FieldsOf(FullFile()));
}

TEST(FileConfigurationTest, WhatIsMovedHasEveryField) {
    FileConfiguration file = FullFile();
    FileConfiguration moved(std::move(file));
    EXPECT_EQ(FieldsOf(moved), FieldsOf(FullFile()));
    FileConfiguration assigned;
    assigned = std::move(moved);
    EXPECT_EQ(FieldsOf(assigned), FieldsOf(FullFile()));
}

TEST(FileConfigurationTest, WhatIsSetReplacesWhatWasThere) {
    FileConfiguration file = FullFile();
    file.setPrivileges(Text("p"));
    file.setSyncOptionPersistentAcrossMachines(QStringList() << Text("a") << Text("b"));
    EXPECT_EQ(file.getPrivileges(), Text("p"));
    EXPECT_EQ(file.getSyncOptionPersistentAcrossMachines(), QStringList() << Text("a") << Text("b"));
}

TEST(FileLinkTest, ThePathLiesBeforeTheTarget) {
    const FileLink link;
    EXPECT_THAT(OffsetsIn(link, {&link.path, &link.targetId}), ElementsAre(0, 8));
    EXPECT_EQ(sizeof(FileLink), 16U);
}

TEST(FileLinkTest, ACopyHasBothFields) {
    const FileLink link = tests::LinkTo("path", "target");
    const FileLink copy(link);
    FileLink assigned;
    EXPECT_TRUE(assigned.path.isEmpty());
    EXPECT_TRUE(assigned.targetId.isEmpty());
    assigned = link;
    for (const FileLink* each : std::initializer_list<const FileLink*>{&copy, &assigned}) {
        EXPECT_EQ(each->path, Text("path"));
        EXPECT_EQ(each->targetId, Text("target"));
    }
}

TEST(ServerConfigurationTest, ACopyHasTheUrlAndADefaultOneNamesNoServer) {
    ServerConfiguration server;
    EXPECT_TRUE(server.baseUrl.isEmpty());
    server.baseUrl = QUrl(Text("http://service.test/"));
    const ServerConfiguration copy(server);
    ServerConfiguration assigned;
    assigned = server;
    EXPECT_EQ(copy.baseUrl, server.baseUrl);
    EXPECT_EQ(assigned.baseUrl, server.baseUrl);
    EXPECT_THAT(OffsetsIn(server, {&server.baseUrl}), ElementsAre(0));
    EXPECT_EQ(sizeof(ServerConfiguration), 8U);
}

TEST(SyncResultsTest, KeepsItsTypeAndItsSixteenCounters) {
    const SyncResults results(SyncResults::FolderMoved, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    EXPECT_EQ(results.resultType, SyncResults::FolderMoved);
    const int* const counters = &results.localFilesCreated;
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(counters[i], i + 1);
    }
    EXPECT_EQ(&results.remoteFoldersMoved, counters + 15);
    EXPECT_THAT(OffsetsIn(results, {&results.resultType, counters}), ElementsAre(0, 4));
    EXPECT_EQ(sizeof(SyncResults), 68U);
}

TEST(SyncResultsTest, EveryCounterHasTheNameOfItsPlace) {
    const SyncResults results(SyncResults::FolderMoved, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    EXPECT_EQ(results.localFilesCreated, 1);
    EXPECT_EQ(results.localFilesUpdated, 2);
    EXPECT_EQ(results.localFilesDeleted, 3);
    EXPECT_EQ(results.localFilesMoved, 4);
    EXPECT_EQ(results.localFoldersCreated, 5);
    EXPECT_EQ(results.localFoldersUpdated, 6);
    EXPECT_EQ(results.localFoldersDeleted, 7);
    EXPECT_EQ(results.localFoldersMoved, 8);
    EXPECT_EQ(results.remoteFilesCreated, 9);
    EXPECT_EQ(results.remoteFilesUpdated, 10);
    EXPECT_EQ(results.remoteFilesDeleted, 11);
    EXPECT_EQ(results.remoteFilesMoved, 12);
    EXPECT_EQ(results.remoteFoldersCreated, 13);
    EXPECT_EQ(results.remoteFoldersUpdated, 14);
    EXPECT_EQ(results.remoteFoldersDeleted, 15);
    EXPECT_EQ(results.remoteFoldersMoved, 16);
}

TEST(SyncResultsTest, TheResultTypesOfCreationDeletionAndMoveAreFixed) {
    EXPECT_EQ(static_cast<int>(SyncResults::FolderCreated), 0);
    EXPECT_EQ(static_cast<int>(SyncResults::FolderDeleted), 2);
    EXPECT_EQ(static_cast<int>(SyncResults::FolderMoved), 3);
}

TEST(DAVPropfindResponseTest, ACopyHasTheHrefThePropertiesAndThePublicValues) {
    DAVPropfindProperties properties;
    properties.filename = Text("a%20b");
    properties.resourceClassType = Text("class");
    properties.versionId = Text("v");
    properties.itemId = Text("i");
    properties.ownerId = Text("o");
    properties.privileges = Text("p");
    properties.visibility = Text("hide");
    properties.checkSumMD5 = Text("md5");
    properties.syncOption = Text("x,y");
    properties.createdDate = QDateTime::fromMSecsSinceEpoch(1000);
    properties.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(2000);
    properties.linksExtractedAtFileTime = QDateTime::fromMSecsSinceEpoch(3000);
    DAVPropfindResponse response(Text("/a%20b"), properties);
    response.contentLength = 1;
    response.versionNumber = 2;
    response.resourceId = 3;
    response.parentResourceId = 4;
    response.attribute = 'q';

    const DAVPropfindResponse copy(response);
    DAVPropfindResponse assigned;
    assigned = response;
    for (const DAVPropfindResponse* each : std::initializer_list<const DAVPropfindResponse*>{&copy, &assigned}) {
        EXPECT_EQ(each->getHref(), Text("/a%20b"));
        EXPECT_EQ(each->getFilename(), Text("a%20b"));
        EXPECT_EQ(each->getResourceClassType(), Text("class"));
        EXPECT_EQ(each->getVersionId(), Text("v"));
        EXPECT_EQ(each->getItemId(), Text("i"));
        EXPECT_EQ(each->getOwnerId(), Text("o"));
        EXPECT_EQ(each->getPrivileges(), Text("p"));
        EXPECT_EQ(each->getVisibility(), Text("hide"));
        EXPECT_EQ(each->getCheckSumMD5(), Text("md5"));
        EXPECT_EQ(each->getSyncOption(), Text("x,y"));
        EXPECT_EQ(each->getCreatedDate(), QDateTime::fromMSecsSinceEpoch(1000));
        EXPECT_EQ(each->getLastModifiedDate(), QDateTime::fromMSecsSinceEpoch(2000));
        EXPECT_EQ(each->getLinksExtractedAtFileTime(), QDateTime::fromMSecsSinceEpoch(3000));
        EXPECT_EQ(each->contentLength, 1);
        EXPECT_EQ(each->versionNumber, 2);
        EXPECT_EQ(each->resourceId, 3);
        EXPECT_EQ(each->parentResourceId, 4);
        EXPECT_EQ(each->attribute, 'q');
    }
}

TEST(DAVPropfindResponseTest, EveryFieldLiesWhereHostsLookForIt) {
    const DAVPropfindResponse response;
    EXPECT_THAT(OffsetsIn(response,
                          {&response.getHref(), &response.contentLength, &response.versionNumber, &response.resourceId,
                           &response.parentResourceId, &response.attribute, &response.getFilename(),
                           &response.getResourceClassType(), &response.getVersionId(), &response.getItemId(),
                           &response.getOwnerId(), &response.getPrivileges(), &response.getVisibility(),
                           &response.getCheckSumMD5(), &response.getSyncOption(), &response.getCreatedDate(),
                           &response.getLastModifiedDate(), &response.getLinksExtractedAtFileTime()}),
                ElementsAre(16, 24, 28, 32, 36, 40, 48, 56, 64, 72, 80, 88, 96, 104, 112, 120, 128, 136));
    EXPECT_EQ(sizeof(DAVPropfindResponse), 144U);
    EXPECT_EQ(sizeof(DAVResponse), 24U);
    EXPECT_EQ(tests::SlotCountOf<DAVPropfindResponse>(), tests::SlotCountOf<QObject>());
}

TEST(DAVPropfindResponseTest, IsMadeEmpty) {
    const DAVPropfindResponse response;
    EXPECT_TRUE(response.getHref().isEmpty());
    EXPECT_EQ(response.contentLength, 0);
    EXPECT_EQ(response.versionNumber, 0);
    EXPECT_EQ(response.resourceId, 0);
    EXPECT_EQ(response.parentResourceId, 0);
    EXPECT_EQ(response.attribute, '\0');
}

TEST(DAVPropfindResponseTest, DescribingItReplacesTheHrefAndTheProperties) {
    DAVPropfindProperties properties;
    properties.filename = Text("a");
    DAVPropfindResponse response;
    response.contentLength = 7;
    response.Describe(Text("/a"), properties);
    EXPECT_EQ(response.getHref(), Text("/a"));
    EXPECT_EQ(response.getFilename(), Text("a"));
    EXPECT_EQ(response.contentLength, 7);
}

TEST(DAVPropfindResultTest, EveryFieldLiesWhereHostsLookForIt) {
    const DAVPropfindResult result;
    EXPECT_THAT(OffsetsIn(result, {&result.collectionResponses, &result.fileResponses, &result.isSingleResponse,
                                   &result.singleResponse, &result.serverTime}),
                ElementsAre(0, 8, 16, 24, 168));
    EXPECT_EQ(sizeof(DAVPropfindResult), 176U);
}

TEST(DAVPropfindResponseTest, HasAMetaObjectOfItsOwn) {
    EXPECT_STREQ(DAVPropfindResponse::staticMetaObject.className(), "sync::http::DAVPropfindResponse");
    EXPECT_STREQ(DAVPropfindResponse::staticMetaObject.superClass()->className(), "sync::http::DAVResponse");
}

TEST(DAVPropfindResultTest, IsMadeEmpty) {
    const DAVPropfindResult result;
    EXPECT_TRUE(result.collectionResponses.isEmpty());
    EXPECT_TRUE(result.fileResponses.isEmpty());
    EXPECT_FALSE(result.isSingleResponse);
    EXPECT_FALSE(result.serverTime.isValid());
}

}  // namespace
