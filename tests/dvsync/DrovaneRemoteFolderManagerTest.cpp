#include "dvsync/DrovaneRemoteFolderManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDomDocument>
#include <QMetaMethod>
#include <QUrl>
#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/http/HttpException.h"
#include "tests/dvsync/LogRecorder.h"
#include "tests/dvsync/RemoteManagerTest.h"

namespace sync {
namespace dv {
namespace dvsync {

class DrovaneRemoteFolderManagerAccess {
public:
    static std::vector<const void*> Members(const DrovaneRemoteFolderManager& manager) {
        return {
            &manager.urlBuilder, &manager.authenticatorFactory, &manager.httpFactory,     &manager.configurationFactory,
            &manager.serverId,   &manager.serverConfiguration,  &manager.lastRequestState};
    }
    static interf::IHttpRequest::RequestState LastRequestState(const DrovaneRemoteFolderManager& manager) {
        return manager.lastRequestState;
    }
    static int CreateFolder(DrovaneRemoteFolderManager& manager, config::FolderConfiguration& folder,
                            const QString& parentFolderId) {
        return manager._CreateFolder(folder, parentFolderId);
    }
    static bool UpdateFromBody(DrovaneRemoteFolderManager& manager, const QByteArray& body,
                               config::FolderConfiguration& folder) {
        return manager._UpdateFolderConfig(body, folder);
    }
    static bool UpdateFromHeaders(DrovaneRemoteFolderManager& manager,
                                  const QList<QPair<QByteArray, QByteArray>>& headers,
                                  config::FolderConfiguration& folder) {
        return manager._UpdateFolderConfig(headers, folder);
    }
    static std::shared_ptr<http::DAVPropfindResult> ProcessPropfindResult(
        DrovaneRemoteFolderManager& manager, std::shared_ptr<http::DAVPropfindRequest> request) {
        return manager._ProcessPropfindResult(std::move(request));
    }
    static std::shared_ptr<QVector<config::FolderConfiguration>> BuildFolderConfigs(
        DrovaneRemoteFolderManager& manager, const config::FolderConfiguration& folder,
        std::shared_ptr<http::DAVPropfindResult> result, QSet<int>& ignored) {
        return manager._BuildFolderConfigsFromFindResult(folder, std::move(result), ignored);
    }
    static config::FolderConfiguration BuildFolderConfig(DrovaneRemoteFolderManager& manager,
                                                         const config::FolderConfiguration& parent,
                                                         const http::DAVPropfindResponse& response) {
        return manager._BuildFolderConfigFromFindResponse(parent, response);
    }
    static void IgnoreByClassTypeOfParent(DrovaneRemoteFolderManager& manager,
                                          std::shared_ptr<http::DAVPropfindResult> result, QSet<int>& ignored) {
        manager._IgnoreByClassTypeOfParent(std::move(result), ignored);
    }
    static bool ChildOfForm(DrovaneRemoteFolderManager& manager, const QString& path, const QSet<QString>& formPaths) {
        return manager._ChildOfForm(path, formPaths);
    }
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::core::SyncException;
using sync::core::SyncResults;
using sync::dv::dvsync::DrovaneRemoteFolderManager;
using sync::http::DAVPropfindProperties;
using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;
using sync::http::HttpException;
using sync::interf::IHttpRequest;
using sync::interf::ISyncFilter;
using testing::_;
using testing::AnyNumber;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::NiceMock;
using testing::Return;
using testing::Truly;
using tests::DebugLevel;
using tests::ErrorLevel;
using tests::FolderServerId;
using tests::InfoLevel;
using tests::ServerId;
using tests::Text;
using FolderManagerAccess = sync::dv::dvsync::DrovaneRemoteFolderManagerAccess;
using Headers = QList<QPair<QByteArray, QByteArray>>;

const char* const Slot =
    "RequestCompleted(std::tr1::shared_ptr<sync::interf::IHttpRequest>,sync::interf::IHttpRequest::RequestState)";

Headers Reason(const char* text) {
    return {{"X-OVS-Reason-Phrase", text}};
}

DAVPropfindResponse Entry(const char* classType, const char* href, int resourceId = 0, int parentId = 0, int size = 0) {
    DAVPropfindProperties properties;
    properties.resourceClassType = Text(classType);
    properties.filename = Text(href).section(QLatin1Char('/'), -1, -1, QString::SectionSkipEmpty);
    DAVPropfindResponse response(Text(href), properties);
    response.resourceId = resourceId;
    response.parentResourceId = parentId;
    response.contentLength = size;
    return response;
}

const char* const File = "drovane.objects.File";
const char* const Folder = "drovane.objects.Folder";
const char* const Project = "drovane.objects.Project";
const char* const Form = "drovane.objects.Form";

class FakeAuthenticatorFactory : public sync::interf::factory::IRequestAuthenticatorFactory {
public:
    QAuthenticator CreateAuthenticator(int) override { return QAuthenticator(); }
};

/// Whether the two are the same in everything that a record of a folder holds.
bool IsSame(const FolderConfiguration& a, const FolderConfiguration& b) {
    return a.serverKey == b.serverKey && a.serverId == b.serverId && a.name == b.name && a.resourceId == b.resourceId &&
           a.serverPath == b.serverPath && a.companionServerPath == b.companionServerPath &&
           a.localPath == b.localPath && a.serverRootPath == b.serverRootPath &&
           a.lastModifiedDate == b.lastModifiedDate && a.ownerId == b.ownerId && a.accessMask == b.accessMask &&
           a.getLastSyncTime() == b.getLastSyncTime() &&
           a.getLastServerSyncRequestTime() == b.getLastServerSyncRequestTime() &&
           a.getPrivileges() == b.getPrivileges() && a.getServerFolderId() == b.getServerFolderId();
}

/// A record that has a value of its own in every field.
FolderConfiguration WholeFolder() {
    FolderConfiguration folder;
    folder.serverKey = 3;
    folder.serverId = FolderServerId;
    folder.name = Text("name");
    folder.resourceId = Text("1001");
    folder.serverPath = Text("Projects/A");
    folder.companionServerPath = Text("companion");
    folder.localPath = Text("/home/work");
    folder.serverRootPath = Text("Projects");
    folder.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(1000);
    folder.ownerId = Text("owner-A");
    folder.accessMask = 5;
    folder.setLastSyncTime(QDateTime::fromMSecsSinceEpoch(2000));
    folder.setLastServerSyncRequestTime(QDateTime::fromMSecsSinceEpoch(3000));
    folder.setPrivileges(Text("rw"));
    folder.setServerFolderId(Text("id-A"));
    return folder;
}

/// The manager on fakes: every request but a listing gets `_request`, and ends in the state of `_executor`.
class DrovaneRemoteFolderManagerTest : public tests::RemoteManagerTest {
protected:
    DrovaneRemoteFolderManagerTest() : RemoteManagerTest("Projects/A") {
        ON_CALL(*_urlBuilder, BuildUrl(_, Text("Projects/B"))).WillByDefault(Return(_otherUrl));
        ON_CALL(*_urlBuilder, BuildFolderUrl(_, _, _, _)).WillByDefault(Return(_folderUrl));
        ON_CALL(*_httpFactory, CreateFolderRequest(_, _, _)).WillByDefault(Return(_request));
        ON_CALL(*_httpFactory, CreateFileRequest(_, _, _)).WillByDefault(Return(_request));
        ON_CALL(*_httpFactory, CreateMoveRequest(_, _, _)).WillByDefault(Return(_request));
        ON_CALL(*_httpFactory, CreateRequestExecutor(_, _)).WillByDefault(Return(_executor));
        _folder = WholeFolder();
        _otherFolder.serverPath = Text("Projects/B");
        _otherFolder.serverId = 31;
    }

    void AnswerWith(int status, const Headers& headers = Headers(), const QByteArray& body = QByteArray()) {
        _request->answer.statusCode = status;
        _request->answer.responseHeaders = headers;
        _request->answer.responseBody = body;
        _propfind->statusCode = status;
    }

