#include <gtest/gtest.h>

#include <QMetaObject>
#include <vector>

#include "host/http/DAVPropfindRequest.h"
#include "host/interfaces/ICustomFileConfigUpdater.h"
#include "host/interfaces/IExternalSyncConfigManager.h"
#include "host/interfaces/IFileConfigManager.h"
#include "host/interfaces/IHttpRequest.h"
#include "host/interfaces/IRemoteFileManager.h"
#include "host/interfaces/IRemoteFolderManager.h"
#include "host/interfaces/IRequestExecutor.h"
#include "host/interfaces/IRequestManager.h"
#include "host/interfaces/IServerConfigManager.h"
#include "host/interfaces/ISyncConfiguration.h"
#include "host/interfaces/ISyncFilter.h"
#include "host/interfaces/IUrlBuilder.h"
#include "host/interfaces/IVersionChecker.h"
#include "host/interfaces/IVersionManager.h"
#include "host/interfaces/dv/IDrovaneHttp.h"
#include "host/interfaces/factory/IConfigurationFactory.h"
#include "host/interfaces/factory/IHttpFactory.h"
#include "host/interfaces/factory/INetworkAccessManagerFactory.h"
#include "host/interfaces/factory/IRemoteFileManagerFactory.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"
#include "tests/fakes/Layout.h"

