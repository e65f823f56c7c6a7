#include <gtest/gtest.h>

#include <QMetaObject>
#include <functional>
#include <initializer_list>
#include <vector>

#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"
#include "host/configuration/ServerConfiguration.h"
#include "host/core/SyncResults.h"
#include "host/http/DAVPropfindResult.h"
#include "tests/fakes/Text.h"

namespace {

using sync::config::FileConfiguration;
using sync::config::FileLink;
using sync::config::FolderConfiguration;
using sync::core::SyncResults;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;
using tests::Text;

testing::AssertionResult LieInThisOrder(const std::vector<const void*>& addresses) {
    for (size_t i = 1; i < addresses.size(); ++i) {
        if (!std::less<>()(addresses[i - 1], addresses[i])) {
            return testing::AssertionFailure() << "field " << i << " does not lie behind the one before it";
        }
    }
    return testing::AssertionSuccess();
}

TEST(FolderConfigurationTest, FieldsLieInTheContractsOrder) {
    const FolderConfiguration folder;
    EXPECT_TRUE(
        LieInThisOrder({&folder.serverKey, &folder.serverId, &folder.name, &folder.resourceId, &folder.serverPath,
                        &folder.localPath, &folder.serverRootPath, &folder.lastModifiedDate, &folder.ownerId}));
}

TEST(FolderConfigurationTest, ACopyHasEveryFieldAndIsIndependent) {
    FolderConfiguration folder;
    folder.serverKey = 1;
    folder.serverId = 2;
    folder.name = Text("name");
    folder.resourceId = Text("17");
    folder.serverPath = Text("Projects/A");
    folder.companionServerPath = Text("companion");
    folder.localPath = Text("local");
    folder.serverRootPath = Text("Projects");
    folder.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(1000);
    folder.ownerId = Text("owner");
    folder.accessMask = 31;
    folder.setLastSyncTime(QDateTime::fromMSecsSinceEpoch(2000));
    folder.setLastServerSyncRequestTime(QDateTime::fromMSecsSinceEpoch(3000));
    folder.setPrivileges(Text("rw"));
    folder.setServerFolderId(Text("id"));

    const FolderConfiguration copy(folder);
    FolderConfiguration assigned;
    assigned = folder;
    folder = FolderConfiguration();

    for (const FolderConfiguration* each : std::initializer_list<const FolderConfiguration*>{&copy, &assigned}) {
        EXPECT_EQ(each->serverKey, 1);
        EXPECT_EQ(each->serverId, 2);
        EXPECT_EQ(each->name, Text("name"));
        EXPECT_EQ(each->resourceId, Text("17"));
        EXPECT_EQ(each->getServerPath(), Text("Projects/A"));
        EXPECT_EQ(each->companionServerPath, Text("companion"));
        EXPECT_EQ(each->localPath, Text("local"));
        EXPECT_EQ(each->serverRootPath, Text("Projects"));
        EXPECT_EQ(each->lastModifiedDate, QDateTime::fromMSecsSinceEpoch(1000));
        EXPECT_EQ(each->ownerId, Text("owner"));
        EXPECT_EQ(each->accessMask, 31);
        EXPECT_EQ(each->getLastSyncTime(), QDateTime::fromMSecsSinceEpoch(2000));
        EXPECT_EQ(each->getLastServerSyncRequestTime(), QDateTime::fromMSecsSinceEpoch(3000));
        EXPECT_EQ(each->getPrivileges(), Text("rw"));
        EXPECT_EQ(each->getServerFolderId(), Text("id"));
    }
    EXPECT_TRUE(folder.serverPath.isEmpty());
    EXPECT_FALSE(folder.getLastSyncTime().isValid());
}

TEST(FolderConfigurationTest, HasAMetaObjectOfItsOwn) {
    EXPECT_STREQ(FolderConfiguration::staticMetaObject.className(), "sync::config::FolderConfiguration");
    EXPECT_STREQ(FolderConfiguration::staticMetaObject.superClass()->className(), "QObject");
}

TEST(FileConfigurationTest, FieldsLieInTheContractsOrder) {
    const FileConfiguration file;
    EXPECT_TRUE(LieInThisOrder({&file.serverId, &file.name, &file.localPath, &file.serverPath, &file.attribute,
                                &file.md5Checksum, &file.createdDate, &file.lastModifiedDate, &file.size,
                                &file.stateCode, &file.customProperties, &file.ownerId, &file.ownerAttribute,
                                &file.itemId, &file.versionId, &file.linksExtractedAtTime, &file.syncMode}));
}

TEST(FileConfigurationTest, ADefaultRecordHoldsNothing) {
    const FileConfiguration file;
    EXPECT_EQ(file.serverId, -1);
    EXPECT_TRUE(file.name.isEmpty());
    EXPECT_TRUE(file.localPath.isEmpty());
    EXPECT_TRUE(file.serverPath.isEmpty());
    EXPECT_TRUE(file.customProperties.isEmpty());
    EXPECT_EQ(file.size, 0);
    EXPECT_FALSE(file.lastModifiedDate.isValid());
    EXPECT_TRUE(file.getSyncOptionPersistentAcrossMachines().isEmpty());
}

TEST(FileConfigurationTest, ACopyHasEveryFieldAndIsIndependent) {
    FileConfiguration file;
    file.name = Text("a.txt");
    file.size = Q_INT64_C(5000000000);
    file.customProperties.insert(Text("version"), Text("7"));
    file.setPrivileges(Text("rw"));
    file.setSyncOptionPersistentAcrossMachines(QStringList(Text("x")));
    FileLink link;
    link.path = Text("../x.dwg");
    file.links.append(link);

    const FileConfiguration copy(file);
    file.customProperties.insert(Text("version"), Text("8"));
    file.links.first().path = Text("changed");

    EXPECT_EQ(copy.name, Text("a.txt"));
    EXPECT_EQ(copy.size, Q_INT64_C(5000000000));
    EXPECT_EQ(copy.customProperties.value(Text("version")), Text("7"));
    EXPECT_EQ(copy.getPrivileges(), Text("rw"));
    EXPECT_EQ(copy.getSyncOptionPersistentAcrossMachines(), QStringList(Text("x")));
    EXPECT_EQ(copy.links.first().path, Text("../x.dwg"));
}

TEST(SyncResultsTest, KeepsItsTypeAndItsSixteenCounters) {
    const SyncResults results(SyncResults::FolderMoved, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    EXPECT_EQ(results.resultType, SyncResults::FolderMoved);
    const int* const counters = &results.localFilesCreated;
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(counters[i], i + 1);
    }
    EXPECT_EQ(&results.remoteFoldersMoved, counters + 15);
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