    const std::shared_ptr<QUrl> _otherUrl = std::make_shared<QUrl>(Text("http://service.test/Projects/B"));
    const std::shared_ptr<QUrl> _folderUrl = std::make_shared<QUrl>(Text("http://service.test/folders"));
    FolderConfiguration _otherFolder;
    const std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> _authenticatorFactory =
        std::make_shared<FakeAuthenticatorFactory>();
    const std::shared_ptr<tests::FakeHttpRequest> _request = std::make_shared<tests::FakeHttpRequest>();
    const std::shared_ptr<tests::FakeRequestExecutor> _executor = std::make_shared<tests::FakeRequestExecutor>();
    const std::shared_ptr<tests::FakeConfigurationFactory> _configurationFactory =
        std::make_shared<tests::FakeConfigurationFactory>(_installed.ServerConfigManager(),
                                                          _installed.FileConfigManager());
    DrovaneRemoteFolderManager _manager{_urlBuilder, ServerId, _authenticatorFactory, _httpFactory,
                                        _configurationFactory};
    const tests::LogRecorder _log{LOG4CPLUS_TEXT("DrovaneSyncSupport")};
};

// --- The class

TEST_F(DrovaneRemoteFolderManagerTest, TheMetaObjectHasOneProtectedSlotAndNothingElse) {
    const QMetaObject& meta = DrovaneRemoteFolderManager::staticMetaObject;
    EXPECT_STREQ(meta.className(), "sync::dv::dvsync::DrovaneRemoteFolderManager");
    EXPECT_STREQ(meta.superClass()->className(), "sync::interf::IRemoteFolderManager");
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 1);
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    const QMetaMethod slot = meta.method(meta.methodOffset());
    EXPECT_EQ(slot.methodType(), QMetaMethod::Slot);
    EXPECT_EQ(slot.access(), QMetaMethod::Protected);
    EXPECT_EQ(meta.indexOfSlot(Slot), meta.methodOffset());
}

TEST_F(DrovaneRemoteFolderManagerTest, InvokingTheFirstMethodStoresTheState) {
    std::tr1::shared_ptr<IHttpRequest> request = _request;
    IHttpRequest::RequestState state = IHttpRequest::StateAborted;
    void* arguments[] = {nullptr, &request, &state};
    const int offset = DrovaneRemoteFolderManager::staticMetaObject.methodOffset();
    const long before = request.use_count();
    EXPECT_LT(_manager.qt_metacall(QMetaObject::InvokeMetaMethod, offset, arguments), 0);
    EXPECT_EQ(FolderManagerAccess::LastRequestState(_manager), IHttpRequest::StateAborted);
    EXPECT_EQ(request.use_count(), before);
}

TEST_F(DrovaneRemoteFolderManagerTest, OtherIdsAndOtherKindsOfCallsPassThrough) {
    void* arguments[] = {nullptr, nullptr, nullptr};
    const int offset = DrovaneRemoteFolderManager::staticMetaObject.methodOffset();
    EXPECT_EQ(_manager.qt_metacall(QMetaObject::InvokeMetaMethod, offset + 3, arguments), 2);
    EXPECT_EQ(_manager.qt_metacall(QMetaObject::ResetProperty, 3, arguments),
              _manager.sync::interf::IRemoteFolderManager::qt_metacall(QMetaObject::ResetProperty, 3, arguments));
}

TEST_F(DrovaneRemoteFolderManagerTest, TheMembersLieInTheirOrder) {
    const std::vector<const void*> members = FolderManagerAccess::Members(_manager);
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end(), std::less<>()));
}

TEST_F(DrovaneRemoteFolderManagerTest, TheSettingsOfTheServerAreReadOnceAtConstruction) {
    EXPECT_CALL(*_installed.ServerConfigManager(), GetServerConfiguration(ServerId)).Times(1);
    DrovaneRemoteFolderManager manager(_urlBuilder, ServerId, nullptr, _httpFactory, _configurationFactory);
    AnswerWith(404);
    manager.FolderExists(_folder);
    manager.FolderExists(_folder);
}

TEST_F(DrovaneRemoteFolderManagerTest, TheStateIsResetBeforeEveryRequest) {
    _executor->state = IHttpRequest::StateFailed;
    AnswerWith(200, {{"a", "b"}});
    _manager.FolderExists(_folder);
    EXPECT_EQ(FolderManagerAccess::LastRequestState(_manager), IHttpRequest::StateFailed);
    _executor->onExecute = [this] {
        EXPECT_EQ(FolderManagerAccess::LastRequestState(_manager), IHttpRequest::StateNone);
    };
    _manager.FolderExists(_folder);
    _manager.FileExists(FileConfiguration());
}

// --- Every operation through every status

/// One operation, and what it makes of the statuses. What an operation returned is put into words.
struct Operation {
    const char* name;
    std::string (*run)(DrovaneRemoteFolderManager& manager, FolderConfiguration& folder,
                       const FolderConfiguration& otherFolder);
    /// "" where the status throws.
    std::string (*expected)(int status, int state);
    /// With %1 for the status.
    const char* message;
    /// How many records are logged when the answer has neither headers nor a body.
    size_t (*records)(int status, int state);
};

bool IsFolderFound(int status, int state) {
    return status != 302 && status < 400 && !(status == 0 && state == 5);
}

size_t NoRecords(int, int) {
    return 0;
}

void PrintTo(const Operation& operation, std::ostream* stream) {
    *stream << operation.name;
}

std::string Words(const SyncResults& results) {
    return "results " + std::to_string(results.resultType);
}

bool IsPropfindFailure(int status) {
    return status >= 400 || status == 302;
}

const Operation Operations[] = {
    {"FolderExists",
     [](DrovaneRemoteFolderManager& manager, FolderConfiguration& folder, const FolderConfiguration&) -> std::string {
         return manager.FolderExists(folder) ? "true" : "false";
     },
     [](int status, int state) -> std::string {
         if (status == 400 || status == 404) {
             return "false";
         }
         return IsFolderFound(status, state) ? "true" : "";
     },
     "FolderExists failed for url http://service.test/folders. Error code: %1.",
     [](int status, int state) -> size_t { return IsFolderFound(status, state) ? 1 : 0; }},
    {"FileExists",
     [](DrovaneRemoteFolderManager& manager, FolderConfiguration&, const FolderConfiguration&) -> std::string {
         return manager.FileExists(FileConfiguration()) ? "true" : "false";
     },
     [](int status, int) -> std::string { return status == 404               ? "false"
                                                 : IsPropfindFailure(status) ? ""
                                                                             : "true"; },
     "FileExists failed for url http://service.test/Projects/A. Error code: %1.", NoRecords},
    {"CreateFolder",
     [](DrovaneRemoteFolderManager& manager, FolderConfiguration& folder, const FolderConfiguration&) {
         return Words(manager.CreateFolder(folder, Text("parent"), false));
     },
     [](int status, int state) -> std::string {
         return status >= 400 || (status == 0 && state == 5) ? "" : "results 0";
     },
     "CreateFolder failed for url http://service.test/Projects/A. Error code: %1.",
     [](int status, int) -> size_t { return status >= 1 && status < 400 ? 1 : 0; }},
    {"DeleteFolder",
     [](DrovaneRemoteFolderManager& manager, FolderConfiguration& folder, const FolderConfiguration&) {
         return Words(manager.DeleteFolder(folder));
     },
     [](int status, int) -> std::string { return status >= 400 ? "" : "results 2"; },
     "DeleteFolder failed for url http://service.test/folders. Error code: %1.", NoRecords},
    {"MoveFolder",
     [](DrovaneRemoteFolderManager& manager, FolderConfiguration& folder, const FolderConfiguration& otherFolder) {
         return Words(manager.MoveFolder(folder, otherFolder));
     },
     [](int status, int state) -> std::string {
         return status >= 400 || (status == 0 && state == 5) ? "" : "results 3";
     },
     "MoveFolder failed. From Url: /Projects/A To Url: /Projects/B. Error code: %1.",
     [](int, int) -> size_t { return 1; }},
    {"GetNameSortedDirsByFolder",
     [](DrovaneRemoteFolderManager& manager, FolderConfiguration& folder, const FolderConfiguration&) -> std::string {
         return manager.GetNameSortedDirsByFolder(folder) ? "a vector" : "nothing";
     },
     [](int status, int) -> std::string {
         return IsPropfindFailure(status) ? "" : status == 304 ? "nothing" : "a vector";
     },
     "GetNameSortedDirsByFolder failed for url http://service.test/Projects/A. Error code: %1.", NoRecords},
    {"GetAllFilesAndSubFoldersByFolder",
     [](DrovaneRemoteFolderManager& manager, FolderConfiguration& folder, const FolderConfiguration&) {
         std::shared_ptr<QVector<FolderConfiguration>> folders;
         std::shared_ptr<QVector<FileConfiguration>> files;
         const int code = manager.GetAllFilesAndSubFoldersByFolder(folder, folders, files);
         EXPECT_EQ(folders != nullptr, code == 0);
         EXPECT_EQ(files != nullptr, code == 0);
         return "code " + std::to_string(code);
     },
     [](int status, int) -> std::string {
         if (status == 404 || status == 304) {
             return "code " + std::to_string(status);
         }
         return IsPropfindFailure(status) ? "" : "code 0";
     },
     "GetAllFilesAndSubFoldersByFolder failed for url http://service.test/Projects/A. Error code: %1.", NoRecords},
    {"GetFolderSize",
     [](DrovaneRemoteFolderManager& manager, FolderConfiguration&, const FolderConfiguration&) {
         int count = 3;
         qint64 size = 4;
         const int code =
             manager.GetFolderSize(Text("Projects/A"), FolderServerId, true, count, size, nullptr, nullptr);
         EXPECT_EQ(count, 3);
         EXPECT_EQ(size, 4);
         return "code " + std::to_string(code);
     },
     [](int status, int) -> std::string {
         return status == 404 ? "code 404" : IsPropfindFailure(status) ? "" : "code 0";
     },
     "GetAllFilesAndSubFoldersByFolder failed for url http://service.test/Projects/A. Error code: %1.", NoRecords},
};

struct Answer {
    const char* name;
    int status;
    int state;
    Headers headers;
};

void PrintTo(const Answer& answer, std::ostream* stream) {
    *stream << answer.name;
}

std::vector<Answer> Answers() {
    std::vector<Answer> answers = {
        {"0 in state 0", 0, 0, Headers()},
        {"0 in state 3", 0, 3, Headers()},
        {"0 in state 5", 0, 5, Headers()},
        {"400 without a reason", 400, 3, Headers()},
        {"400 with a reason", 400, 3, Reason("Something else.")},
        {"400 with two reasons, of which only the first counts",
         400,
         3,
         {{"x-ovs-reason-phrase", "Something else"},
          {"x-ovs-reason-phrase", "Existing file already exists. It does not exist."}}},
    };
    for (const int status :
         {1, 100, 200, 201, 204, 207, 301, 302, 303, 304, 399, 401, 402, 403, 404, 405, 409, 423, 500, 503}) {
        answers.push_back({"", status, 3, Headers()});
    }
    return answers;
}

class EveryStatusTest : public DrovaneRemoteFolderManagerTest,
                        public testing::WithParamInterface<std::tuple<Operation, Answer>> {};

TEST_P(EveryStatusTest, HasItsOutcome) {
    const Operation& operation = std::get<0>(GetParam());
    const Answer& answer = std::get<1>(GetParam());
    AnswerWith(answer.status, answer.headers);
    _executor->state = static_cast<IHttpRequest::RequestState>(answer.state);
    const std::string expected = operation.expected(answer.status, answer.state);
    // A creation that got no answer is told as 503.
    const int thrownStatus =
        answer.status == 0 && std::strcmp(operation.name, "CreateFolder") == 0 ? 503 : answer.status;

    if (expected.empty()) {
        try {
            operation.run(_manager, _folder, _otherFolder);
            FAIL() << "nothing was thrown";
        } catch (const HttpException& e) {
            EXPECT_EQ(e.Message(), Text(operation.message).arg(thrownStatus));
            EXPECT_EQ(e.StatusCode(), thrownStatus);
            EXPECT_TRUE(e.Url().isEmpty());
        }
    } else {
        EXPECT_EQ(operation.run(_manager, _folder, _otherFolder), expected);
    }
    EXPECT_EQ(_executor->executed.size(), 1);
    EXPECT_TRUE(IsSame(_folder, WholeFolder()));
    EXPECT_EQ(_log.Records().size(), operation.records(answer.status, answer.state));
    for (const tests::LogRecord& record : _log.Records()) {
        EXPECT_EQ(record.logger, "DrovaneSyncSupport");
        EXPECT_EQ(record.file, "DrovaneRemoteFolderManager");
        EXPECT_NE(record.level, InfoLevel);
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, EveryStatusTest,
                         testing::Combine(testing::ValuesIn(Operations), testing::ValuesIn(Answers())));

TEST_F(DrovaneRemoteFolderManagerTest, AMessageShowsItsUrlAsPeopleReadIt) {
    const auto url = std::make_shared<QUrl>(QUrl::fromEncoded("https://service.test:8443/a%20b/%C3%A9?x=1#y"));
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, _)).WillOnce(Return(url));
    AnswerWith(500);
    try {
        _manager.FileExists(FileConfiguration());
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.Message(),
                  Text("FileExists failed for url https://service.test:8443/a b/\xC3\xA9?x=1#y. Error code: 500."));
    }
}

// --- What every operation hands on

class EveryOperationTest : public DrovaneRemoteFolderManagerTest, public testing::WithParamInterface<Operation> {
protected:
    void Run() {
        try {
            GetParam().run(_manager, _folder, _otherFolder);
        } catch (const HttpException&) {
            EXPECT_GE(_request->answer.statusCode, 400);
        }
    }
};

TEST_P(EveryOperationTest, BuildsItsUrlsFromTheSettingsOfTheServer) {
    const auto ofTheServer = Field(&sync::config::ServerConfiguration::baseUrl, QUrl(Text("http://service.test/")));
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, _)).Times(0);
    EXPECT_CALL(*_urlBuilder, BuildUrl(ofTheServer, _)).Times(AnyNumber());
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, _, _)).Times(0);
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(ofTheServer, _, _, _)).Times(AnyNumber());
    for (const int status : {207, 500}) {
        AnswerWith(status);
        Run();
    }
}

TEST_P(EveryOperationTest, MakesItsRequestOfTheWholeFolder) {
    const auto isTheFolder = Truly([](const FolderConfiguration& folder) { return IsSame(folder, WholeFolder()); });
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, _, _)).Times(0);
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, isTheFolder, _, _)).Times(AnyNumber());
    EXPECT_CALL(*_httpFactory, CreateFolderRequest(_, _, _)).Times(0);
    EXPECT_CALL(*_httpFactory, CreateFolderRequest(_, _folderUrl, isTheFolder)).Times(AnyNumber());
    AnswerWith(207);
    Run();
}

TEST_P(EveryOperationTest, SendsItsRequestWithTheAccountAndTheAuthenticatorsOfTheManager) {
    EXPECT_CALL(*_httpFactory, CreateRequestExecutor(_, _)).Times(0);
    EXPECT_CALL(*_httpFactory, CreateRequestExecutor(ServerId, _authenticatorFactory));
    AnswerWith(207);
    Run();
}

TEST_P(EveryOperationTest, KnowsTheStateInWhichItsRequestEndedUnlessItAsksForAFile) {
    AnswerWith(207);
    _executor->state = IHttpRequest::StateAborted;
    Run();
    EXPECT_EQ(FolderManagerAccess::LastRequestState(_manager),
              std::strcmp(GetParam().name, "FileExists") == 0 ? IHttpRequest::StateNone : IHttpRequest::StateAborted);
}

INSTANTIATE_TEST_SUITE_P(Operations, EveryOperationTest, testing::ValuesIn(Operations));

/// Knows every folder, by the id "known".
class KnowingManager : public DrovaneRemoteFolderManager {
public:
    using DrovaneRemoteFolderManager::DrovaneRemoteFolderManager;
    bool GetFolderProperties(const FolderConfiguration& folder, FolderConfiguration& result) override {
        asked << folder.serverPath;
        result.setServerFolderId(Text("known"));
        result.ownerId = Text("known owner");
        result.accessMask = 9;
        return true;
    }

    QStringList asked;
};

class KnowingManagerTest : public DrovaneRemoteFolderManagerTest {
protected:
    void ExpectKnownFolder(const char* serverPath) const {
        FolderConfiguration expected = WholeFolder();
        expected.serverPath = Text(serverPath);
        expected.setServerFolderId(Text("known"));
        expected.ownerId = Text("known owner");
        expected.accessMask = 9;
        EXPECT_TRUE(IsSame(_folder, expected));
    }

    KnowingManager _knowing{_urlBuilder, ServerId, _authenticatorFactory, _httpFactory, _configurationFactory};
};