namespace {

namespace interf = sync::interf;

using tests::SlotOf;

// The last of QObject's own entries.
struct QObjectProbe : public QObject {
    static size_t LastSlot() { return SlotOf(&QObjectProbe::disconnectNotify); }
};

// That the operations at `slots` are all that `Interface` adds to `Base`, in this order.
template <typename Interface, typename Base = QObject>
void ExpectSlots(const std::vector<size_t>& slots) {
    size_t expected = tests::SlotCountOf<Base>();
    for (const size_t slot : slots) {
        EXPECT_EQ(slot, expected);
        ++expected;
    }
    EXPECT_EQ(tests::SlotCountOf<Interface>(), expected);
}

TEST(InterfaceSlotOrderTest, QObjectHasItsElevenEntriesWithTwoForTheDestructor) {
    EXPECT_EQ(SlotOf(&QObject::metaObject), 0U);
    EXPECT_EQ(SlotOf(&QObject::qt_metacast), 1U);
    EXPECT_EQ(SlotOf(&QObject::qt_metacall), 2U);
    EXPECT_EQ(SlotOf(&QObject::event), 5U);
    EXPECT_EQ(SlotOf(&QObject::eventFilter), 6U);
    EXPECT_EQ(QObjectProbe::LastSlot(), 11U);
    EXPECT_EQ(tests::SlotCountOf<QObject>(), 12U);
}

TEST(InterfaceSlotOrderTest, RemoteFileManager) {
    using I = interf::IRemoteFileManager;
    ExpectSlots<I>({SlotOf(&I::GetNameSortedFilesByFolder), SlotOf(&I::ShouldDownloadFile), SlotOf(&I::GetFileByName)});
}

TEST(InterfaceSlotOrderTest, RemoteFolderManager) {
    using I = interf::IRemoteFolderManager;
    using Filter = std::shared_ptr<interf::ISyncFilter>;
    using Size = int (I::*)(const QString&, int, bool, int&, qint64&, Filter, Filter);
    using SizeWithList = int (I::*)(const QString&, int, bool, int&, qint64&, QList<QString>&, Filter, Filter);
    ExpectSlots<I>({SlotOf(&I::CreateFolder), SlotOf(&I::DeleteFolder), SlotOf(&I::MoveFolder),
                    SlotOf(&I::FolderExists), SlotOf(&I::FileExists), SlotOf(&I::GetFolderProperties),
                    SlotOf(&I::GetNameSortedDirsByFolder), SlotOf(&I::GetAllFilesAndSubFoldersByFolder),
                    SlotOf(static_cast<Size>(&I::GetFolderSize)),
                    SlotOf(static_cast<SizeWithList>(&I::GetFolderSize))});
}

TEST(InterfaceSlotOrderTest, CustomFileConfigUpdater) {
    using I = interf::ICustomFileConfigUpdater;
    ExpectSlots<I>({SlotOf(&I::UpdateCustomFileConfigAfterUpload), SlotOf(&I::UpdateCustomFileConfigBeforeDownload)});
}

TEST(InterfaceSlotOrderTest, SyncConfigurationWithItsThreeOperationsOfTheClient) {
    using I = interf::ISyncConfiguration;
    ExpectSlots<I>({SlotOf(&I::GetSyncFrequency), SlotOf(&I::IsIncrementalSyncEnabled),
                    SlotOf(&I::IsIncrementalSyncEnabledForFile), SlotOf(&I::GetMinFileSizeForIncrementalSync),
                    SlotOf(&I::GetMaxChangeForIncrementalSync), SlotOf(&I::GetMaxDeltaForIncrementalSync),
                    SlotOf(&I::GetMaxParallelTransfers), SlotOf(&I::GetLimitsForUploadFinishedEvent),
                    SlotOf(&I::GetLimitsForCreateDeleteReferences),
                    SlotOf(&I::GetLimitsForGetParentsChildrenReferences), SlotOf(&I::GetMaxTransferRetries),
                    SlotOf(&I::GetSyncDelayAfterServerError), SlotOf(&I::GetMaxFailedPasses)});
}

TEST(InterfaceSlotOrderTest, ExternalSyncConfigManager) {
    // The value that it returns is not complete here, and a pointer to the operation does not need it to be.
    ExpectSlots<interf::IExternalSyncConfigManager>(
        {SlotOf(&interf::IExternalSyncConfigManager::GetExternalSyncConfig)});
}

TEST(InterfaceSlotOrderTest, VersionChecker) {
    using I = interf::IVersionChecker;
    ExpectSlots<I>({SlotOf(&I::ThereIsANewAppVersion), SlotOf(&I::VersionAIsGreaterThanVersionB)});
}

TEST(InterfaceSlotOrderTest, VersionManager) {
    using I = interf::IVersionManager;
    ExpectSlots<I>(
        {SlotOf(&I::GetLocalAppVersion), SlotOf(&I::GetMostCurrentAppVersion), SlotOf(&I::GetAppInstallerUrl)});
}

TEST(InterfaceSlotOrderTest, TheSyncFilterTestsFilesBeforeFolders) {
    using I = interf::ISyncFilter;
    ExpectSlots<I>({SlotOf(&I::IsFileExcluded), SlotOf(&I::IsFolderExcluded)});
}

TEST(InterfaceSlotOrderTest, TheNetworkAccessManagerIsMadeByTheFirstOperationOfItsFactory) {
    ExpectSlots<interf::factory::INetworkAccessManagerFactory>(
        {SlotOf(&interf::factory::INetworkAccessManagerFactory::CreateNetworkAccessManager)});
}

TEST(InterfaceSlotOrderTest, TheSyncConfigUrlIsTheSecondOperationOfTheServicesHttpAccess) {
    using I = interf::dv::IDrovaneHttp;
    ExpectSlots<I>({SlotOf(&I::GetServiceUrl), SlotOf(&I::GetSyncConfigUrl)});
}

TEST(InterfaceSlotOrderTest, ConfigurationFactory) {
    using I = interf::factory::IConfigurationFactory;
    ExpectSlots<I>({SlotOf(&I::CreateServerConfigManager), SlotOf(&I::CreateFileConfigManager)});
}

TEST(InterfaceSlotOrderTest, UrlBuilder) {
    using I = interf::IUrlBuilder;
    ExpectSlots<I>({SlotOf(&I::BuildUrl), SlotOf(&I::BuildFolderUrl)});
}

TEST(InterfaceSlotOrderTest, HttpRequest) {
    using I = interf::IHttpRequest;
    ExpectSlots<I>(
        {SlotOf(&I::GetStatusCode), SlotOf(&I::GetUrl), SlotOf(&I::GetResponseHeaders), SlotOf(&I::GetResponseBody)});
}

TEST(InterfaceSlotOrderTest, PropfindRequestsAddThreeOperationsToThoseOfEveryRequest) {
    using I = sync::http::DAVPropfindRequest;
    ExpectSlots<I, interf::IHttpRequest>(
        {SlotOf(&I::SetModifiedSinceTime), SlotOf(&I::SetProperties), SlotOf(&I::GetResult)});
}

TEST(InterfaceSlotOrderTest, HttpFactory) {
    using I = interf::factory::IHttpFactory;
    ExpectSlots<I>({SlotOf(&I::CreatePropfindRequest), SlotOf(&I::CreateFolderRequest), SlotOf(&I::CreateFileRequest),
                    SlotOf(&I::CreateMoveRequest), SlotOf(&I::CreateRequestExecutor)});
}

TEST(InterfaceSlotOrderTest, EveryOtherInterfaceHasOneOperation) {
    ExpectSlots<interf::IRequestManager>({SlotOf(&interf::IRequestManager::Execute)});
    ExpectSlots<interf::IRequestExecutor>({SlotOf(&interf::IRequestExecutor::Execute)});
    ExpectSlots<interf::IServerConfigManager>({SlotOf(&interf::IServerConfigManager::GetServerConfiguration)});
    ExpectSlots<interf::IFileConfigManager>({SlotOf(&interf::IFileConfigManager::GetFileConfiguration)});
    namespace factory = interf::factory;
    ExpectSlots<factory::IRemoteFileManagerFactory>(
        {SlotOf(&factory::IRemoteFileManagerFactory::CreateRemoteFileManager)});
    ExpectSlots<factory::IRequestAuthenticatorFactory>(
        {SlotOf(&factory::IRequestAuthenticatorFactory::CreateAuthenticator)});
}

TEST(InterfaceValueTest, DepthsKindsAndStatesAreTheNumbersOfTheContract) {
    using Request = sync::http::DAVPropfindRequest;
    EXPECT_EQ((std::vector<int>{Request::Resource, Request::Children, Request::Tree}), (std::vector<int>{0, 1, 2}));
    using Urls = interf::IUrlBuilder;
    EXPECT_EQ((std::vector<int>{Urls::FolderById, Urls::FolderByPath, Urls::FolderCreation, Urls::FolderDeletion}),
              (std::vector<int>{10, 11, 12, 13}));
    using Requests = interf::factory::IHttpFactory;
    EXPECT_EQ((std::vector<int>{Requests::FolderQuery, Requests::FolderCreation, Requests::FolderDeletion}),
              (std::vector<int>{2, 3, 6}));
    using State = interf::IHttpRequest;
    EXPECT_EQ((std::vector<int>{State::StateNone, State::StateQueued, State::StateRunning, State::StateAnswered,
                                State::StateAborted, State::StateFailed}),
              (std::vector<int>{0, 1, 2, 3, 4, 5}));
}

TEST(InterfaceMetaObjectTest, EveryInterfaceOfTheLibraryHasOneOfItsOwn) {
    EXPECT_STREQ(interf::IRemoteFileManager::staticMetaObject.className(), "sync::interf::IRemoteFileManager");
    EXPECT_STREQ(interf::IRemoteFolderManager::staticMetaObject.className(), "sync::interf::IRemoteFolderManager");
    EXPECT_STREQ(interf::ICustomFileConfigUpdater::staticMetaObject.className(),
                 "sync::interf::ICustomFileConfigUpdater");
    EXPECT_STREQ(interf::ISyncConfiguration::staticMetaObject.className(), "sync::interf::ISyncConfiguration");
    EXPECT_STREQ(interf::IExternalSyncConfigManager::staticMetaObject.className(),
                 "sync::interf::IExternalSyncConfigManager");
    EXPECT_STREQ(interf::IVersionChecker::staticMetaObject.className(), "sync::interf::IVersionChecker");
    EXPECT_STREQ(interf::IVersionManager::staticMetaObject.className(), "sync::interf::IVersionManager");
}

TEST(InterfaceMetaObjectTest, TheRequestSignalIsSpelledAsConnectionsSpellIt) {
    const QByteArray signal = QMetaObject::normalizedSignature(
        "RequestCompleted(std::tr1::shared_ptr<sync::interf::IHttpRequest>,sync::interf::IHttpRequest::RequestState)");
    for (const QMetaObject* meta :
         {&interf::IHttpRequest::staticMetaObject, &interf::IRequestExecutor::staticMetaObject}) {
        EXPECT_GE(meta->indexOfSignal(signal.constData()), 0) << meta->className();
    }
}

}  // namespace
