#include "dvsync/DrovaneCustomFileConfigUpdater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QEvent>
#include <QTemporaryFile>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "dvsync/ResourceMapping.h"
#include "host/http/HttpException.h"
#include "tests/dvsync/LogRecorder.h"
#include "tests/fakes/Contract.h"
#include "tests/fakes/InstalledConfiguration.h"
#include "tests/fakes/Layout.h"
#include "tests/fakes/Records.h"
#include "tests/fakes/Text.h"

namespace sync {
namespace dv {
namespace dvsync {

class DrovaneCustomFileConfigUpdaterAccess {
public:
    static std::vector<const void*> Members(const DrovaneCustomFileConfigUpdater& updater) {
        return {&updater.remoteFileManagerFactory, &updater.fileConfigManager};
    }
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::core::SyncException;
using sync::dv::dvsync::DrovaneCustomFileConfigUpdater;
using sync::dv::dvsync::DrovaneCustomFileConfigUpdaterAccess;
using testing::_;
using testing::ElementsAre;
using testing::InSequence;
using testing::NiceMock;
using testing::Return;
using testing::Throw;
using tests::FieldsOf;
using tests::LinkTo;
using tests::Text;

const int ServerKey = 5;
const int UpdatedServerId = 23;

// What starts with a slash is an absolute path of this system.
QString Absolute(const char* path) {
    return *path == '/' ? QDir::rootPath() + Text(path + 1) : Text(path);
}

FileConfiguration RecordWithItemId(const char* itemId) {
    FileConfiguration record;
    record.itemId = Text(itemId);
    return record;
}

/// The updater on fakes: the service knows the file as `_remote`, and is asked for it in the folder `_asked`.
class DrovaneCustomFileConfigUpdaterTest : public testing::Test {
protected:
    /// Differs from FullFile() in every field, and has values there.
    static FileConfiguration OtherFile() {
        FileConfiguration file;
        file.serverId = 81;
        file.name = Text("other.dwg");
        file.localPath = Text("/other/other.dwg");
        file.serverPath = Text("other/other.dwg");
        file.attribute = Text("o");
        file.md5Checksum = Text("other md5");
        file.createdDate = tests::TimeOf(1300000001001);
        file.lastModifiedDate = tests::TimeOf(1300000002002);
        file.size = 82;
        file.stateCode = 83;
        file.customProperties.insert(Text("version"), Text("87"));
        file.customProperties.insert(Text("versionId"), Text("other version id property"));
        file.customProperties.insert(Text("resourceId"), Text("84"));
        file.customProperties.insert(Text("visibility"), Text("0"));
        file.customProperties.insert(Text("other"), Text("another other property"));
        file.ownerId = Text("other owner");
        file.ownerAttribute = 85;
        file.itemId = Text("other item");
        file.versionId = Text("other version id");
        file.linksExtractedAtTime = tests::TimeOf(1300000003003);
        file.syncMode = 86;
        file.links.append(LinkTo("/other/known.dwg", "other target"));
        file.setPrivileges(Text("other privileges"));
        file.setSyncOptionPersistentAcrossMachines(QStringList() << Text("other option"));
        return file;
    }

    DrovaneCustomFileConfigUpdaterTest() {
        ON_CALL(*_managerFactory, CreateRemoteFileManager(_)).WillByDefault(Return(_manager));
        ON_CALL(*_manager, GetFileByName(_, _))
            .WillByDefault([this](const FolderConfiguration& folder, const QString&) {
                _asked = folder;
                return _remote;
            });
        _folder.serverKey = ServerKey;
        _folder.serverId = UpdatedServerId;
        _folder.serverPath = Text("Projects/A");
        _folder.companionServerPath = Text("companion");
        _folder.localPath = Absolute("/w/A");
        _file.name = Text("f.dwg");
        _file.serverPath = Text("Projects/A/f.dwg");
        _file.localPath = Absolute("/w/A/f.dwg");
        _remote.name = Text("f.dwg");
    }

    void Upload(const QFileInfo& uploaded = QFileInfo()) {
        _updater.UpdateCustomFileConfigAfterUpload(_folder, _file, uploaded);
    }