TEST_F(KnowingManagerTest, WhetherAFolderIsThereIsAskedOfTheOverride) {
    AnswerWith(404);
    EXPECT_TRUE(_knowing.FolderExists(_folder));
    EXPECT_EQ(_knowing.asked, QStringList() << Text("Projects/A"));
    EXPECT_TRUE(IsSame(_folder, WholeFolder()));
}

TEST_F(KnowingManagerTest, APropertyOfAFolderThatIsThereAlreadyIsAskedOfTheOverride) {
    AnswerWith(400, Reason("existing file already exists"));
    EXPECT_EQ(Words(_knowing.CreateFolder(_folder, QString(), false)), "results 0");
    EXPECT_EQ(_knowing.asked, QStringList() << Text("Projects/A"));
    ExpectKnownFolder("Projects/A");
}

TEST_F(KnowingManagerTest, AFolderOnTheWayIsAskedOfTheOverride) {
    _folder.serverPath = Text("Projects/A/B");
    EXPECT_EQ(Words(_knowing.CreateFolder(_folder, QString(), true)), "results 0");
    EXPECT_EQ(_knowing.asked, QStringList() << Text("Projects/A") << Text("Projects/A/B"));
    ExpectKnownFolder("Projects/A/B");
}

// --- Is it there

TEST_F(DrovaneRemoteFolderManagerTest, AFolderWithAnIdIsAskedForByItsId) {
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, QString(), 10));
    EXPECT_CALL(*_httpFactory, CreateFolderRequest(2, _folderUrl, _));
    EXPECT_CALL(*_httpFactory, CreateRequestExecutor(ServerId, _));
    AnswerWith(404);
    EXPECT_FALSE(_manager.FolderExists(_folder));
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderWithoutAnIdIsAskedForByItsPath) {
    _folder.setServerFolderId(QString());
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, QString(), 11));
    AnswerWith(404);
    EXPECT_FALSE(_manager.FolderExists(_folder));
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderWithoutAUrlIsNotThereAndLogged) {
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, _, _)).WillOnce(Return(nullptr));
    FolderConfiguration result;
    EXPECT_FALSE(_manager.GetFolderProperties(_folder, result));
    EXPECT_TRUE(result.serverPath.isEmpty());
    EXPECT_TRUE(_executor->executed.isEmpty());
    ASSERT_EQ(_log.Records().size(), 1U);
    EXPECT_EQ(_log.Records()[0].level, ErrorLevel);
    EXPECT_EQ(_log.Records()[0].text, "Failed to get folder properties for folder Projects/A. Failed to build url.");
    EXPECT_THAT(_log.Records()[0].function, HasSubstr("DrovaneRemoteFolderManager::GetFolderProperties(const"));
}

TEST_F(DrovaneRemoteFolderManagerTest, ThePropertiesOfAFolderAreTheFolderAndTheAnswersHeaders) {
    AnswerWith(200, {{"X-Ovs-Id", "new-id"}, {"other", "x"}, {"x-OVS-ownerid", "new-owner"}});
    FolderConfiguration result;
    EXPECT_TRUE(_manager.GetFolderProperties(_folder, result));
    FolderConfiguration expected = WholeFolder();
    expected.setServerFolderId(Text("new-id"));
    expected.ownerId = Text("new-owner");
    EXPECT_TRUE(IsSame(result, expected));
    EXPECT_TRUE(IsSame(_folder, WholeFolder()));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, EmptyHeaderValuesChangeNothing) {
    EXPECT_TRUE(FolderManagerAccess::UpdateFromHeaders(_manager, {{"x-ovs-id", ""}, {"x-ovs-ownerid", ""}}, _folder));
    EXPECT_EQ(_folder.getServerFolderId(), Text("id-A"));
    EXPECT_EQ(_folder.ownerId, Text("owner-A"));
}

TEST_F(DrovaneRemoteFolderManagerTest, HeadersBehindAnEmptyOneCount) {
    EXPECT_TRUE(FolderManagerAccess::UpdateFromHeaders(
        _manager, {{"x-ovs-id", ""}, {"x-ovs-ownerid", "new-owner"}, {"", ""}, {"x-ovs-id", "new-id"}}, _folder));
    EXPECT_EQ(_folder.getServerFolderId(), Text("new-id"));
    EXPECT_EQ(_folder.ownerId, Text("new-owner"));
}

TEST_F(DrovaneRemoteFolderManagerTest, NoHeadersSayNothing) {
    EXPECT_FALSE(FolderManagerAccess::UpdateFromHeaders(_manager, Headers(), _folder));
    EXPECT_TRUE(IsSame(_folder, WholeFolder()));
}

TEST_F(DrovaneRemoteFolderManagerTest, OnlyTheHeadersOfTheIdentityChangeAFolder) {
    EXPECT_TRUE(FolderManagerAccess::UpdateFromHeaders(
        _manager,
        {{"x-ovs-owner", "x"}, {"ovs-id", "x"}, {"x-ovs-id2", "x"}, {"id", "x"}, {"x-ovs-reason-phrase", "x"}},
        _folder));
    EXPECT_TRUE(IsSame(_folder, WholeFolder()));
}

TEST_F(DrovaneRemoteFolderManagerTest, EveryHeaderOfTheIdentityIsReadInItsOrderAsUtf8) {
    EXPECT_TRUE(FolderManagerAccess::UpdateFromHeaders(
        _manager,
        {{"x-ovs-id", "first"}, {"x-ovs-ownerid", "\xC3\xA9"}, {"x-ovs-id", "\xC3\xBC"}, {"x-ovs-ownerid", ""}},
        _folder));
    FolderConfiguration expected = WholeFolder();
    expected.setServerFolderId(Text("\xC3\xBC"));
    expected.ownerId = Text("\xC3\xA9");
    EXPECT_TRUE(IsSame(_folder, expected));
}

TEST_F(DrovaneRemoteFolderManagerTest, AnAnswerWithoutHeadersIsLoggedAndStillAFolder) {
    AnswerWith(200);
    FolderConfiguration result;
    EXPECT_TRUE(_manager.GetFolderProperties(_folder, result));
    EXPECT_EQ(result.getServerFolderId(), Text("id-A"));
    ASSERT_EQ(_log.Records().size(), 1U);
    EXPECT_EQ(_log.Records()[0].level, ErrorLevel);
    EXPECT_EQ(
        _log.Records()[0].text,
        "Failed to update folder config from response headers for folder Projects/A. Response headers from server "
        "is empty.");
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderThatIsNotThereLeavesTheResultAlone) {
    for (const int status : {400, 404}) {
        AnswerWith(status, {{"x-ovs-id", "new-id"}});
        FolderConfiguration result;
        EXPECT_FALSE(_manager.GetFolderProperties(_folder, result));
        EXPECT_TRUE(IsSame(result, FolderConfiguration()));
    }
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderThatCannotBeAskedForLeavesTheResultAlone) {
    for (const int status : {302, 403}) {
        AnswerWith(status, {{"x-ovs-id", "new-id"}});
        FolderConfiguration result;
        EXPECT_THROW(_manager.GetFolderProperties(_folder, result), HttpException);
        EXPECT_TRUE(IsSame(result, FolderConfiguration()));
    }
}

TEST_F(DrovaneRemoteFolderManagerTest, AFileIsAskedForByItsPathAndItsServerId) {
    FileConfiguration file;
    file.serverPath = Text("Projects/A/f.txt");
    file.localPath = Text("/home/work/f.txt");
    file.serverId = 11;
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("Projects/A/f.txt")));
    EXPECT_CALL(*_httpFactory, CreateFileRequest(_url, 11, 0));
    AnswerWith(200);
    EXPECT_TRUE(_manager.FileExists(file));
}

TEST_F(DrovaneRemoteFolderManagerTest, AFileWithoutAUrlIsAskedForAllTheSame) {
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, _)).Times(2).WillRepeatedly(Return(nullptr));
    AnswerWith(200);
    EXPECT_TRUE(_manager.FileExists(FileConfiguration()));
    AnswerWith(500);
    try {
        _manager.FileExists(FileConfiguration());
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.Message(), Text("FileExists failed for url . Error code: 500."));
    }
}

// --- Creation

const char* const Created =
    "<Response><Folders><Folder><id>new-id</id><ownerId>new-owner</ownerId></Folder></Folders></Response>";

TEST_F(DrovaneRemoteFolderManagerTest, ACreatedFolderHasTheIdentityOfTheAnswer) {
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, Text("parent"), 12));
    EXPECT_CALL(*_httpFactory, CreateFolderRequest(3, _folderUrl, _));
    AnswerWith(201, Headers(), Created);
    EXPECT_EQ(Words(_manager.CreateFolder(_folder, Text("parent"), false)), "results 0");
    EXPECT_EQ(_folder.getServerFolderId(), Text("new-id"));
    EXPECT_EQ(_folder.ownerId, Text("new-owner"));
    EXPECT_EQ(_folder.accessMask, 31);
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, AnyAnswerBelow400ToACreationIsRead) {
    for (const int status : {1, 200, 302, 304, 399}) {
        _folder = WholeFolder();
        AnswerWith(status, Headers(), Created);
        EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), status);
        EXPECT_EQ(_folder.getServerFolderId(), Text("new-id"));
        EXPECT_EQ(_folder.accessMask, 31);
    }
}

TEST_F(DrovaneRemoteFolderManagerTest, AnAnswerFrom400OnToACreationIsNotReadAsAFolder) {
    for (const int status : {400, 401, 404, 409, 500}) {
        AnswerWith(status, {{"x-ovs-id", "new-id"}}, Created);
        EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), status);
    }
    AnswerWith(0, {{"x-ovs-id", "new-id"}}, Created);
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 0);
    EXPECT_TRUE(IsSame(_folder, WholeFolder()));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, AnAnswerThatCannotBeReadIsACreationAllTheSame) {
    AnswerWith(201, Headers(), "<html/>");
    EXPECT_EQ(Words(_manager.CreateFolder(_folder, QString(), false)), "results 0");
    EXPECT_TRUE(IsSame(_folder, WholeFolder()));
}

TEST_F(DrovaneRemoteFolderManagerTest, TheResultOfAnOperationCountsNothing) {
    AnswerWith(201, Headers(), Created);
    for (const SyncResults& results : {_manager.CreateFolder(_folder, QString(), false), _manager.DeleteFolder(_folder),
                                       _manager.MoveFolder(_folder, _folder)}) {
        const int* const counters = &results.localFilesCreated;
        EXPECT_TRUE(std::all_of(counters, counters + 16, [](int counter) { return counter == 0; }));
    }
}

TEST_F(DrovaneRemoteFolderManagerTest, WithoutAUrlAFolderIsNotCreated) {
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, _, _)).WillOnce(Return(nullptr));
    try {
        _manager.CreateFolder(_folder, QString(), false);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.Message(), Text("CreateFolder failed for url http://service.test/Projects/A. Error code: 400."));
        EXPECT_EQ(e.StatusCode(), 400);
    }
    EXPECT_TRUE(_executor->executed.isEmpty());
    ASSERT_EQ(_log.Records().size(), 1U);
    EXPECT_EQ(_log.Records()[0].level, ErrorLevel);
    EXPECT_EQ(_log.Records()[0].text, "Failed to create server folder Projects/A. Failed to build url.");
}

TEST_F(DrovaneRemoteFolderManagerTest, ACreationWithoutAnAnswerIs503OnlyInStateFive) {
    AnswerWith(0);
    _executor->state = IHttpRequest::StateFailed;
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 503);
    _executor->state = IHttpRequest::StateAnswered;
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 0);
}

class ExistingFolderTest : public DrovaneRemoteFolderManagerTest {
protected:
    ExistingFolderTest() {
        ON_CALL(*_httpFactory, CreateFolderRequest(2, _, _)).WillByDefault(Return(_query));
        _query->answer.statusCode = 200;
        _query->answer.responseHeaders = {{"x-ovs-id", "existing-id"}, {"x-ovs-ownerid", "existing-owner"}};
    }

    const std::shared_ptr<tests::FakeHttpRequest> _query = std::make_shared<tests::FakeHttpRequest>();
};

TEST_F(ExistingFolderTest, ItsPropertiesAreFetchedInPlaceOfAFailure) {
    for (const char* reason :
         {"Existing file: already exists", "exists already file existing", "FILE.EXISTS:ALREADY\tEXISTING and more"}) {
        AnswerWith(400, Reason(reason));
        _folder.setServerFolderId(Text("id-A"));
        EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 200) << reason;
        EXPECT_EQ(_folder.getServerFolderId(), Text("existing-id"));
        EXPECT_EQ(_folder.ownerId, Text("existing-owner"));
        EXPECT_EQ(_folder.accessMask, 5);
    }
    ASSERT_EQ(_log.Records().size(), 3U);
    EXPECT_EQ(_log.Records()[0].level, InfoLevel);
    EXPECT_EQ(
        _log.Records()[0].text,
        "Failed to create folder Projects/A. The folder already exists in server. Getting the folder properties.");
    EXPECT_THAT(_log.Records()[0].function, HasSubstr("DrovaneRemoteFolderManager::_CreateFolder("));
}

