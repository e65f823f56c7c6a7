#include "dvsync/DrovaneRemoteFileManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryFile>
#include <algorithm>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/http/HttpException.h"
#include "tests/dvsync/RemoteManagerTest.h"

namespace sync {
namespace dv {
namespace dvsync {

class DrovaneRemoteFileManagerAccess {
public:
    static std::shared_ptr<http::DAVPropfindResult> ProcessPropfindResult(
        DrovaneRemoteFileManager& manager, std::shared_ptr<http::DAVPropfindRequest> request) {
        return manager._ProcessPropfindResult(std::move(request));
    }
    static bool AnyValueIsMissing(DrovaneRemoteFileManager& manager, const QString& a, const QString& b) {
        return manager._AnyValueIsMissing(a, b);
    }
    static std::vector<const void*> Members(const DrovaneRemoteFileManager& manager) {
        return {&manager.urlBuilder,
                &manager.requestManager,
                &manager.authenticatorFactory,
                &manager.httpFactory,
                &manager.networkAccessManagerFactory,
                &manager.serverId,
                &manager.serverConfiguration,
                &manager.syncConfiguration};
    }
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace {

using sync::config::FileConfiguration;
using sync::config::ServerConfiguration;
using sync::core::SyncException;
using sync::dv::dvsync::DrovaneRemoteFileManager;
using sync::dv::dvsync::DrovaneRemoteFileManagerAccess;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;
using sync::http::HttpException;
using sync::interf::IHttpRequest;
using testing::_;
using testing::ElementsAre;
using testing::Field;
using testing::InSequence;
using testing::NiceMock;
using testing::Throw;
using tests::FolderServerId;
using tests::ServerId;
using tests::Text;

const QDateTime SyncTime = QDateTime::fromMSecsSinceEpoch(1600000000000);
const QDateTime ServerTime = QDateTime::fromMSecsSinceEpoch(1700000000000);

std::shared_ptr<DAVPropfindResult> ResultWithFiles(std::initializer_list<const char*> names) {
    auto result = std::make_shared<DAVPropfindResult>();
    for (const char* name : names) {
        DAVPropfindProperties properties;
        properties.filename = Text(name);
        properties.resourceClassType = Text("drovane.objects.File");
        result->fileResponses.insert(Text(name), DAVPropfindResponse(Text("/folder/") + Text(name), properties));
    }
    return result;
}

class DrovaneRemoteFileManagerTest : public tests::RemoteManagerTest {
protected:
    DrovaneRemoteFileManagerTest() : RemoteManagerTest("folder") { _folder.setLastSyncTime(SyncTime); }

    void AnswerWith(int status, std::shared_ptr<DAVPropfindResult> result = nullptr) {
        _propfind->statusCode = status;
        _propfind->result = std::move(result);
    }

    const std::shared_ptr<NiceMock<tests::MockRequestManager>> _requestManager =
        std::make_shared<NiceMock<tests::MockRequestManager>>();
    DrovaneRemoteFileManager _manager{_urlBuilder, _requestManager, ServerId, nullptr, _httpFactory, nullptr, nullptr};
    std::shared_ptr<QVector<FileConfiguration>> _files;
};

TEST_F(DrovaneRemoteFileManagerTest, TheMetaObjectHasItsNameAndNothingOfItsOwn) {
    const QMetaObject& meta = DrovaneRemoteFileManager::staticMetaObject;
    EXPECT_STREQ(meta.className(), "sync::dv::dvsync::DrovaneRemoteFileManager");
    EXPECT_STREQ(meta.superClass()->className(), "sync::interf::IRemoteFileManager");
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
}

TEST_F(DrovaneRemoteFileManagerTest, TextsCanBeTranslatedInBothForms) {
    EXPECT_EQ(DrovaneRemoteFileManager::tr("text", "comment"), Text("text"));
    EXPECT_EQ(DrovaneRemoteFileManager::tr("text", "comment", 1), Text("text"));
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    EXPECT_EQ(DrovaneRemoteFileManager::trUtf8("text", "comment"), Text("text"));
    EXPECT_EQ(DrovaneRemoteFileManager::trUtf8("text", "comment", 1), Text("text"));
#pragma GCC diagnostic pop
}

TEST_F(DrovaneRemoteFileManagerTest, TheMembersLieInTheirOrder) {
    const std::vector<const void*> members = DrovaneRemoteFileManagerAccess::Members(_manager);
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end(), std::less<>()));
}

TEST_F(DrovaneRemoteFileManagerTest, TheSettingsOfTheServerAreReadOnceAtConstruction) {
    EXPECT_CALL(*_installed.ServerConfigManager(), GetServerConfiguration(ServerId)).Times(1);
    DrovaneRemoteFileManager manager(_urlBuilder, _requestManager, ServerId, nullptr, _httpFactory, nullptr, nullptr);
    AnswerWith(207, ResultWithFiles({}));
    manager.GetNameSortedFilesByFolder(_folder, _files);
    manager.GetFileByName(_folder, Text("a"));
}

TEST_F(DrovaneRemoteFileManagerTest, WithoutAnInstalledConfigurationConstructionFails) {
    sync::factory::ConfigurationFactory::Install(nullptr);
    EXPECT_THROW(
        DrovaneRemoteFileManager(_urlBuilder, _requestManager, ServerId, nullptr, _httpFactory, nullptr, nullptr),
        SyncException);
}

TEST_F(DrovaneRemoteFileManagerTest, CollaboratorsAreKeptForTheManagersLife) {
    auto urlBuilder = std::make_shared<NiceMock<tests::MockUrlBuilder>>();
    const std::weak_ptr<tests::MockUrlBuilder> watched = urlBuilder;
    auto manager = std::make_unique<DrovaneRemoteFileManager>(urlBuilder, _requestManager, ServerId, nullptr,
                                                              _httpFactory, nullptr, nullptr);
    urlBuilder.reset();
    EXPECT_FALSE(watched.expired());
    manager.reset();
    EXPECT_TRUE(watched.expired());
}

TEST_F(DrovaneRemoteFileManagerTest, AListingAsksForTheFoldersChildrenSinceItsLastSync) {
    const InSequence inOrder;
    EXPECT_CALL(*_urlBuilder,
                BuildUrl(Field(&ServerConfiguration::baseUrl, QUrl(Text("http://service.test/"))), Text("folder")));
    EXPECT_CALL(*_httpFactory, CreatePropfindRequest(_url, FolderServerId, 1));
    EXPECT_CALL(*_requestManager, Execute(ElementsAre(_propfind)))
        .WillOnce([this](const QList<std::shared_ptr<IHttpRequest>>&) {
            EXPECT_EQ(_propfind->modifiedSinceTime, SyncTime);
            AnswerWith(207, ResultWithFiles({"b", "a"}));
        });
    EXPECT_EQ(_manager.GetNameSortedFilesByFolder(_folder, _files), 0);
    ASSERT_EQ(_files->size(), 2);
    EXPECT_EQ(_files->at(0).name, Text("a"));
    EXPECT_EQ(_files->at(1).name, Text("b"));
    EXPECT_EQ(_files->at(0).serverId, FolderServerId);
}

TEST_F(DrovaneRemoteFileManagerTest, AListingAnsweredWithoutAResultIsAnEmptyVector) {
    AnswerWith(207);
    EXPECT_EQ(_manager.GetNameSortedFilesByFolder(_folder, _files), 0);
    ASSERT_TRUE(_files);
    EXPECT_TRUE(_files->isEmpty());
}

TEST_F(DrovaneRemoteFileManagerTest, AListingOfAnUnknownFolderReturns404AndTouchesNothing) {
    const auto result = ResultWithFiles({"a"});
    result->serverTime = ServerTime;
    AnswerWith(404, result);
    const auto before = std::make_shared<QVector<FileConfiguration>>();
    _files = before;
    EXPECT_EQ(_manager.GetNameSortedFilesByFolder(_folder, _files), 404);
    EXPECT_EQ(_files, before);
    EXPECT_FALSE(_folder.getLastServerSyncRequestTime().isValid());
}

TEST_F(DrovaneRemoteFileManagerTest, AnUnchangedListingReturns304LeavesTheFilesAndRecordsTheServersTime) {
    const auto result = std::make_shared<DAVPropfindResult>();
    result->serverTime = ServerTime;
    AnswerWith(304, result);
    const auto before = std::make_shared<QVector<FileConfiguration>>();
    _files = before;
    EXPECT_EQ(_manager.GetNameSortedFilesByFolder(_folder, _files), 304);
    EXPECT_EQ(_files, before);
    EXPECT_EQ(_folder.getLastServerSyncRequestTime(), ServerTime);
}

TEST_F(DrovaneRemoteFileManagerTest, AnInvalidServerTimeIsNotRecorded) {
    _folder.setLastServerSyncRequestTime(SyncTime);
    for (const int status : {207, 304}) {
        AnswerWith(status, std::make_shared<DAVPropfindResult>());
        _manager.GetNameSortedFilesByFolder(_folder, _files);
        EXPECT_EQ(_folder.getLastServerSyncRequestTime(), SyncTime) << status;
    }
    AnswerWith(304);
    EXPECT_EQ(_manager.GetNameSortedFilesByFolder(_folder, _files), 304);
    EXPECT_EQ(_folder.getLastServerSyncRequestTime(), SyncTime);
}

class ListingFailureTest : public DrovaneRemoteFileManagerTest, public testing::WithParamInterface<int> {};

TEST_P(ListingFailureTest, ThrowsWithTheUrlInTheMessageOnly) {
    AnswerWith(GetParam(), ResultWithFiles({"a"}));
    try {
        _manager.GetNameSortedFilesByFolder(_folder, _files);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.what(), "GetNameSortedFilesByFolder with url http://service.test/folder failed with error code " +
                                std::to_string(GetParam()));
        EXPECT_EQ(e.StatusCode(), GetParam());
        EXPECT_TRUE(e.Url().isEmpty());
    }
    EXPECT_FALSE(_files);
}

INSTANTIATE_TEST_SUITE_P(Statuses, ListingFailureTest, testing::Values(302, 400, 401, 403, 405, 409, 423, 500, 503));

class ListingAnswerTest : public DrovaneRemoteFileManagerTest, public testing::WithParamInterface<int> {};

TEST_P(ListingAnswerTest, IsReadAsAListing) {
    AnswerWith(GetParam(), ResultWithFiles({"a"}));
    EXPECT_EQ(_manager.GetNameSortedFilesByFolder(_folder, _files), 0);
    EXPECT_EQ(_files->size(), 1);
}

INSTANTIATE_TEST_SUITE_P(Statuses, ListingAnswerTest, testing::Values(0, 200, 204, 207, 301, 303, 307, 399));

TEST_F(DrovaneRemoteFileManagerTest, AUrlThatLooksLikeAPlaceholderStaysAsItIsInTheMessage) {
    *_url = QUrl::fromEncoded("http://service.test/A%1B%250");
    AnswerWith(500);
    const QString expectedUrl = _url->toString();
    ASSERT_TRUE(expectedUrl.contains(Text("%1")));
    try {
        _manager.GetNameSortedFilesByFolder(_folder, _files);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.Message(),
                  Text("GetNameSortedFilesByFolder with url ") + expectedUrl + Text(" failed with error code 500"));
    }
}

TEST_F(DrovaneRemoteFileManagerTest, AUrlWithNonAsciiCharactersSurvivesInTheMessage) {
    *_url = QUrl(Text("http://service.test/Gr\xC3\xB6\xC3\x9F\x65"));
    AnswerWith(500);
    try {
        _manager.GetNameSortedFilesByFolder(_folder, _files);
        FAIL() << "nothing was thrown";
    } catch (const std::exception& e) {
        EXPECT_THAT(e.what(), testing::HasSubstr("/Gr\xC3\xB6\xC3\x9F\x65 failed"));
    }
}

TEST_F(DrovaneRemoteFileManagerTest, WhatACollaboratorThrowsPassesThrough) {
    EXPECT_CALL(*_requestManager, Execute(_)).WillRepeatedly(Throw(SyncException(Text("no answer"))));
    EXPECT_THROW(_manager.GetNameSortedFilesByFolder(_folder, _files), SyncException);
    EXPECT_THROW(_manager.GetFileByName(_folder, Text("a")), SyncException);
}

TEST_F(DrovaneRemoteFileManagerTest, ALookupAsksForTheFileItselfUnconditionally) {
    const InSequence inOrder;
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("folder/a b.txt")));
    EXPECT_CALL(*_httpFactory, CreatePropfindRequest(_url, FolderServerId, 0));
    EXPECT_CALL(*_requestManager, Execute(ElementsAre(_propfind)));
    _manager.GetFileByName(_folder, Text("a b.txt"));
    EXPECT_FALSE(_propfind->modifiedSinceTime.isValid());
}