    /// The server path at which a file is looked up.
    QString AskedServerPath(const char* folderPath, const char* filePath) {
        _folder.serverPath = Text(folderPath);
        _file.serverPath = Text(filePath);
        Upload();
        return _asked.serverPath;
    }

    QString AskedLocalPath(const char* folderPath, const char* filePath) {
        _folder.localPath = Text(folderPath);
        _file.localPath = Text(filePath);
        Upload();
        return _asked.localPath;
    }

    /// The version of the record after the upload of a file whose version the service names `remoteVersion`.
    QString VersionAfterUpload(const char* remoteVersion) {
        _remote.customProperties.insert(Text("version"), Text(remoteVersion));
        Upload();
        return _file.customProperties.value(Text("version"));
    }

    void ExpectLookupOf(const char* localPath, const char* itemId = "found") {
        EXPECT_CALL(*_installed.FileConfigManager(), GetFileConfiguration(Absolute(localPath), ServerKey))
            .WillOnce(Return(RecordWithItemId(itemId)));
    }

    const tests::InstalledConfiguration _installed;
    const std::shared_ptr<NiceMock<tests::MockRemoteFileManager>> _manager =
        std::make_shared<NiceMock<tests::MockRemoteFileManager>>();
    const std::shared_ptr<NiceMock<tests::MockRemoteFileManagerFactory>> _managerFactory =
        std::make_shared<NiceMock<tests::MockRemoteFileManagerFactory>>();
    DrovaneCustomFileConfigUpdater _updater{_managerFactory};
    FolderConfiguration _folder;
    FolderConfiguration _asked;
    FileConfiguration _file;
    FileConfiguration _remote;
};

// --- The class

TEST_F(DrovaneCustomFileConfigUpdaterTest, HasTheMetaObjectOfItsInterfaceAndNoneOfItsOwn) {
    EXPECT_EQ(_updater.metaObject(), &sync::interf::ICustomFileConfigUpdater::staticMetaObject);
    EXPECT_EQ(_updater.qt_metacast("sync::dv::dvsync::DrovaneCustomFileConfigUpdater"), nullptr);
    EXPECT_EQ(_updater.qt_metacast("sync::interf::ICustomFileConfigUpdater"), &_updater);
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheMembersLieOneBehindTheOtherAndAreAll) {
    EXPECT_THAT(tests::OffsetsIn(_updater, DrovaneCustomFileConfigUpdaterAccess::Members(_updater)),
                ElementsAre(16, 32));
    EXPECT_EQ(sizeof(DrovaneCustomFileConfigUpdater), 48U);
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, HasNoVirtualOperationsButThoseOfItsInterface) {
    EXPECT_EQ(tests::SlotCountOf<DrovaneCustomFileConfigUpdater>(),
              tests::SlotCountOf<sync::interf::ICustomFileConfigUpdater>());
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheEventsOfQObjectAreInherited) {
    QEvent event(QEvent::None);
    EXPECT_FALSE(_updater.event(&event));
    EXPECT_FALSE(_updater.eventFilter(&_updater, &event));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheSourceOfFileRecordsIsAskedForOnceAndNothingElseIs) {
    EXPECT_EQ(_installed.Factory().fileConfigManagersAskedFor, 1);
    _file.links.append(LinkTo("x"));
    Upload();
    EXPECT_EQ(_installed.Factory().fileConfigManagersAskedFor, 1);
    EXPECT_EQ(_installed.Factory().serverConfigManagersAskedFor, 0);
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheSourceOfFileRecordsIsReleasedBeforeTheFactory) {
    std::vector<std::string> released;
    const auto holderOf = [&released](const char* name) {
        return std::shared_ptr<void>(nullptr, [&released, name](void*) { released.emplace_back(name); });
    };
    sync::factory::ConfigurationFactory::Install(std::make_shared<tests::FakeConfigurationFactory>(
        nullptr, std::shared_ptr<sync::interf::IFileConfigManager>(holderOf("records"), nullptr)));
    auto updater = std::make_unique<DrovaneCustomFileConfigUpdater>(
        std::shared_ptr<sync::interf::factory::IRemoteFileManagerFactory>(holderOf("factory"), nullptr));
    sync::factory::ConfigurationFactory::Install(nullptr);
    EXPECT_TRUE(released.empty());
    updater.reset();
    EXPECT_THAT(released, ElementsAre("records", "factory"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, NothingIsLogged) {
    const tests::LogRecorder recorder(LOG4CPLUS_TEXT(""));
    _file.links.append(LinkTo("x"));
    Upload();
    _updater.UpdateCustomFileConfigBeforeDownload(_folder, _file, _remote);
    _remote = FileConfiguration();
    EXPECT_THROW(Upload(), SyncException);
    EXPECT_TRUE(recorder.Records().empty());
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, CollaboratorsAreKeptForTheUpdatersLife) {
    const std::weak_ptr<tests::MockFileConfigManager> records = _installed.FileConfigManager();
    const long before = records.use_count();
    {
        auto factory = std::make_shared<NiceMock<tests::MockRemoteFileManagerFactory>>();
        const std::weak_ptr<tests::MockRemoteFileManagerFactory> watched = factory;
        auto updater = std::make_unique<DrovaneCustomFileConfigUpdater>(std::move(factory));
        EXPECT_FALSE(watched.expired());
        EXPECT_EQ(records.use_count(), before + 1);
        updater.reset();
        EXPECT_TRUE(watched.expired());
    }
    EXPECT_EQ(records.use_count(), before);
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, WithoutAnInstalledConfigurationConstructionFails) {
    sync::factory::ConfigurationFactory::Install(nullptr);
    EXPECT_THROW(DrovaneCustomFileConfigUpdater{_managerFactory}, SyncException);
}

// --- Which folder is asked

TEST_F(DrovaneCustomFileConfigUpdaterTest, AnUploadAsksAManagerMadeForTheServerKeyForTheFile) {
    EXPECT_CALL(*_managerFactory, CreateRemoteFileManager(ServerKey)).Times(2);
    EXPECT_CALL(*_manager, GetFileByName(_, Text("own name"))).Times(2).WillRepeatedly(Return(_remote));
    _file.name = Text("own name");
    Upload(QFileInfo(Text("/w/A/g.dwg")));
    Upload(QFileInfo(Text("/w/A/g.dwg")));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheManagerIsReleasedWhenTheUploadIsOver) {
    const long before = _manager.use_count();
    Upload();
    EXPECT_EQ(_manager.use_count(), before);
    _remote = FileConfiguration();
    EXPECT_THROW(Upload(), SyncException);
    EXPECT_EQ(_manager.use_count(), before);
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, AFileDirectlyInTheFolderIsLookedUpInTheFolderItself) {
    EXPECT_EQ(AskedServerPath("Projects/A", "Projects/A/f.dwg"), Text("Projects/A"));
    EXPECT_EQ(AskedServerPath("Projects/A", "PROJECTS/a/f.dwg"), Text("Projects/A"));
    EXPECT_EQ(_asked.companionServerPath, Text("companion"));
    EXPECT_EQ(AskedLocalPath("/w/A", "/w/a/f.dwg"), Text("/w/A"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, AFileInASubFolderIsLookedUpThere) {
    EXPECT_EQ(AskedServerPath("Projects/A", "projects/a/b/C/f.dwg"), Text("Projects/A/b/C"));
    EXPECT_EQ(_asked.companionServerPath, Text("Projects/A/b/C"));
    EXPECT_EQ(AskedLocalPath("/w/A", "/W/a/b/C/f.dwg"), Text("/w/A/b/C"));
    EXPECT_EQ(_folder.serverPath, Text("Projects/A"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheFolderThatIsAskedHasAllElseOfTheFolder) {
    _folder = tests::FullFolder();
    const FolderConfiguration before = _folder;
    FolderConfiguration expected = _folder;
    Upload();
    EXPECT_EQ(FieldsOf(_asked), FieldsOf(expected));
    _file.serverPath = Text("Projects/A/b/f.dwg");
    _file.localPath = Text("/w/A/c/f.dwg");
    _file.serverId = 99;
    expected.serverPath = expected.companionServerPath = Text("Projects/A/b");
    expected.localPath = Text("/w/A/c");
    expected.serverId = 99;
    Upload();
    EXPECT_EQ(FieldsOf(_asked), FieldsOf(expected));
    EXPECT_EQ(FieldsOf(_folder), FieldsOf(before));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, PathsAreTakenAsTheyStand) {
    EXPECT_EQ(AskedServerPath("Projects/A", "Projects/A/./b/../c/f.dwg"), Text("Projects/A/./b/../c"));
    EXPECT_EQ(AskedServerPath("Projects/A", "Projects/A/b/"), Text("Projects/A/b"));
#ifdef _WIN32
    // A backslash separates there, in paths of a server too.
    EXPECT_EQ(AskedServerPath("Projects/A", "Projects/A\\b/f.dwg"), Text("Projects/A/b"));
#else
    EXPECT_EQ(AskedServerPath("Projects/A", "Projects/A\\b/f.dwg"), Text("Projects/A/\\b"));
#endif
    EXPECT_EQ(AskedServerPath("A", "A/A/a/f.dwg"), Text("A/A/a"));
    EXPECT_EQ(AskedServerPath("A", "x/A/b/f.dwg"), Text("A"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, OfSeveralSlashesOneIsCutOffOnEitherSide) {
    EXPECT_EQ(AskedServerPath("A", "A//f"), Text("A"));
    EXPECT_EQ(AskedServerPath("A", "A///f"), Text("A//"));
    EXPECT_EQ(AskedServerPath("A", "A//b/f"), Text("A//b"));
    EXPECT_EQ(AskedServerPath("A", "A/b//c///f"), Text("A/b//c//"));
    EXPECT_EQ(AskedServerPath("A//", "A//b/f"), Text("A//b"));
    EXPECT_EQ(AskedLocalPath("/w//", "/w///b/f"), Text("/w//b"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ASlashAtTheEndOfTheFolderIsNotDoubled) {
    EXPECT_EQ(AskedServerPath("/A/", "/a/b/c.txt"), Text("/A/b"));
    EXPECT_EQ(AskedLocalPath("/w/", "/w/b/c/f.dwg"), Text("/w/b/c"));
    EXPECT_EQ(AskedLocalPath("/", "/b/f.dwg"), Text("/b"));
    EXPECT_EQ(AskedLocalPath("/", "/f.dwg"), Text("/"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, AFolderWithoutAPathStaysAsItIs) {
    EXPECT_EQ(AskedServerPath("", "b/f.dwg"), Text(""));
    EXPECT_EQ(AskedLocalPath("", "/w/A/b/f.dwg"), Text(""));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, AFileElsewhereIsLookedUpInTheFolderItself) {
    EXPECT_EQ(AskedServerPath("Projects/A", "Projects/B/f.dwg"), Text("Projects/A"));
    EXPECT_EQ(AskedServerPath("Projects/A", "f.dwg"), Text("Projects/A"));
    EXPECT_EQ(AskedServerPath("Projects/A", ""), Text("Projects/A"));
    EXPECT_EQ(_asked.companionServerPath, Text("companion"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, OnlyTheCharactersOfTheFolderAreComparedAndNotItsLastComponent) {
    EXPECT_EQ(AskedServerPath("Projects/A", "Projects/AB/f.dwg"), Text("Projects/A/B"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheServerSideAndTheLocalSideArePlacedApart) {
    _file.serverPath = Text("Elsewhere/b/f.dwg");
    _file.localPath = Absolute("/w/A/b/f.dwg");
    Upload();
    EXPECT_EQ(_asked.serverPath, Text("Projects/A"));
    EXPECT_EQ(_asked.companionServerPath, Text("companion"));
    EXPECT_EQ(_asked.localPath, Absolute("/w/A/b"));
    _file.serverPath = Text("Projects/A/b/f.dwg");
    _file.localPath = Absolute("/elsewhere/b/f.dwg");
    Upload();
    EXPECT_EQ(_asked.serverPath, Text("Projects/A/b"));
    EXPECT_EQ(_asked.localPath, Absolute("/w/A"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, LetterCaseIsIgnoredInEveryScript) {
    EXPECT_EQ(AskedServerPath("\xC3\x84rger/\xCE\xA3", "\xC3\xA4RGER/\xCF\x82/b/f"), Text("\xC3\x84rger/\xCE\xA3/b"));
    EXPECT_EQ(AskedServerPath("\xF0\x90\x90\x80", "\xF0\x90\x90\xA8/b/f"), Text("\xF0\x90\x90\x80/b"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, CaseFormsOfOtherLengthsAreOtherTexts) {
    for (const auto& paths :
         {std::make_pair("Stra\xC3\x9F\x65", "STRASSE/b/f"), std::make_pair("STRASSE", "stra\xC3\x9F\x65/b/f"),
          std::make_pair("\xC4\xB0x", "i\xCC\x87x/b/f"), std::make_pair("\xEF\xAC\x81x", "FIx/b/f")}) {
        EXPECT_EQ(AskedServerPath(paths.first, paths.second), Text(paths.first));
    }
    // A small and a capital sharp s have the same length.
    EXPECT_EQ(AskedServerPath("Stra\xC3\x9F\x65", "STRA\xE1\xBA\x9E\x45/b/f"), Text("Stra\xC3\x9F\x65/b"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ACharacterIsNeverCutInTwo) {
    // The folder's path ends in the first half of the character that the file's path has there.
    const QString smile = Text("\xF0\x9F\x98\x80");
    _folder.serverPath = Text("A/") + smile.left(1);
    _file.serverPath = Text("A/") + smile + Text("/f");
    Upload();
    EXPECT_EQ(_asked.serverPath, _folder.serverPath);
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, HalfACharacterThatStandsAloneIsOne) {
    const QString smile = Text("\xF0\x9F\x98\x80");
    _folder.serverPath = Text("A/") + smile.left(1);
    _file.serverPath = _folder.serverPath + Text("/b/f");
    Upload();
    EXPECT_EQ(_asked.serverPath, _folder.serverPath + Text("/b"));
    _folder.serverPath = Text("A");
    _file.serverPath = Text("A") + smile.right(1) + Text("/f");
    Upload();
    EXPECT_EQ(_asked.serverPath, Text("A/") + smile.right(1));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheServerIdOfTheFileReplacesThatOfTheFolderWhenThereIsOne) {
    Upload();
    EXPECT_EQ(_asked.serverId, UpdatedServerId);
    _file.serverId = 0;
    Upload();
    EXPECT_EQ(_asked.serverId, 0);
    _file.serverId = 99;
    Upload();
    EXPECT_EQ(_asked.serverId, 99);
    _file.serverId = -2;
    Upload();
    EXPECT_EQ(_asked.serverId, -2);
    EXPECT_EQ(_asked.serverKey, ServerKey);
    EXPECT_EQ(_folder.serverId, UpdatedServerId);
}

// --- What an upload changes

TEST_F(DrovaneCustomFileConfigUpdaterTest, AnAnswerWhoseHrefIsNoUrlIsNoFile) {
    _remote = sync::dv::dvsync::BuildFileConfigFromFindResponse(
        _folder, sync::http::DAVPropfindResponse(Text("http://[bad/x"), sync::http::DAVPropfindProperties()));
    EXPECT_THROW(Upload(), SyncException);
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, AFileThatTheServiceDoesNotKnowThrowsAndChangesNothing) {
    _remote = tests::FullFile();
    for (QString FileConfiguration::*field :
         {&FileConfiguration::name, &FileConfiguration::localPath, &FileConfiguration::serverPath}) {
        _remote.*field = Text("");
    }
    _remote.itemId = Text("new");
    _file = tests::FullFile();
    _file.localPath = Absolute("/w/%1/./\xC3\xA4.dwg");
    _file.links.append(LinkTo("x"));
    const FileConfiguration before = _file;
    EXPECT_CALL(*_installed.FileConfigManager(), GetFileConfiguration(_, _)).Times(0);
    try {
        Upload(QFileInfo(Text("/proc/self/exe")));
        FAIL() << "nothing was thrown";
    } catch (const SyncException& e) {
        EXPECT_EQ(Text(e.what()), Text("Failed to update file config for ") + before.localPath);
    }
    EXPECT_EQ(FieldsOf(_file), FieldsOf(before));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ANameOrEitherPathIsEnoughToBeKnown) {
    for (QString FileConfiguration::*field :
         {&FileConfiguration::name, &FileConfiguration::localPath, &FileConfiguration::serverPath}) {
        _remote = FileConfiguration();
        _remote.*field = Text("x");
        EXPECT_NO_THROW(Upload());
    }
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, WhatTheLookupThrowsPassesThroughAndChangesNothing) {
    EXPECT_CALL(*_manager, GetFileByName(_, _))
        .WillOnce(Throw(sync::http::HttpException(Text("no answer"), 503, QUrl())));
    _file = tests::FullFile();
    const FileConfiguration before = _file;
    EXPECT_THROW(Upload(), sync::http::HttpException);
    EXPECT_EQ(FieldsOf(_file), FieldsOf(before));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheSizeIsThatOfTheUploadedFile) {
    QTemporaryFile uploaded;
    ASSERT_TRUE(uploaded.open());
    uploaded.write("12345");
    uploaded.flush();
    _remote.size = 99;
    const QFileInfo seen(uploaded.fileName());
    Upload(seen);
    EXPECT_EQ(_file.size, 5);
    // With a hole in it, that takes no space.
    ASSERT_TRUE(uploaded.resize(Q_INT64_C(5000000000)));
    Upload(seen);
    EXPECT_EQ(_file.size, 5);
    Upload(QFileInfo(uploaded.fileName()));
    EXPECT_EQ(_file.size, Q_INT64_C(5000000000));
    ASSERT_TRUE(uploaded.resize(0));
    Upload(QFileInfo(uploaded.fileName()));
    EXPECT_EQ(_file.size, 0);
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheVersionIsTheOneAfterTheServices) {
    EXPECT_EQ(VersionAfterUpload("7"), Text("8"));
    EXPECT_EQ(VersionAfterUpload("-1"), Text("0"));
    EXPECT_EQ(VersionAfterUpload("2147483647"), Text("2147483648"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, AVersionThatIsAbsentOrNoNumberCountsAsZero) {
    Upload();
    EXPECT_EQ(_file.customProperties.value(Text("version")), Text("1"));
    EXPECT_EQ(VersionAfterUpload("abc"), Text("1"));
    EXPECT_EQ(VersionAfterUpload("0x10"), Text("1"));
    EXPECT_EQ(VersionAfterUpload("2147483648"), Text("1"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, TheVersionIdIsTakenOverAndCreatedWhenMissing) {
    Upload();
    ASSERT_TRUE(_file.customProperties.contains(Text("versionId")));
    EXPECT_EQ(_file.customProperties.value(Text("versionId")), Text(""));
    _remote.customProperties.insert(Text("versionId"), Text("v9"));
    Upload();
    EXPECT_EQ(_file.customProperties.value(Text("versionId")), Text("v9"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, WhatIdentifiesTheFileIsTakenOverAndNothingElse) {
    _file = tests::FullFile();
    _remote = OtherFile();
    FileConfiguration expected = _file;
    expected.ownerId = Text("other owner");
    expected.ownerAttribute = 85;
    expected.itemId = Text("other item");
    expected.versionId = Text("other version id");
    expected.md5Checksum = Text("other md5");
    expected.size = 0;
    expected.customProperties.insert(Text("version"), Text("88"));
    expected.customProperties.insert(Text("versionId"), Text("other version id property"));
    Upload(QFileInfo(Text("/no/such/file")));
    EXPECT_EQ(FieldsOf(_file), FieldsOf(expected));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, WhatTheServiceHasEmptyBecomesEmpty) {
    _file = tests::FullFile();
    FileConfiguration expected = _file;
    expected.ownerId.clear();
    expected.ownerAttribute = 0;
    expected.itemId.clear();
    expected.versionId.clear();
    expected.md5Checksum.clear();
    expected.size = 0;
    expected.customProperties.insert(Text("version"), Text("1"));
    expected.customProperties.insert(Text("versionId"), Text(""));
    Upload();
    EXPECT_EQ(FieldsOf(_file), FieldsOf(expected));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, AnUploadCreatesNoPropertiesButVersionAndVersionId) {
    _remote = OtherFile();
    Upload();
    EXPECT_EQ(_file.customProperties.keys(), QStringList() << Text("version") << Text("versionId"));
}

// --- Links

TEST_F(DrovaneCustomFileConfigUpdaterTest, ARelativeLinkIsResolvedFromTheFilesDirectory) {
    _file.localPath = Absolute("/w/s/f.dwg");
    _file.links = {LinkTo("../x.dwg"), LinkTo("sub/./y.dwg"), LinkTo("%1/%2.dwg")};
    const InSequence inOrder;
    ExpectLookupOf("/w/x.dwg", "id-x");
    ExpectLookupOf("/w/s/sub/y.dwg", "id-y");
    ExpectLookupOf("/w/s/%1/%2.dwg", "id-z");
    Upload();
    EXPECT_EQ(_file.links.at(0).targetId, Text("id-x"));
    EXPECT_EQ(_file.links.at(1).targetId, Text("id-y"));
    EXPECT_EQ(_file.links.at(2).targetId, Text("id-z"));
    EXPECT_EQ(_file.links.at(0).path, Text("../x.dwg"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ALinkIsTakenAsItStands) {
    _file.localPath = Absolute("/w/s/f.dwg");
    _file.links.clear();
#ifdef _WIN32
    const char* const withBackslashes = "/w/s/b.dwg";
#else
    const char* const withBackslashes = "/w/s/a\\..\\b.dwg";
#endif
    const InSequence inOrder;
    for (const auto& link : {std::make_pair("", "/w/s"), std::make_pair(" x ", "/w/s/ x "),
                             std::make_pair("a\\..\\b.dwg", withBackslashes), std::make_pair("a%20B", "/w/s/a%20B"),
                             std::make_pair("a//b///c", "/w/s/a/b/c"), std::make_pair("f.dwg", "/w/s/f.dwg")}) {
        _file.links.append(LinkTo(link.first));
        ExpectLookupOf(link.second);
    }
    Upload();
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, LinksAreLookedUpUnderTheServerKeyOfTheFolder) {
    _file = tests::FullFile();
    _file.links.append(LinkTo("x.dwg"));
    FileConfiguration record = tests::FullFile();
    record.itemId = Text("found");
    EXPECT_CALL(*_installed.FileConfigManager(), GetFileConfiguration(_, ServerKey)).WillOnce(Return(record));
    Upload();
    EXPECT_EQ(_file.links.at(1).targetId, Text("found"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ALinkWithoutALocalRecordDoesNotKeepOthersFromBeingLookedUp) {
    _file.links = {LinkTo("x.dwg"), LinkTo("y.dwg")};
    ExpectLookupOf("/w/A/x.dwg", "");
    ExpectLookupOf("/w/A/y.dwg", "found");
    Upload();
    EXPECT_TRUE(_file.links.at(0).targetId.isEmpty());
    EXPECT_EQ(_file.links.at(1).targetId, Text("found"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, APlaceholderInTheFilesDirectoryStaysAsItIs) {
    _file.localPath = Absolute("/w/%2/f.dwg");
    _file.links = {LinkTo("x.dwg")};
    ExpectLookupOf("/w/%2/x.dwg");
    Upload();
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ARelativeLocalPathIsTakenFromTheCurrentDirectory) {
    _file.localPath = Text("s/../f.dwg");
    _file.links = {LinkTo("x.dwg")};
    ExpectLookupOf((QDir::currentPath() + Text("/x.dwg")).toUtf8().constData());
    Upload();
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, AnAbsoluteLinkIsOnlyCleaned) {
    _file.links = {LinkTo(Absolute("/other//a/../x.dwg").toUtf8())};
    ExpectLookupOf("/other/x.dwg");
    Upload();
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, SymbolicLinksOnDiskAreNotFollowed) {
#ifdef _WIN32
    GTEST_SKIP() << "on Windows making a symbolic link is a right that few have";
#endif
    // Its target lies elsewhere, as does what would be reached through it.
    _file.localPath = Absolute("/proc/self/cwd/s/f.dwg");
    _file.links = {LinkTo("../x.dwg"), LinkTo(Absolute("/proc/self/cwd/../y.dwg").toUtf8())};
    ExpectLookupOf("/proc/self/cwd/x.dwg");
    ExpectLookupOf("/proc/self/y.dwg");
    Upload();
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ALinkWithATargetIsLeftAlone) {
    _file.links = {LinkTo("x.dwg", "known")};
    EXPECT_CALL(*_installed.FileConfigManager(), GetFileConfiguration(_, _)).Times(0);
    Upload();
    EXPECT_EQ(_file.links.at(0).targetId, Text("known"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ALinkWithoutALocalRecordIsTriedAgainAtTheNextUpload) {
    _file.links = {LinkTo("x.dwg")};
    EXPECT_CALL(*_installed.FileConfigManager(), GetFileConfiguration(Absolute("/w/A/x.dwg"), ServerKey))
        .WillOnce(Return(FileConfiguration()))
        .WillOnce(Return(RecordWithItemId("now there")));
    Upload();
    EXPECT_TRUE(_file.links.at(0).targetId.isEmpty());
    Upload();
    EXPECT_EQ(_file.links.at(0).targetId, Text("now there"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ACopyOfTheRecordKeepsItsOwnLinks) {
    _file.links = {LinkTo("x.dwg")};
    const FileConfiguration copy = _file;
    ExpectLookupOf("/w/A/x.dwg");
    Upload();
    EXPECT_TRUE(copy.links.at(0).targetId.isEmpty());
    EXPECT_EQ(_file.links.at(0).targetId, Text("found"));
}

// --- Before a download

TEST_F(DrovaneCustomFileConfigUpdaterTest, ADownloadTakesOverVersionResourceIdAndSizeAndNothingElse) {
    EXPECT_CALL(*_managerFactory, CreateRemoteFileManager(_)).Times(0);
    EXPECT_CALL(*_installed.FileConfigManager(), GetFileConfiguration(_, _)).Times(0);
    _file = tests::FullFile();
    _file.links.append(LinkTo("x"));
    _remote = OtherFile();
    FileConfiguration expected = _file;
    // Of a version, it is the text that counts.
    for (const char* version : {"87", "6", "06 b"}) {
        for (const qint64 size : {Q_INT64_C(5000000082), Q_INT64_C(0), Q_INT64_C(-1073741824)}) {
            _remote.customProperties.insert(Text("version"), Text(version));
            _remote.size = size;
            expected.customProperties.insert(Text("version"), Text(version));
            expected.customProperties.insert(Text("resourceId"), Text("84"));
            expected.size = size;
            _updater.UpdateCustomFileConfigBeforeDownload(_folder, _file, _remote);
            EXPECT_EQ(FieldsOf(_file), FieldsOf(expected));
        }
    }
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ADownloadCreatesNoPropertiesButVersionAndResourceId) {
    _remote = OtherFile();
    _updater.UpdateCustomFileConfigBeforeDownload(_folder, _file, _remote);
    EXPECT_EQ(_file.customProperties.keys(), QStringList() << Text("resourceId") << Text("version"));
}

TEST_F(DrovaneCustomFileConfigUpdaterTest, ADownloadEmptiesThePropertiesThatTheServiceLacks) {
    _file.customProperties.insert(Text("version"), Text("33"));
    _file.customProperties.insert(Text("resourceId"), Text("34"));
    _updater.UpdateCustomFileConfigBeforeDownload(_folder, _file, _remote);
    for (const char* key : {"version", "resourceId"}) {
        ASSERT_TRUE(_file.customProperties.contains(Text(key)));
        EXPECT_EQ(_file.customProperties.value(Text(key)), Text(""));
    }
}

}  // namespace