// Every word of `words` but the first after `separator`.
QByteArray Joined(const QList<QByteArray>& words, const char* separator) {
    QByteArray text = words.value(0);
    for (int i = 1; i < words.size(); ++i) {
        text += separator + words.at(i);
    }
    return text;
}

// In UTF-8.
const char* const Separators[] = {
    " ",        "\t",       "\n",           "\v",           "\f",           "\r",           ":",   ".",
    "\xC2\x85", "\xC2\xA0", "\xE1\x9A\x80", "\xE2\x80\x83", "\xE2\x80\xA8", "\xE3\x80\x80", " .: "};
const char* const NoSeparators[] = {",", ";", "-", "_", "/", "!", "\"", "'", "(", "0", "\xC2\xB7", "\xE2\x80\x8B", ""};

TEST_F(ExistingFolderTest, TheWordsOfAReasonLieBetweenBlanksOfEveryKindColonsAndFullStops) {
    const QList<QByteArray> existing = {"existing", "file", "already", "exists"};
    const QList<QByteArray> missing = {"does", "not", "exist"};
    for (const char* separator : Separators) {
        AnswerWith(400, Reason(Joined(existing, separator).constData()));
        EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 200) << separator;
        AnswerWith(400, Reason(Joined(missing, separator).constData()));
        EXPECT_EQ(Words(_manager.DeleteFolder(_folder)), "results 2") << separator;
    }
    for (const char* separator : NoSeparators) {
        AnswerWith(400, Reason(Joined(existing, separator).constData()));
        EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 400) << separator;
        AnswerWith(400, Reason(Joined(missing, separator).constData()));
        EXPECT_THROW(_manager.DeleteFolder(_folder), HttpException) << separator;
    }
}

TEST_F(ExistingFolderTest, AReasonIsReadAsUtf8) {
    // In Latin-1 the second byte would be a blank.
    AnswerWith(400, Reason("existing file already \xC3\xA0"
                           "exists"));
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 400);
}

TEST_F(ExistingFolderTest, OnlyTheFirstReasonCountsAfterWhateverHeaders) {
    const QPair<QByteArray, QByteArray> good("x-ovs-REASON-phrase", "existing file already exists - does not exist");
    const QPair<QByteArray, QByteArray> bad("x-ovs-reason-phrase", "something else");
    const QPair<QByteArray, QByteArray> other("x-ovs-reason", "something else");
    AnswerWith(400, {other, good, bad});
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 200);
    EXPECT_EQ(Words(_manager.DeleteFolder(_folder)), "results 2");
    AnswerWith(400, {bad, good});
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 400);
    EXPECT_THROW(_manager.DeleteFolder(_folder), HttpException);
    AnswerWith(400, {{"x-ovs-reason", "existing file already exists - does not exist"}});
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 400);
    EXPECT_THROW(_manager.DeleteFolder(_folder), HttpException);
}

TEST_F(ExistingFolderTest, AReasonThatLacksAWordIsAFailure) {
    for (const char* reason : {"file already exists", "existing already exists", "existing file exists",
                               "existing file already", "existingfile already exists", ""}) {
        AnswerWith(400, Reason(reason));
        EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 400) << reason;
    }
    AnswerWith(401, Reason("existing file already exists"));
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 401);
    EXPECT_EQ(_folder.getServerFolderId(), Text("id-A"));
}

TEST_F(ExistingFolderTest, OneWhosePropertiesCannotBeHadIsAFailure) {
    AnswerWith(400, Reason("existing file already exists"));
    _query->answer.statusCode = 404;
    EXPECT_EQ(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), 400);
    _query->answer.statusCode = 500;
    EXPECT_THROW(FolderManagerAccess::CreateFolder(_manager, _folder, QString()), HttpException);
}

class CreateParentsTest : public DrovaneRemoteFolderManagerTest {
protected:
    CreateParentsTest() {
        ON_CALL(*_urlBuilder, BuildFolderUrl(_, _, _, _))
            .WillByDefault([this](const sync::config::ServerConfiguration&, const FolderConfiguration& folder,
                                  const QString& fileName, int urlKind) {
                _steps.push_back((urlKind == 12 ? "create " : "look at ") + folder.serverPath.toStdString() +
                                 (fileName.isEmpty() ? "" : " in " + fileName.toStdString()));
                _asked.push_back(folder);
                return _url;
            });
        ON_CALL(*_httpFactory, CreateFolderRequest(_, _, _))
            .WillByDefault([this](int kind, const std::shared_ptr<QUrl>&, const FolderConfiguration& folder) {
                auto request = std::make_shared<tests::FakeHttpRequest>();
                const QByteArray id = "id of " + folder.serverPath.toUtf8();
                if (kind == 2) {
                    request->answer.statusCode = _existing.contains(folder.serverPath) ? 200 : 404;
                    request->answer.responseHeaders = {{"x-ovs-id", id}, {"x-ovs-ownerid", "somebody"}};
                } else {
                    request->answer.statusCode = _forbidden.contains(folder.serverPath) ? _refusal : 201;
                    request->answer.responseBody =
                        "<Response><Folders><Folder><id>" + id + "</id></Folder></Folders></Response>";
                }
                return request;
            });
        _folder = FolderConfiguration();
        _folder.serverRootPath = Text("Root");
        _folder.serverKey = 3;
        _folder.serverId = FolderServerId;
    }

    void Create(const char* path, const char* parentFolderId = "") {
        _folder.serverPath = Text(path);
        EXPECT_EQ(Words(_manager.CreateFolder(_folder, Text(parentFolderId), true)), "results 0");
    }

    QStringList _existing;
    QStringList _forbidden;
    int _refusal = 403;
    std::vector<std::string> _steps;
    std::vector<FolderConfiguration> _asked;
};

TEST_F(CreateParentsTest, EveryMissingFolderIsCreatedInsideTheOneBefore) {
    _existing << Text("Root/a");
    Create("Root/a/b/c");
    EXPECT_THAT(_steps, ElementsAre("look at Root/a", "look at Root/a/b", "create Root/a/b in id of Root/a",
                                    "look at Root/a/b/c", "create Root/a/b/c in id of Root/a/b"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("id of Root/a/b/c"));
    EXPECT_EQ(_folder.accessMask, 31);
}

TEST_F(CreateParentsTest, TheFirstFolderIsCreatedInsideTheGivenOne) {
    Create("Root/a/b", "top");
    EXPECT_THAT(_steps, ElementsAre("look at Root/a", "create Root/a in top", "look at Root/a/b",
                                    "create Root/a/b in id of Root/a"));
}

TEST_F(CreateParentsTest, AFolderIsLookedForByItsPathWhateverTheIdOfTheLast) {
    _folder.setServerFolderId(Text("id-A"));
    Create("Root/a/b");
    for (const FolderConfiguration& step : _asked) {
        EXPECT_TRUE(step.getServerFolderId().isEmpty());
    }
}

TEST_F(CreateParentsTest, TheFoldersOnTheWayHaveWhatTheyNeed) {
    Create("Root/a/b");
    const FolderConfiguration& step = _asked.back();
    EXPECT_EQ(step.serverPath, Text("Root/a/b"));
    EXPECT_EQ(step.companionServerPath, Text("Root/a/b"));
    EXPECT_EQ(step.name, Text("b"));
    EXPECT_EQ(step.resourceId, Text("0"));
    EXPECT_EQ(step.serverKey, 3);
    EXPECT_EQ(step.serverId, FolderServerId);
    EXPECT_TRUE(step.serverRootPath.isEmpty());
}

TEST_F(CreateParentsTest, TheFoldersOnTheWayHaveNothingElseOfTheFolder) {
    _folder = WholeFolder();
    _folder.serverRootPath = Text("Root");
    Create("Root/a");
    FolderConfiguration expected;
    expected.serverPath = Text("Root/a");
    expected.companionServerPath = Text("Root/a");
    expected.name = Text("a");
    expected.resourceId = Text("0");
    expected.serverKey = 3;
    expected.serverId = FolderServerId;
    ASSERT_EQ(_asked.size(), 2U);
    EXPECT_TRUE(IsSame(_asked[0], expected));
    EXPECT_TRUE(IsSame(_asked[1], expected));
}

TEST_F(CreateParentsTest, TheNameOfAFolderOnTheWayIsAllBehindTheLastSlash) {
    Create("Root/a.b/.c d.tar.gz");
    EXPECT_EQ(_asked.front().name, Text("a.b"));
    EXPECT_EQ(_asked.back().name, Text(".c d.tar.gz"));
}

TEST_F(CreateParentsTest, OnlyTheIdentityOfTheLastComesIntoTheFolder) {
    _existing << Text("Root/a");
    _folder = WholeFolder();
    _folder.serverRootPath = Text("Root");
    FolderConfiguration expected = _folder;
    expected.serverPath = Text("Root/a");
    expected.setServerFolderId(Text("id of Root/a"));
    expected.ownerId = Text("somebody");
    expected.accessMask = 0;
    Create("Root/a");
    EXPECT_TRUE(IsSame(_folder, expected));
}

TEST_F(CreateParentsTest, AFolderThatIsThereGivesItsIdentityWithoutACreation) {
    _existing << Text("Root/a");
    Create("Root/a");
    EXPECT_THAT(_steps, ElementsAre("look at Root/a"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("id of Root/a"));
    EXPECT_EQ(_folder.accessMask, 0);
}

TEST_F(CreateParentsTest, TheRootItselfNeedsNothing) {
    Create("Root");
    EXPECT_THAT(_steps, IsEmpty());
    EXPECT_TRUE(_folder.getServerFolderId().isEmpty());
}

TEST_F(CreateParentsTest, TheRootIsFoundInAnyLetterCaseAndKeepsItsOwn) {
    Create("rOOT//a/");
    EXPECT_THAT(_steps, ElementsAre("look at Root/a", "create Root/a"));
}

TEST_F(CreateParentsTest, ASiblingWhoseNameStartsWithTheRootsIsSplitWhole) {
    Create("Rootlet/a");
    EXPECT_THAT(_steps, ElementsAre("look at Root/Rootlet", "create Root/Rootlet", "look at Root/Rootlet/a",
                                    "create Root/Rootlet/a in id of Root/Rootlet"));
}

TEST_F(CreateParentsTest, APathThatDoesNotLieBelowTheRootIsSplitWhole) {
    Create("Other/a");
    EXPECT_THAT(_steps, ElementsAre("look at Root/Other", "create Root/Other", "look at Root/Other/a",
                                    "create Root/Other/a in id of Root/Other"));
}

TEST_F(CreateParentsTest, WithoutARootThePathStartsWithItsFirstName) {
    _folder.serverRootPath.clear();
    Create("a/b");
    EXPECT_THAT(_steps, ElementsAre("look at a", "create a", "look at a/b", "create a/b in id of a"));
}

TEST_F(CreateParentsTest, AFailureStopsTheWalk) {
    _forbidden << Text("Root/a/b");
    _folder.serverPath = Text("Root/a/b/c");
    try {
        _manager.CreateFolder(_folder, QString(), true);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.StatusCode(), 403);
    }
    EXPECT_EQ(_steps.back(), "create Root/a/b in id of Root/a");
    EXPECT_TRUE(_folder.getServerFolderId().isEmpty());
    EXPECT_TRUE(_folder.ownerId.isEmpty());
    EXPECT_EQ(_folder.accessMask, 0);
}

TEST_F(CreateParentsTest, EveryStatusFrom400OnStopsTheWalk) {
    _forbidden << Text("Root/a");
    _folder.serverPath = Text("Root/a/b");
    for (const int status : {400, 401, 404, 500}) {
        _steps.clear();
        _refusal = status;
        try {
            _manager.CreateFolder(_folder, QString(), true);
            FAIL() << "nothing was thrown";
        } catch (const HttpException& e) {
            EXPECT_EQ(e.StatusCode(), status);
            EXPECT_EQ(e.Message(),
                      Text("CreateFolder failed for url http://service.test/Projects/A. Error code: %1.").arg(status));
        }
        EXPECT_THAT(_steps, ElementsAre("look at Root/a", "create Root/a"));
    }
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("Root/a/b")));
    EXPECT_THROW(_manager.CreateFolder(_folder, QString(), true), HttpException);
}