TEST_F(DrovaneRemoteFileManagerTest, ANameWithASlashIsAppendedAsItStands) {
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("folder/sub/../100%25.txt")));
    _manager.GetFileByName(_folder, Text("sub/../100%25.txt"));
}

TEST_F(DrovaneRemoteFileManagerTest, ALookupWithoutAResultGivesADefaultRecord) {
    AnswerWith(207);
    const FileConfiguration file = _manager.GetFileByName(_folder, Text("a"));
    EXPECT_EQ(file.serverId, -1);
    EXPECT_TRUE(file.name.isEmpty());
}

TEST_F(DrovaneRemoteFileManagerTest, ALookupWithNeitherASingleResponseNorEntriesGivesADefaultRecord) {
    const auto result = std::make_shared<DAVPropfindResult>();
    result->collectionResponses.insert(Text("a"), ResultWithFiles({"a"})->fileResponses.constBegin().value());
    AnswerWith(207, result);
    EXPECT_EQ(_manager.GetFileByName(_folder, Text("a")).serverId, -1);
}

TEST_F(DrovaneRemoteFileManagerTest, ALookupPrefersTheSingleResponseToTheEntries) {
    const auto result = ResultWithFiles({"a"});
    result->isSingleResponse = true;
    result->singleResponse = ResultWithFiles({"single"})->fileResponses.constBegin().value();
    AnswerWith(207, result);
    EXPECT_EQ(_manager.GetFileByName(_folder, Text("a")).name, Text("single"));
}