TEST_F(CreateParentsTest, WithoutUrlsTheFirstFolderFailsWithARecordForEachQuestion) {
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, _, _)).Times(2).WillRepeatedly(Return(nullptr));
    _folder.serverPath = Text("Root/a/b");
    try {
        _manager.CreateFolder(_folder, QString(), true);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.StatusCode(), 400);
    }
    ASSERT_EQ(_log.Records().size(), 2U);
    EXPECT_EQ(_log.Records()[0].text, "Failed to get folder properties for folder Root/a. Failed to build url.");
    EXPECT_EQ(_log.Records()[1].text, "Failed to create server folder Root/a. Failed to build url.");
    EXPECT_TRUE(_executor->executed.isEmpty());
}

TEST_F(CreateParentsTest, ARedirectOnTheWayIsACreation) {
    _forbidden << Text("Root/a");
    _refusal = 302;
    Create("Root/a/b");
    EXPECT_THAT(_steps,
                ElementsAre("look at Root/a", "create Root/a", "look at Root/a/b", "create Root/a/b in id of Root/a"));
}

// --- What a creation answers

class CreateAnswerTest : public DrovaneRemoteFolderManagerTest {
protected:
    bool Update(const QByteArray& body) { return FolderManagerAccess::UpdateFromBody(_manager, body, _folder); }

    void ExpectFailure(const QByteArray& body, const std::string& text) {
        const size_t before = _log.Records().size();
        EXPECT_FALSE(Update(body));
        EXPECT_TRUE(IsSame(_folder, WholeFolder()));
        ASSERT_EQ(_log.Records().size(), before + 1);
        EXPECT_EQ(_log.Records().back().level, ErrorLevel);
        EXPECT_THAT(_log.Records().back().text,
                    HasSubstr("Failed to update folder config after creating folder Projects/A. " + text));
    }
};

TEST_F(CreateAnswerTest, IsReadWhereverItsElementsLie) {
    EXPECT_TRUE(
        Update("<?xml version=\"1.0\"?><x><Response><y><Folders><z><Folder><w><id>deep</id></w></Folder></z>"
               "</Folders></y></Response></x>"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("deep"));
}

TEST_F(CreateAnswerTest, TheFirstOfSeveralCounts) {
    EXPECT_TRUE(
        Update("<Response><Folders><Folder><id>first</id><id>second</id></Folder>"
               "<Folder><id>third</id></Folder></Folders></Response>"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("first"));
}

TEST_F(CreateAnswerTest, OnlyTheFirstOfEachElementIsLookedInto) {
    const std::string text = "Response xml doesn't contain node path Response/Folders/Folder.";
    const QByteArray whole = "<Folders><Folder><id>x</id></Folder></Folders>";
    ExpectFailure("<a><Response/><Response>" + whole + "</Response></a>", text);
    ExpectFailure("<a><b><Response/></b><Response>" + whole + "</Response></a>", text);
    ExpectFailure("<Response><Folders/>" + whole + "</Response>", text);
    EXPECT_TRUE(Update("<Response><Folders><Folder/><Folder><id>x</id></Folder></Folders></Response>"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("id-A"));
    EXPECT_TRUE(Update("<Response><Folders><Folder><id/><id>x</id></Folder></Folders></Response>"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("id-A"));
}

TEST_F(CreateAnswerTest, NothingButTheIdentityChanges) {
    EXPECT_TRUE(
        Update("<Response><Folders><Folder><name>x</name><ID>x</ID><ownerid>x</ownerid><accessMask>1</accessMask>"
               "<id>1\xC3\xA9</id><ownerId>2\xC3\xBC</ownerId></Folder></Folders></Response>"));
    FolderConfiguration expected = WholeFolder();
    expected.setServerFolderId(Text("1\xC3\xA9"));
    expected.ownerId = Text("2\xC3\xBC");
    expected.accessMask = 31;
    EXPECT_TRUE(IsSame(_folder, expected));
}

TEST_F(CreateAnswerTest, ElementsOfANamespaceGoByTheirNamesWithoutPrefix) {
    EXPECT_TRUE(
        Update("<p:Response xmlns:p=\"urn:x\" xmlns=\"urn:y\"><p:Folders><Folder><p:id>x</p:id></Folder></p:Folders>"
               "</p:Response>"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("x"));
}

TEST_F(CreateAnswerTest, WithoutAnIdOnlyTheAccessMaskChanges) {
    EXPECT_TRUE(Update("<Response><Folders><Folder/></Folders></Response>"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("id-A"));
    EXPECT_EQ(_folder.ownerId, Text("owner-A"));
    EXPECT_EQ(_folder.accessMask, 31);
}

TEST_F(CreateAnswerTest, AnEmptyIdLeavesTheOldOneAndAnEmptyOwnerDoesNot) {
    EXPECT_TRUE(Update("<Response><Folders><Folder><id></id><ownerId/></Folder></Folders></Response>"));
    EXPECT_EQ(_folder.getServerFolderId(), Text("id-A"));
    EXPECT_TRUE(_folder.ownerId.isEmpty());
}

TEST_F(CreateAnswerTest, NothingIsAnError) {
    ExpectFailure("", "Response from server is empty.");
}

TEST_F(CreateAnswerTest, WhatIsNotWellFormedIsAnErrorWithItsPlaceAndTheBody) {
    ExpectFailure("<Response>\n<Folders></Response>", "Error parsing response xml: ");
    EXPECT_THAT(_log.Records().back().text, HasSubstr("at line 2, column "));
    EXPECT_THAT(_log.Records().back().text, HasSubstr("body = <Response>\n<Folders></Response>"));
    ExpectFailure("<a>\n<b></a>", "Error parsing response xml: tag mismatch at line 2, column 7, body = <a>\n<b></a>");
}

TEST_F(CreateAnswerTest, WhatIsWrongAndWhereIsWhatTheParserOfTheDocumentSays) {
    for (const char* body : {"<Response>\n<Folders></Response>", "not xml", "<a b='<'/>", "<a>\n\n &</a>", "<a/>x",
                             "\n<?xml version='1.0'?><a/>", "<a><b>"}) {
        QDomDocument document;
        QString message;
        int line = 0;
        int column = 0;
        EXPECT_FALSE(document.setContent(QByteArray(body), true, &message, &line, &column)) << body;
        const QString place = Text("%1 at line %2, column %3, body = ");
        ExpectFailure(body, "Error parsing response xml: " + place.arg(message).arg(line).arg(column).toStdString());
    }
}

TEST_F(CreateAnswerTest, WhatTheParserOfTheDocumentReadsIsRead) {
    const QByteArray begin = "<Response><Folders><Folder><id>";
    const QByteArray end = "</id></Folder></Folders></Response>";
    const QByteArray whole = begin + "new" + end;
    for (const QByteArray& body :
         {QByteArray("<?xml version=\"1.0\" encoding=\"unheard-of\"?>") + whole,
          QByteArray("<?xml version=\"1.1\"?>") + whole, QByteArray("<!DOCTYPE Response>") + whole,
          QByteArray("<!DOCTYPE Response SYSTEM \"http://127.0.0.1:1/response.dtd\">") + whole,
          QByteArray("<!DOCTYPE Response []>") + whole, QByteArray("<Response a=\"1\" a=\"2\">") + whole.mid(10),
          begin + "new" + QByteArray("</id><p:q/></Folder></Folders></Response>"), begin + "n&unheard-of;ew" + end}) {
        _folder.setServerFolderId(QString());
        EXPECT_TRUE(Update(body)) << body.constData();
        EXPECT_EQ(_folder.getServerFolderId(), Text("new")) << body.constData();
    }
    EXPECT_TRUE(Update(begin + "a\x01" + "b" + end));
    EXPECT_EQ(_folder.getServerFolderId(), Text("a\x01"
                                                "b"));
    EXPECT_TRUE(Update(begin + "a\xFF" + "b" + end));
    EXPECT_EQ(_folder.getServerFolderId(), Text("a\xEF\xBF\xBD"
                                                "b"));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(CreateAnswerTest, DeclarationsOfADocumentTypeAreAnError) {
    for (const char* declaration : {"<!ENTITY b \"cccccccccc\"><!ENTITY d \"&b;&b;&b;&b;&b;&b;&b;&b;\">",
                                    "<!ENTITY d SYSTEM \"file:///etc/hostname\">", "<!ENTITY % d \"x\">",
                                    "<!ENTITY % d SYSTEM \"file:///etc/hostname\"> %d;", "<!ATTLIST id d CDATA \"x\">",
                                    "<!NOTATION d SYSTEM \"d\">", "<!ENTITY d SYSTEM \"d\" NDATA x>"}) {
        ExpectFailure(QByteArray("<!DOCTYPE a [") + declaration +
                          "]><Response><Folders><Folder><id>&d;</id></Folder></Folders></Response>",
                      "Error parsing response xml: declarations of a document type are not accepted at line 1");
    }
}

TEST_F(CreateAnswerTest, NestingIsReadToItsLimit) {
    const auto nested = [](int depth) {
        return QByteArray("<Response><Folders><Folder>") + QByteArray("<id>").repeated(depth - 3) + "new" +
               QByteArray("</id>").repeated(depth - 3) + "</Folder></Folders></Response>";
    };
    EXPECT_TRUE(Update(nested(100)));
    EXPECT_EQ(_folder.getServerFolderId(), Text("new"));
    _folder.setServerFolderId(Text("id-A"));
    _folder.accessMask = 5;
    ExpectFailure(nested(101), "Error parsing response xml: elements are nested too deeply at line 1");
}

TEST_F(CreateAnswerTest, NestingAfterWhatAnotherParserRefusesIsAnError) {
    ExpectFailure("<?xml version=\"1.1\"?><a b='1' b='2'>\xFF&x;\x01" + QByteArray("<a>").repeated(1000000),
                  "Error parsing response xml: elements are nested too deeply at line 1");
}

TEST_F(CreateAnswerTest, NestingWithoutEndIsAnError) {
    QByteArray body;
    for (int i = 0; i < 1000000; ++i) {
        body += "<a>";
    }
    ExpectFailure(body, "Error parsing response xml: elements are nested too deeply at line 1");
}

TEST_F(CreateAnswerTest, ABodyWithAnErrorIsShownAsUtf8) {
    ExpectFailure("<Response>\xC3\xA9<a></Response>", "Error parsing response xml: ");
    EXPECT_THAT(_log.Records().back().text, HasSubstr("body = <Response>\xC3\xA9<a></Response>"));
}

TEST_F(CreateAnswerTest, AnotherDocumentIsAnError) {
    const std::string text = "Response xml doesn't contain node path Response/Folders/Folder.";
    ExpectFailure("<html/>", text);
    ExpectFailure("<Response/>", text);
    ExpectFailure("<Response><Folders/></Response>", text);
    ExpectFailure("<Folders><Folder/></Folders>", text);
}

// --- Deletion and move

TEST_F(DrovaneRemoteFolderManagerTest, AFolderWithoutAnIdIsNotDeleted) {
    _folder.setServerFolderId(QString());
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, _, _)).Times(0);
    try {
        _manager.DeleteFolder(_folder);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.Message(), Text("DeleteFolder failed for url Projects/A. Server folder id is blank."));
        EXPECT_EQ(e.StatusCode(), 400);
        EXPECT_TRUE(e.Url().isEmpty());
    }
    EXPECT_TRUE(_executor->executed.isEmpty());
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, ABlankIdIsAnId) {
    _folder.setServerFolderId(Text(" "));
    AnswerWith(204);
    EXPECT_EQ(Words(_manager.DeleteFolder(_folder)), "results 2");
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderWithoutAUrlIsNotDeleted) {
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, QString(), 13)).WillOnce(Return(nullptr));
    try {
        _manager.DeleteFolder(_folder);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.Message(), Text("Failed to delete folder Projects/A. Failed to build url."));
        EXPECT_EQ(e.StatusCode(), 400);
        EXPECT_TRUE(e.Url().isEmpty());
    }
    EXPECT_TRUE(_executor->executed.isEmpty());
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderIsDeletedByRequestKindSix) {
    EXPECT_CALL(*_urlBuilder, BuildFolderUrl(_, _, QString(), 13));
    EXPECT_CALL(*_httpFactory, CreateFolderRequest(6, _folderUrl, _));
    AnswerWith(204);
    EXPECT_EQ(Words(_manager.DeleteFolder(_folder)), "results 2");
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderThatTheServiceDoesNotHaveCountsAsDeleted) {
    for (const char* reason : {"Folder does not exist", "EXIST.NOT:DOES", "not found: the folder does\tnot.exist"}) {
        AnswerWith(400, Reason(reason));
        EXPECT_EQ(Words(_manager.DeleteFolder(_folder)), "results 2") << reason;
    }
    ASSERT_EQ(_log.Records().size(), 3U);
    EXPECT_EQ(_log.Records()[0].level, InfoLevel);
    EXPECT_EQ(_log.Records()[0].file, "DrovaneRemoteFolderManager");
    EXPECT_EQ(
        _log.Records()[0].text,
        "Failed to delete folder Projects/A. The folder doesn't exist in server. Assuming the delete operation as "
        "success.");
    EXPECT_THAT(_log.Records()[0].function, HasSubstr("DrovaneRemoteFolderManager::DeleteFolder("));
}

TEST_F(DrovaneRemoteFolderManagerTest, OtherReasonsAreFailuresOfADeletion) {
    for (const char* reason : {"Folder doesn't exist", "it does not exists", "does exist", "not exist", ""}) {
        AnswerWith(400, Reason(reason));
        EXPECT_THROW(_manager.DeleteFolder(_folder), HttpException) << reason;
    }
    AnswerWith(404, Reason("does not exist"));
    EXPECT_THROW(_manager.DeleteFolder(_folder), HttpException);
}

TEST_F(DrovaneRemoteFolderManagerTest, AMoveGoesFromServerPathToServerPathAndIsTraced) {
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("Projects/A")));
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("Projects/B")));
    EXPECT_CALL(*_httpFactory, CreateMoveRequest(_url, _otherUrl, FolderServerId));
    // Before the request is sent.
    _executor->onExecute = [this] { EXPECT_EQ(_log.Records().size(), 1U); };
    AnswerWith(201);
    EXPECT_EQ(Words(_manager.MoveFolder(_folder, _otherFolder)), "results 3");
    ASSERT_EQ(_log.Records().size(), 1U);
    EXPECT_EQ(_log.Records()[0].level, DebugLevel);
    EXPECT_EQ(_log.Records()[0].text, "Move: http://service.test/Projects/A to http://service.test/Projects/B\r\n");
}

TEST_F(DrovaneRemoteFolderManagerTest, TheFailureOfAMoveNamesDecodedPathsAndNoneOfAnInvalidUrl) {
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, _))
        .WillOnce(Return(std::make_shared<QUrl>(QUrl::fromEncoded("http://service.test/a%20b%25%EF%BF%BF"))))
        .WillOnce(Return(std::make_shared<QUrl>(QUrl::fromEncoded("http://[bad/x"))));
    AnswerWith(403);
    try {
        _manager.MoveFolder(_folder, _folder);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.Message(), Text("MoveFolder failed. From Url: /a b%\xEF\xBF\xBF To Url: . Error code: 403."));
    }
}

TEST_F(DrovaneRemoteFolderManagerTest, NothingIsLoggedBelowTheLevelOfTheLogger) {
    const tests::LogRecorder quiet(LOG4CPLUS_TEXT("DrovaneSyncSupport"), log4cplus::INFO_LOG_LEVEL);
    AnswerWith(201);
    _manager.MoveFolder(_folder, _folder);
    EXPECT_THAT(quiet.Records(), IsEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, WhatTheExecutorThrowsPassesThrough) {
    _executor->onExecute = [] { throw SyncException(Text("no answer")); };
    for (const Operation& operation : Operations) {
        EXPECT_THROW(operation.run(_manager, _folder, _otherFolder), SyncException) << operation.name;
    }
}

// --- Mapping of folders

TEST_F(DrovaneRemoteFolderManagerTest, AFolderRecordHasEveryFieldFromItsEntry) {
    FolderConfiguration parent;
    parent.serverKey = 3;
    parent.serverId = FolderServerId;
    parent.serverRootPath = Text("Projects");
    parent.localPath = Text("/home/work");
    DAVPropfindProperties properties;
    properties.filename = Text("a%20b");
    properties.ownerId = Text("owner");
    properties.privileges = Text("rw");
    properties.itemId = Text("item");
    properties.lastModifiedDate = QDateTime::fromMSecsSinceEpoch(1000);
    DAVPropfindResponse response(Text("/Projects/a%20b/"), properties);
    response.resourceId = -17;

    const FolderConfiguration folder = FolderManagerAccess::BuildFolderConfig(_manager, parent, response);
    EXPECT_EQ(folder.name, Text("a%20b"));
    EXPECT_EQ(folder.lastModifiedDate, QDateTime::fromMSecsSinceEpoch(1000));
    EXPECT_EQ(folder.resourceId, Text("-17"));
    EXPECT_EQ(folder.serverPath, Text("Projects/a b"));
    EXPECT_EQ(folder.serverRootPath, Text("Projects/a b"));
    EXPECT_EQ(folder.localPath, Text("/home/work/a b"));
    EXPECT_EQ(folder.serverKey, 3);
    EXPECT_EQ(folder.ownerId, Text("owner"));
    EXPECT_EQ(folder.getPrivileges(), Text("rw"));
    EXPECT_EQ(folder.serverId, FolderServerId);
    EXPECT_EQ(folder.getServerFolderId(), Text("item"));
    EXPECT_TRUE(folder.companionServerPath.isEmpty());
    EXPECT_EQ(folder.accessMask, 0);
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderRecordInheritsNothingElseFromItsParent) {
    FolderConfiguration expected;
    expected.serverKey = 3;
    expected.serverId = FolderServerId;
    expected.resourceId = Text("0");
    expected.serverPath = Text("x");
    expected.serverRootPath = Text("x");
    expected.localPath = Text("/home/work");
    const DAVPropfindResponse response(Text("/x"), DAVPropfindProperties());
    EXPECT_TRUE(IsSame(FolderManagerAccess::BuildFolderConfig(_manager, WholeFolder(), response), expected));
}

TEST_F(DrovaneRemoteFolderManagerTest, AFolderRecordHasNothingOfAnEntryThatIsForFiles) {
    DAVPropfindProperties properties;
    properties.createdDate = QDateTime::fromMSecsSinceEpoch(1000);
    properties.linksExtractedAtFileTime = QDateTime::fromMSecsSinceEpoch(2000);
    properties.versionId = properties.visibility = properties.checkSumMD5 = properties.syncOption = Text("x");
    DAVPropfindResponse response(Text("/x"), properties);
    response.parentResourceId = 1;
    response.versionNumber = 2;
    response.contentLength = 3;
    response.attribute = 'a';
    FolderConfiguration expected;
    expected.resourceId = Text("0");
    expected.serverPath = Text("x");
    expected.serverRootPath = Text("x");
    expected.localPath = Text("x");
    EXPECT_TRUE(IsSame(FolderManagerAccess::BuildFolderConfig(_manager, FolderConfiguration(), response), expected));
}

TEST_F(DrovaneRemoteFolderManagerTest, TheLocalPathOfAFolderReplacesTheLengthOfTheParentsRootPath) {
    FolderConfiguration parent;
    parent.serverRootPath = Text("12345678");
    parent.serverPath = Text("12345678/longer");
    parent.localPath = Text("L");
    const auto localPathOf = [&](const char* href) {
        return FolderManagerAccess::BuildFolderConfig(_manager, parent, Entry(Folder, href)).localPath;
    };
    EXPECT_EQ(localPathOf("/12345678/a/"), Text("L/a"));
    EXPECT_EQ(localPathOf("/Projects/a"), Text("L/a"));
    EXPECT_EQ(localPathOf("/a%20b%20c%20d/"), Text("L"));
}

TEST_F(DrovaneRemoteFolderManagerTest, OneSlashIsRemovedAtEitherEndOfAFoldersPath) {
    const auto pathOf = [this](const char* href) {
        return FolderManagerAccess::BuildFolderConfig(_manager, FolderConfiguration(), Entry(Folder, href)).serverPath;
    };
    EXPECT_EQ(pathOf("/Projects/A/"), Text("Projects/A"));
    EXPECT_EQ(pathOf("/Projects/A"), Text("Projects/A"));
    EXPECT_EQ(pathOf("//x//"), Text("/x/"));
    EXPECT_EQ(pathOf("/"), Text(""));
}

TEST_F(DrovaneRemoteFolderManagerTest, APercentThatIsNoEscapeStandsForItselfInAFoldersPath) {
    const FolderConfiguration folder =
        FolderManagerAccess::BuildFolderConfig(_manager, FolderConfiguration(), Entry(Folder, "/50%-off/r%C3%A9s/"));
    EXPECT_EQ(folder.serverPath, Text("50%-off/r\xC3\xA9s"));
    EXPECT_EQ(folder.localPath, Text("50%-off/r\xC3\xA9s"));
}

TEST_F(DrovaneRemoteFolderManagerTest, AnInvalidHrefGivesAFolderWithoutPaths) {
    _folder.localPath = Text("/home/work");
    for (const char* href : {"http://[bad/x", ""}) {
        const FolderConfiguration folder =
            FolderManagerAccess::BuildFolderConfig(_manager, _folder, Entry(Folder, href));
        EXPECT_TRUE(folder.serverPath.isEmpty()) << href;
        EXPECT_TRUE(folder.serverRootPath.isEmpty()) << href;
        EXPECT_TRUE(folder.localPath.isEmpty()) << href;
    }
    EXPECT_EQ(FolderManagerAccess::BuildFolderConfig(_manager, _folder, Entry(Folder, "/")).localPath,
              Text("/home/work"));
}

TEST_F(DrovaneRemoteFolderManagerTest, FoldersAndProjectsAreListedAndEveryOtherContainerIsIgnored) {
    const auto result = std::make_shared<DAVPropfindResult>();
    result->collectionResponses.insert(Text("d"), Entry(Folder, "/d/", 1));
    result->collectionResponses.insert(Text("c"), Entry(Project, "/c/", 2));
    result->collectionResponses.insert(Text("b"), Entry(Form, "/b/", 3));
    result->collectionResponses.insert(Text("a"), Entry("", "/a/", 4));
    QSet<int> ignored;
    const auto folders = FolderManagerAccess::BuildFolderConfigs(_manager, _folder, result, ignored);
    ASSERT_EQ(folders->size(), 2);
    EXPECT_EQ(folders->at(0).serverPath, Text("c"));
    EXPECT_EQ(folders->at(1).serverPath, Text("d"));
    EXPECT_EQ(ignored, QSet<int>() << 3 << 4);
    EXPECT_TRUE(FolderManagerAccess::BuildFolderConfigs(_manager, _folder, nullptr, ignored)->isEmpty());
}

// Of all of these only folders and projects are folders, and only files are files.
DAVPropfindResult EntriesOfEveryType() {
    DAVPropfindResult result;
    const char* const types[] = {File, Folder, Project, Form, "drovane.objects.Strange", ""};
    int id = 1;
    for (const char* type : types) {
        const QString key = QString::number(id);
        result.collectionResponses.insert(key, Entry(type, "/collection/", id));
        result.fileResponses.insert(key, Entry(type, "/file", 10 + id, 20));
        ++id;
    }
    return result;
}

TEST_F(DrovaneRemoteFolderManagerTest, WhatIsNoFolderAmongTheCollectionsIsIgnoredWhateverItIs) {
    const auto result = std::make_shared<DAVPropfindResult>(EntriesOfEveryType());
    QSet<int> ignored;
    EXPECT_EQ(FolderManagerAccess::BuildFolderConfigs(_manager, _folder, result, ignored)->size(), 2);
    EXPECT_EQ(ignored, QSet<int>() << 1 << 4 << 5 << 6);
    EXPECT_EQ(result->collectionResponses.size(), 6);
    EXPECT_EQ(result->fileResponses.size(), 6);
}

TEST_F(DrovaneRemoteFolderManagerTest, WhatIsNoFileAmongTheFilesIsIgnoredWhateverItIs) {
    const auto result = std::make_shared<DAVPropfindResult>(EntriesOfEveryType());
    QSet<int> ignored;
    FolderManagerAccess::IgnoreByClassTypeOfParent(_manager, result, ignored);
    EXPECT_EQ(ignored, QSet<int>() << 12 << 13 << 14 << 15 << 16);
    EXPECT_EQ(result->collectionResponses.size(), 6);
    EXPECT_EQ(result->fileResponses.size(), 6);
}

TEST_F(DrovaneRemoteFolderManagerTest, WhatWasIgnoredBeforeStaysIgnored) {
    const auto result = std::make_shared<DAVPropfindResult>(EntriesOfEveryType());
    QSet<int> ignored;
    ignored << 100;
    FolderManagerAccess::BuildFolderConfigs(_manager, _folder, result, ignored);
    FolderManagerAccess::BuildFolderConfigs(_manager, _folder, nullptr, ignored);
    FolderManagerAccess::IgnoreByClassTypeOfParent(_manager, nullptr, ignored);
    FolderManagerAccess::IgnoreByClassTypeOfParent(_manager, result, ignored);
    EXPECT_EQ(ignored, QSet<int>() << 100 << 1 << 4 << 5 << 6 << 12 << 13 << 14 << 15 << 16);
}

TEST_F(DrovaneRemoteFolderManagerTest, EveryEntryInAnIgnoredContainerIsRemovedWhereverItStands) {
    const auto result = std::make_shared<DAVPropfindResult>();
    for (const int id : {1, 2, 3, 4, 5, 6}) {
        result->fileResponses.insert(QString::number(id), Entry(File, "/a", id, id == 3 || id == 5 ? 8 : 7));
    }
    // A container in an ignored one is removed, and what lies in it, too.
    result->fileResponses.insert(Text("7"), Entry(Form, "/form", 9, 7));
    result->fileResponses.insert(Text("8"), Entry(File, "/form/a", 10, 9));
    // In itself.
    result->fileResponses.insert(Text("9"), Entry(Form, "/own", 11, 11));
    QSet<int> ignored;
    ignored << 7;
    FolderManagerAccess::IgnoreByClassTypeOfParent(_manager, result, ignored);
    EXPECT_EQ(result->fileResponses.keys(), QList<QString>() << Text("3") << Text("5"));
}

TEST_F(DrovaneRemoteFolderManagerTest, ACopyOfTheCollectionsHeldElsewhereIsNotWalked) {
    const auto result = std::make_shared<DAVPropfindResult>(EntriesOfEveryType());
    const QMap<QString, DAVPropfindResponse> copy = result->collectionResponses;
    QSet<int> ignored;
    EXPECT_FALSE(copy.isDetached());
    FolderManagerAccess::BuildFolderConfigs(_manager, _folder, result, ignored);
    EXPECT_TRUE(copy.isDetached());
    EXPECT_EQ(copy.size(), 6);
}

TEST_F(DrovaneRemoteFolderManagerTest, WhatLiesDirectlyInAnIgnoredContainerIsRemoved) {
    const auto result = std::make_shared<DAVPropfindResult>();
    // The child comes before its form in key order.
    result->fileResponses.insert(Text("a in form"), Entry(File, "/form/a", 10, 5));
    result->fileResponses.insert(Text("b in folder"), Entry(File, "/folder/b", 11, 6));
    result->fileResponses.insert(Text("c in ignored"), Entry(File, "/other/c", 12, 7));
    result->fileResponses.insert(Text("d in form's file"), Entry(File, "/form/a/d", 13, 10));
    result->fileResponses.insert(Text("form"), Entry("DROVANE.objects.form", "/form", 5, 1));
    QSet<int> ignored;
    ignored << 7;
    FolderManagerAccess::IgnoreByClassTypeOfParent(_manager, result, ignored);
    EXPECT_EQ(result->fileResponses.keys(), QList<QString>()
                                                << Text("b in folder") << Text("d in form's file") << Text("form"));
    EXPECT_EQ(ignored, QSet<int>() << 5 << 7);
}

TEST_F(DrovaneRemoteFolderManagerTest, ACopyOfTheEntriesHeldElsewhereStaysWhole) {
    const auto result = std::make_shared<DAVPropfindResult>();
    result->fileResponses.insert(Text("a"), Entry(File, "/form/a", 10, 5));
    result->fileResponses.insert(Text("form"), Entry(Form, "/form", 5, 1));
    const QMap<QString, DAVPropfindResponse> copy = result->fileResponses;
    QSet<int> ignored;
    FolderManagerAccess::IgnoreByClassTypeOfParent(_manager, result, ignored);
    EXPECT_EQ(copy.size(), 2);
    EXPECT_EQ(result->fileResponses.size(), 1);
}

TEST_F(DrovaneRemoteFolderManagerTest, AChildOfAFormHasItsPathAsItsParent) {
    const auto isChild = [this](const char* path, const char* form) {
        return FolderManagerAccess::ChildOfForm(_manager, Text(path), QSet<QString>() << Text(form));
    };
    EXPECT_TRUE(isChild("a/b/c", "a/b"));
    EXPECT_FALSE(isChild("a/b/c", "a"));
    EXPECT_FALSE(isChild("a/b/c", "A/B"));
    EXPECT_TRUE(isChild("abc", "abc"));
    EXPECT_FALSE(isChild("abc", "ab"));
    EXPECT_TRUE(isChild("a//c", "a/"));
    EXPECT_TRUE(isChild("/c", ""));
    EXPECT_FALSE(isChild("c", ""));
}

// --- Listings

TEST_F(DrovaneRemoteFolderManagerTest, SubFoldersAreAskedForSinceTheLastSync) {
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("Projects/A")));
    EXPECT_CALL(*_httpFactory, CreatePropfindRequest(_url, FolderServerId, 1));
    _executor->onExecute = [this] { EXPECT_EQ(_propfind->modifiedSinceTime, WholeFolder().getLastSyncTime()); };
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->collectionResponses.insert(Text("b"), Entry(Folder, "/Projects/A/b/", 1));
    _propfind->result->collectionResponses.insert(Text("a"), Entry(Project, "/Projects/A/a/", 2));
    const auto folders = _manager.GetNameSortedDirsByFolder(_folder);
    ASSERT_EQ(folders->size(), 2);
    EXPECT_EQ(folders->at(0).serverPath, Text("Projects/A/a"));
    EXPECT_EQ(folders->at(1).serverPath, Text("Projects/A/b"));
    EXPECT_TRUE(_propfind->properties.isEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, ATreeIsAskedForSinceTheLastSync) {
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("Projects/A")));
    EXPECT_CALL(*_httpFactory, CreatePropfindRequest(_url, FolderServerId, 2));
    _executor->onExecute = [this] { EXPECT_EQ(_propfind->modifiedSinceTime, WholeFolder().getLastSyncTime()); };
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    EXPECT_EQ(_manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files), 0);
    EXPECT_EQ(_executor->executed.size(), 1);
    EXPECT_TRUE(_propfind->properties.isEmpty());
}