TEST_F(DrovaneRemoteFileManagerTest, ALookupTakesTheFirstEntryInKeyOrder) {
    AnswerWith(207, ResultWithFiles({"z", "m", "x"}));
    EXPECT_EQ(_manager.GetFileByName(_folder, Text("z")).name, Text("m"));
}

TEST_F(DrovaneRemoteFileManagerTest, ALookupMapsWhateverThePathNamesAsAFile) {
    DAVPropfindProperties properties;
    properties.filename = Text("f");
    properties.resourceClassType = Text("drovane.objects.Folder");
    const auto result = std::make_shared<DAVPropfindResult>();
    result->fileResponses.insert(Text("f"), DAVPropfindResponse(Text("/folder/f/"), properties));
    AnswerWith(207, result);
    EXPECT_EQ(_manager.GetFileByName(_folder, Text("f")).name, Text("f"));
}

class LookupAnswerTest : public DrovaneRemoteFileManagerTest, public testing::WithParamInterface<int> {};

TEST_P(LookupAnswerTest, IsReadAsAnAnswer) {
    AnswerWith(GetParam(), ResultWithFiles({"a"}));
    EXPECT_EQ(_manager.GetFileByName(_folder, Text("a")).name, Text("a"));
}

INSTANTIATE_TEST_SUITE_P(Statuses, LookupAnswerTest, testing::Values(0, 200, 204, 207, 301, 302, 304, 307, 399));

class LookupFailureTest : public DrovaneRemoteFileManagerTest, public testing::WithParamInterface<int> {};

TEST_P(LookupFailureTest, ThrowsWithTheUrlInTheMessageOnly) {
    AnswerWith(GetParam(), ResultWithFiles({"a"}));
    try {
        _manager.GetFileByName(_folder, Text("a"));
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.what(), "GetFileByName with url http://service.test/folder failed with error code " +
                                std::to_string(GetParam()));
        EXPECT_EQ(e.StatusCode(), GetParam());
        EXPECT_TRUE(e.Url().isEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Statuses, LookupFailureTest, testing::Values(400, 401, 403, 404, 409, 423, 500, 503));

TEST_F(DrovaneRemoteFileManagerTest, ProcessingAGoodAnswerGivesItsResult) {
    for (const int status : {0, 200, 207, 304, 399}) {
        AnswerWith(status, ResultWithFiles({}));
        EXPECT_EQ(DrovaneRemoteFileManagerAccess::ProcessPropfindResult(_manager, _propfind), _propfind->result);
    }
    AnswerWith(207);
    EXPECT_FALSE(DrovaneRemoteFileManagerAccess::ProcessPropfindResult(_manager, _propfind));
}

TEST_F(DrovaneRemoteFileManagerTest, ProcessingABadAnswerThrowsWithTheRequestsUrl) {
    _propfind->url = QUrl(Text("http://service.test/requested"));
    for (const int status : {302, 400, 404, 500}) {
        AnswerWith(status);
        try {
            DrovaneRemoteFileManagerAccess::ProcessPropfindResult(_manager, _propfind);
            FAIL() << "nothing was thrown";
        } catch (const HttpException& e) {
            EXPECT_EQ(e.what(), "PROPFIND with url http://service.test/requested failed with error code " +
                                    std::to_string(status));
            EXPECT_EQ(e.StatusCode(), status);
            EXPECT_EQ(e.Url(), _propfind->url);
        }
    }
}

TEST_F(DrovaneRemoteFileManagerTest, AValueIsMissingWhenEitherIsEmpty) {
    EXPECT_TRUE(DrovaneRemoteFileManagerAccess::AnyValueIsMissing(_manager, Text(""), Text("b")));
    EXPECT_TRUE(DrovaneRemoteFileManagerAccess::AnyValueIsMissing(_manager, Text("a"), Text("")));
    EXPECT_FALSE(DrovaneRemoteFileManagerAccess::AnyValueIsMissing(_manager, Text("a"), Text(" ")));
}

class ShouldDownloadFileTest : public DrovaneRemoteFileManagerTest {
protected:
    static FileConfiguration FileOfVersion(const char* version, qint64 size = 10) {
        FileConfiguration file;
        file.customProperties.insert(Text("version"), Text(version));
        file.size = size;
        return file;
    }

    bool ShouldDownload(const FileConfiguration& remote, FileConfiguration local) {
        return _manager.ShouldDownloadFile(remote, local);
    }
};

TEST_F(ShouldDownloadFileTest, VersionsAreComparedAsNumbers) {
    EXPECT_TRUE(ShouldDownload(FileOfVersion("10"), FileOfVersion("7")));
    EXPECT_FALSE(ShouldDownload(FileOfVersion("7"), FileOfVersion("10")));
    EXPECT_FALSE(ShouldDownload(FileOfVersion("10"), FileOfVersion("10")));
}

TEST_F(ShouldDownloadFileTest, AVersionThatIsNoNumberReadsAsZero) {
    EXPECT_FALSE(ShouldDownload(FileOfVersion("abc"), FileOfVersion("1")));
    EXPECT_TRUE(ShouldDownload(FileOfVersion("1"), FileOfVersion("abc")));
    EXPECT_FALSE(ShouldDownload(FileOfVersion("abc"), FileOfVersion("xyz")));
    EXPECT_FALSE(ShouldDownload(FileOfVersion("99999999999"), FileOfVersion("1")));
}

TEST_F(ShouldDownloadFileTest, AMissingVersionOnEitherSideDownloads) {
    EXPECT_TRUE(ShouldDownload(FileOfVersion(""), FileOfVersion("1")));
    EXPECT_TRUE(ShouldDownload(FileOfVersion("1"), FileOfVersion("")));
    EXPECT_TRUE(ShouldDownload(FileConfiguration(), FileConfiguration()));
}

TEST_F(ShouldDownloadFileTest, ALocalRecordWithoutAVersionGainsAnEmptyOne) {
    FileConfiguration local;
    const FileConfiguration remote;
    EXPECT_TRUE(_manager.ShouldDownloadFile(remote, local));
    ASSERT_TRUE(local.customProperties.contains(Text("version")));
    EXPECT_TRUE(local.customProperties.value(Text("version")).isEmpty());
    EXPECT_FALSE(remote.customProperties.contains(Text("version")));
}

TEST_F(ShouldDownloadFileTest, DifferentSizesDownload) {
    EXPECT_TRUE(ShouldDownload(FileOfVersion("3", 10), FileOfVersion("3", 11)));
    EXPECT_TRUE(ShouldDownload(FileOfVersion("2", 10), FileOfVersion("3", 11)));
    EXPECT_FALSE(ShouldDownload(FileOfVersion("2", 10), FileOfVersion("3", 10)));
}

class FileOnDiskModeTest : public ShouldDownloadFileTest {
protected:
    FileOnDiskModeTest() {
        EXPECT_TRUE(_file.open());
        _local.syncMode = 2;
        _local.localPath = _file.fileName();
        _fileTime = QFileInfo(_file).lastModified();
    }

    QTemporaryFile _file;
    FileConfiguration _local;
    QDateTime _fileTime;
};

TEST_F(FileOnDiskModeTest, AFileThatChangedAfterItsRecordIsKept) {
    _local.lastModifiedDate = _fileTime.addSecs(-1);
    EXPECT_FALSE(ShouldDownload(FileOfVersion("9"), _local));
}

TEST_F(FileOnDiskModeTest, AFileThatIsAsOldAsItsRecordIsFetched) {
    _local.lastModifiedDate = _fileTime;
    EXPECT_TRUE(ShouldDownload(FileOfVersion("9"), _local));
    _local.lastModifiedDate = _fileTime.addSecs(1);
    EXPECT_TRUE(ShouldDownload(FileOfVersion("9"), _local));
}

TEST_F(FileOnDiskModeTest, ARecordWithoutADateLiesBeforeAnyFileTime) {
    _local.lastModifiedDate = QDateTime();
    EXPECT_FALSE(ShouldDownload(FileOfVersion("9"), _local));
}

TEST_F(FileOnDiskModeTest, AMissingFileWasNotChangedAfterItsRecord) {
    _local.localPath = _file.fileName() + Text(".missing");
    _local.lastModifiedDate = QDateTime();
    EXPECT_TRUE(ShouldDownload(FileOfVersion("9"), _local));
    _local.lastModifiedDate = _fileTime;
    EXPECT_TRUE(ShouldDownload(FileOfVersion("9"), _local));
}

TEST_F(FileOnDiskModeTest, OnlyTheStatesTwoAndFourAreKept) {
    _local.lastModifiedDate = _fileTime;
    for (int state = -1; state <= 6; ++state) {
        _local.stateCode = state;
        EXPECT_EQ(ShouldDownload(FileOfVersion("9"), _local), state != 2 && state != 4) << state;
    }
}

TEST_F(FileOnDiskModeTest, VersionsAreNotComparedAndNothingIsWritten) {
    _local.lastModifiedDate = _fileTime;
    _local.customProperties.clear();
    EXPECT_TRUE(_manager.ShouldDownloadFile(FileConfiguration(), _local));
    EXPECT_FALSE(_local.customProperties.contains(Text("version")));
    _local.customProperties.insert(Text("version"), Text("9"));
    EXPECT_TRUE(_manager.ShouldDownloadFile(FileOfVersion("1"), _local));
    _local.stateCode = 2;
    EXPECT_FALSE(_manager.ShouldDownloadFile(FileOfVersion("99"), _local));
}

}  // namespace