TEST_F(DrovaneRemoteFolderManagerTest, AListingChangesNothingOfTheFolderButTheServicesTime) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->serverTime = QDateTime::fromMSecsSinceEpoch(1700000000000);
    FolderConfiguration expected = WholeFolder();
    expected.setLastServerSyncRequestTime(_propfind->result->serverTime);
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    _manager.GetNameSortedDirsByFolder(_folder);
    EXPECT_TRUE(IsSame(_folder, expected));
    _folder = WholeFolder();
    _manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files);
    EXPECT_TRUE(IsSame(_folder, expected));
}

TEST_F(DrovaneRemoteFolderManagerTest, AListingWithoutTheServicesTimeKeepsTheOneBefore) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    for (const int status : {207, 304}) {
        AnswerWith(status);
        _manager.GetNameSortedDirsByFolder(_folder);
        _manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files);
        EXPECT_TRUE(IsSame(_folder, WholeFolder()));
    }
}

TEST_F(DrovaneRemoteFolderManagerTest, AListingThatFailedRecordsNoTime) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->serverTime = QDateTime::fromMSecsSinceEpoch(1700000000000);
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    for (const int status : {302, 404, 500}) {
        AnswerWith(status);
        EXPECT_THROW(_manager.GetNameSortedDirsByFolder(_folder), HttpException);
        if (status != 404) {
            EXPECT_THROW(_manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files), HttpException);
        } else {
            EXPECT_EQ(_manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files), 404);
        }
        EXPECT_TRUE(IsSame(_folder, WholeFolder()));
    }
}

TEST_F(DrovaneRemoteFolderManagerTest, ATreeThatIsNotListedLeavesTheOutputsAlone) {
    _propfind->result = std::make_shared<DAVPropfindResult>(EntriesOfEveryType());
    const auto foldersBefore = std::make_shared<QVector<FolderConfiguration>>();
    const auto filesBefore = std::make_shared<QVector<FileConfiguration>>(3);
    auto folders = foldersBefore;
    auto files = filesBefore;
    for (const int status : {304, 404}) {
        AnswerWith(status);
        EXPECT_EQ(_manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files), status);
        EXPECT_EQ(folders, foldersBefore);
        EXPECT_EQ(files, filesBefore);
        EXPECT_EQ(files->size(), 3);
    }
    EXPECT_EQ(_propfind->result->fileResponses.size(), 6);
}

TEST_F(DrovaneRemoteFolderManagerTest, RecordsOfAListingAreThoseOfThePathsBelowTheFolder) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->collectionResponses.insert(Text("a"), Entry(Folder, "/Projects/A/b/", 1));
    _propfind->result->fileResponses.insert(Text("a"), Entry(File, "/Projects/A/f", 2));
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    EXPECT_EQ(_manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files), 0);
    EXPECT_EQ(folders->at(0).localPath, Text("/home/work/A/b"));
    EXPECT_EQ(files->at(0).localPath, Text("/home/work/A/f"));
    EXPECT_EQ(_manager.GetNameSortedDirsByFolder(_folder)->at(0).localPath, Text("/home/work/A/b"));
}

TEST_F(DrovaneRemoteFolderManagerTest, TheServicesTimeIsRecordedByListingsOn304Too) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    for (const int status : {207, 304}) {
        for (int listing = 0; listing < 2; ++listing) {
            _folder.setLastServerSyncRequestTime(QDateTime());
            _propfind->result->serverTime = QDateTime();
            AnswerWith(status);
            std::shared_ptr<QVector<FolderConfiguration>> folders;
            std::shared_ptr<QVector<FileConfiguration>> files;
            const auto list = [&] {
                if (listing == 0) {
                    _manager.GetNameSortedDirsByFolder(_folder);
                } else {
                    _manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files);
                }
            };
            list();
            EXPECT_FALSE(_folder.getLastServerSyncRequestTime().isValid());
            _propfind->result->serverTime = QDateTime::fromMSecsSinceEpoch(1700000000000);
            list();
            EXPECT_EQ(_folder.getLastServerSyncRequestTime(), QDateTime::fromMSecsSinceEpoch(1700000000000));
        }
    }
}

TEST_F(DrovaneRemoteFolderManagerTest, ProcessingABadAnswerThrowsWithTheRequestsUrl) {
    _propfind->url = QUrl(Text("http://service.test/requested"));
    _propfind->statusCode = 302;
    try {
        FolderManagerAccess::ProcessPropfindResult(_manager, _propfind);
        FAIL() << "nothing was thrown";
    } catch (const HttpException& e) {
        EXPECT_EQ(e.Message(), Text("PROPFIND failed for url http://service.test/requested. Error code: 302."));
        EXPECT_EQ(e.Url(), _propfind->url);
    }
    _propfind->statusCode = 304;
    _propfind->result = std::make_shared<DAVPropfindResult>();
    EXPECT_EQ(FolderManagerAccess::ProcessPropfindResult(_manager, _propfind), _propfind->result);
    _propfind->statusCode = 400;
    EXPECT_THROW(FolderManagerAccess::ProcessPropfindResult(_manager, _propfind), HttpException);
}

std::shared_ptr<DAVPropfindResult> Tree() {
    auto result = std::make_shared<DAVPropfindResult>();
    result->collectionResponses.insert(Text("P/sub"), Entry(Folder, "/P/sub/", 2, 1));
    result->collectionResponses.insert(Text("P/strange"), Entry("drovane.objects.Strange", "/P/strange/", 3, 1));
    result->fileResponses.insert(Text("P/a.txt"), Entry(File, "/P/a.txt", 10, 1, 100));
    result->fileResponses.insert(Text("P/form"), Entry(Form, "/P/form", 4, 1));
    result->fileResponses.insert(Text("P/form/hidden.txt"), Entry(File, "/P/form/hidden.txt", 11, 4, 1000));
    result->fileResponses.insert(Text("P/sub/b.txt"), Entry(File, "/P/sub/b.txt", 12, 2, 200));
    return result;
}

TEST_F(DrovaneRemoteFolderManagerTest, ATreeIsEverythingButTheContentsOfContainersThatAreNoFolders) {
    const auto before = std::make_shared<QVector<FileConfiguration>>(3);
    auto folders = std::make_shared<QVector<FolderConfiguration>>(2);
    std::shared_ptr<QVector<FileConfiguration>> files = before;
    EXPECT_CALL(*_httpFactory, CreatePropfindRequest(_url, FolderServerId, 2));
    _propfind->result = Tree();
    _propfind->result->fileResponses.insert(Text("P/strange/c.txt"), Entry(File, "/P/strange/c.txt", 13, 3));
    EXPECT_EQ(_manager.GetAllFilesAndSubFoldersByFolder(_folder, folders, files), 0);
    ASSERT_EQ(folders->size(), 1);
    EXPECT_EQ(folders->at(0).serverPath, Text("P/sub"));
    ASSERT_EQ(files->size(), 2);
    EXPECT_EQ(files->at(0).serverPath, Text("P/a.txt"));
    EXPECT_EQ(files->at(1).serverPath, Text("P/sub/b.txt"));
    EXPECT_EQ(before->size(), 3);
}

// --- Sizes

class FolderSizeTest : public DrovaneRemoteFolderManagerTest {
protected:
    int Measure(bool wholeTree = true) {
        return _manager.GetFolderSize(Text("P"), FolderServerId, wholeTree, _count, _size, _subFolders, _fileFilter,
                                      _folderFilter);
    }

    const std::shared_ptr<NiceMock<tests::MockSyncFilter>> _fileFilter =
        std::make_shared<NiceMock<tests::MockSyncFilter>>();
    const std::shared_ptr<NiceMock<tests::MockSyncFilter>> _folderFilter =
        std::make_shared<NiceMock<tests::MockSyncFilter>>();
    int _count = 0;
    qint64 _size = 0;
    QList<QString> _subFolders;
};

TEST_F(FolderSizeTest, AsksForThreePropertiesOfTheTreeOrTheChildren) {
    EXPECT_CALL(*_urlBuilder, BuildUrl(_, Text("P"))).Times(2);
    EXPECT_CALL(*_httpFactory, CreatePropfindRequest(_url, FolderServerId, 2));
    _executor->onExecute = [this] {
        EXPECT_EQ(_propfind->properties, QStringList()
                                             << Text("{DAV:}D:getcontenttype") << Text("{DAV:}P:getcontentlength")
                                             << Text("{DAV:}P:resourceclasstype"));
    };
    EXPECT_EQ(Measure(true), 0);
    EXPECT_EQ(_executor->executed.size(), 1);
    EXPECT_FALSE(_propfind->modifiedSinceTime.isValid());
    EXPECT_CALL(*_httpFactory, CreatePropfindRequest(_url, FolderServerId, 1));
    EXPECT_EQ(Measure(false), 0);
}

TEST_F(FolderSizeTest, CountsWhatTheTreeListingLists) {
    _propfind->result = Tree();
    EXPECT_EQ(Measure(), 0);
    EXPECT_EQ(_count, 2);
    EXPECT_EQ(_size, 300);
    EXPECT_EQ(_subFolders, QList<QString>() << Text("P/sub/"));
}

TEST_F(FolderSizeTest, HrefsAreDecodedBeforeAnythingIsAskedOrAppended) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->fileResponses.insert(Text("1"), Entry(File, "/P/a%20b/f%20g.txt", 1, 1, 7));
    _propfind->result->fileResponses.insert(Text("2"), Entry(Form, "/P/f%6Frm", 2, 1));
    _propfind->result->fileResponses.insert(Text("3"), Entry(File, "/P/form/%41", 3, 2, 100));
    _propfind->result->fileResponses.insert(Text("4"), Entry(Form, "/P/other", 4, 1));
    _propfind->result->fileResponses.insert(Text("5"), Entry(File, "http://service.test/P/%6Fther/a", 5, 4, 200));
    _propfind->result->collectionResponses.insert(Text("1"), Entry(Folder, "/P/a%20b", 6, 1));
    EXPECT_CALL(*_folderFilter, IsFolderExcluded(_, 2)).Times(AnyNumber());
    EXPECT_CALL(*_folderFilter, IsFolderExcluded(Text("a b"), 2)).Times(2);
    EXPECT_CALL(*_fileFilter, IsFileExcluded(Text("f g.txt"), 7, 2));
    Measure();
    EXPECT_EQ(_count, 1);
    EXPECT_EQ(_size, 7);
    EXPECT_EQ(_subFolders, QList<QString>() << Text("P/a b"));
}

TEST_F(FolderSizeTest, TheFirstCharacterOfAPathIsLeftOutWhateverItIs) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->fileResponses.insert(Text("1"), Entry(File, "xPa.txt", 1, 1));
    _propfind->result->collectionResponses.insert(Text("1"), Entry(Folder, "xP/sub/", 2, 1));
    EXPECT_CALL(*_fileFilter, IsFileExcluded(Text("a.txt"), _, 2));
    Measure();
    EXPECT_EQ(_subFolders, QList<QString>() << Text("P/sub/"));
}

TEST_F(FolderSizeTest, AFormHidesOnlyWhatIsListedAfterIt) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->fileResponses.insert(Text("1"), Entry(File, "/P/form/before", 1, 2, 10));
    _propfind->result->fileResponses.insert(Text("2"), Entry(Form, "/P/form", 2, 1));
    _propfind->result->fileResponses.insert(Text("3"), Entry(File, "/P/form/after", 3, 2, 100));
    _propfind->result->fileResponses.insert(Text("4"), Entry(File, "/P/FORM/other", 4, 2, 1000));
    _propfind->result->fileResponses.insert(Text("5"), Entry(File, "/P/form/deeper/file", 5, 6, 10000));
    Measure();
    EXPECT_EQ(_size, 11010);
    EXPECT_EQ(_count, 3);
}

TEST_F(FolderSizeTest, OnlyFilesAreCountedAndOnlyFoldersListedOfEntriesOfEveryType) {
    _propfind->result = std::make_shared<DAVPropfindResult>(EntriesOfEveryType());
    Measure();
    EXPECT_EQ(_count, 1);
    EXPECT_EQ(_subFolders.size(), 2);
}

TEST_F(FolderSizeTest, ThePathIsTheOneThatWasAskedForWhateverBecomesOfTheCallersText) {
    _propfind->result = Tree();
    QString path = Text("P");
    EXPECT_CALL(*_fileFilter, IsFileExcluded(_, _, _)).WillRepeatedly([&path](const QString&, qint64, int) {
        path = Text("P/sub");
        return false;
    });
    EXPECT_CALL(*_folderFilter, IsFolderExcluded(_, 2)).Times(AnyNumber());
    EXPECT_CALL(*_folderFilter, IsFolderExcluded(Text("sub"), 2)).Times(2);
    _manager.GetFolderSize(path, FolderServerId, true, _count, _size, _subFolders, _fileFilter, _folderFilter);
    EXPECT_EQ(_count, 2);
}

TEST_F(FolderSizeTest, ExcludedFoldersAreLeftOutOneByOne) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->collectionResponses.insert(Text("1"), Entry(Folder, "/P/a", 1, 0));
    _propfind->result->collectionResponses.insert(Text("2"), Entry(Folder, "/P/b", 2, 0));
    _propfind->result->collectionResponses.insert(Text("3"), Entry(Project, "/P/c", 3, 0));
    _subFolders << Text("before");
    ON_CALL(*_folderFilter, IsFolderExcluded(Text("b"), 2)).WillByDefault(Return(true));
    Measure();
    EXPECT_EQ(_subFolders, QList<QString>() << Text("before") << Text("P/a") << Text("P/c"));
}

TEST_F(FolderSizeTest, ATreeThatIsNotThereAddsNothing) {
    _propfind->result = Tree();
    AnswerWith(404);
    EXPECT_EQ(Measure(), 404);
    EXPECT_EQ(_count, 0);
    EXPECT_EQ(_size, 0);
    EXPECT_TRUE(_subFolders.isEmpty());
}

TEST_F(FolderSizeTest, TheSumIsOneOf64Bits) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    for (const char* key : {"1", "2", "3"}) {
        _propfind->result->fileResponses.insert(Text(key), Entry(File, "/P/a", 1, 1, 2147483647));
    }
    Measure();
    EXPECT_EQ(_size, Q_INT64_C(6442450941));
}

TEST_F(FolderSizeTest, AddsToWhatTheCallerHas) {
    _propfind->result = Tree();
    Measure();
    Measure();
    EXPECT_EQ(_count, 4);
    EXPECT_EQ(_size, 600);
    EXPECT_EQ(_subFolders.size(), 2);
}

TEST_F(FolderSizeTest, AnUnchangedAnswerIsWalkedLikeAnyOther) {
    AnswerWith(304);
    _propfind->result = Tree();
    EXPECT_EQ(Measure(), 0);
    EXPECT_EQ(_count, 2);
}

TEST_F(FolderSizeTest, ANegativeLengthLowersTheTotal) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->fileResponses.insert(Text("a"), Entry(File, "/P/a", 1, 1, -1073741824));
    Measure();
    EXPECT_EQ(_count, 1);
    EXPECT_EQ(_size, Q_INT64_C(-1073741824));
}

TEST_F(FolderSizeTest, TheFiltersSeePathsBelowTheFolderAndFoldersWithIt) {
    _propfind->result = Tree();
    const testing::InSequence inOrder;
    // The relative path keeps the slash behind the folder: "/a.txt".
    EXPECT_CALL(*_folderFilter, IsFolderExcluded(Text(""), 2)).Times(2).WillRepeatedly(Return(false));
    EXPECT_CALL(*_fileFilter, IsFileExcluded(Text("a.txt"), 100, 2)).WillOnce(Return(true));
    EXPECT_CALL(*_folderFilter, IsFolderExcluded(Text(""), 2)).WillOnce(Return(false));
    EXPECT_CALL(*_folderFilter, IsFolderExcluded(Text("sub"), 2)).WillOnce(Return(true));
    EXPECT_CALL(*_folderFilter, IsFolderExcluded(Text("P"), 2)).WillOnce(Return(true));
    Measure();
    EXPECT_EQ(_count, 0);
    EXPECT_EQ(_size, 0);
    EXPECT_TRUE(_subFolders.isEmpty());
}

TEST_F(FolderSizeTest, TheFormThatListsNothingIsNotCountedItself) {
    _propfind->result = std::make_shared<DAVPropfindResult>();
    _propfind->result->fileResponses.insert(Text("form"), Entry(Form, "/P/form", 1, 1, 50));
    _propfind->result->fileResponses.insert(Text("other"), Entry("drovane.objects.Other", "/P/other", 2, 1, 60));
    Measure();
    EXPECT_EQ(_count, 0);
}

/// Counts the calls of the overload with the list.
class OverridingManager : public DrovaneRemoteFolderManager {
public:
    using DrovaneRemoteFolderManager::DrovaneRemoteFolderManager;
    using DrovaneRemoteFolderManager::GetFolderSize;
    int GetFolderSize(const QString& path, int folderServerId, bool wholeTree, int& fileCount, qint64& totalSize,
                      QList<QString>& subFolders, std::shared_ptr<ISyncFilter> fileFilter,
                      std::shared_ptr<ISyncFilter> folderFilter) override {
        EXPECT_EQ(path, Text("P"));
        EXPECT_EQ(folderServerId, FolderServerId);
        EXPECT_TRUE(subFolders.isEmpty());
        fileCount += wholeTree ? 1 : 2;
        ++totalSize;
        filters = {std::move(fileFilter), std::move(folderFilter)};
        return ++calls;
    }
    int calls = 0;
    std::vector<std::shared_ptr<ISyncFilter>> filters;
};

TEST_F(FolderSizeTest, WithoutTheListTheOverrideOfTheOtherOverloadIsCalled) {
    OverridingManager manager(_urlBuilder, ServerId, nullptr, _httpFactory, _configurationFactory);
    sync::interf::IRemoteFolderManager& asInterface = manager;
    EXPECT_EQ(asInterface.GetFolderSize(Text("P"), FolderServerId, true, _count, _size, _fileFilter, _folderFilter), 1);
    EXPECT_EQ(_count, 1);
    EXPECT_EQ(_size, 1);
    EXPECT_THAT(manager.filters, ElementsAre(_fileFilter, _folderFilter));
    EXPECT_EQ(asInterface.GetFolderSize(Text("P"), FolderServerId, false, _count, _size, _fileFilter, _folderFilter),
              2);
    EXPECT_EQ(_count, 3);
}

}  // namespace
