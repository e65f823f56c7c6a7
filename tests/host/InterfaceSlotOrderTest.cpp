#include <gtest/gtest.h>

#include <QMetaObject>
#include <cstring>
#include <vector>

#include "host/interfaces/ICustomFileConfigUpdater.h"
#include "host/interfaces/IExternalSyncConfigManager.h"
#include "host/interfaces/IHttpRequest.h"
#include "host/interfaces/IRemoteFileManager.h"
#include "host/interfaces/IRemoteFolderManager.h"
#include "host/interfaces/ISyncConfiguration.h"
#include "host/interfaces/ISyncFilter.h"
#include "host/interfaces/IVersionChecker.h"
#include "host/interfaces/IVersionManager.h"
#include "host/interfaces/dv/IDrovaneHttp.h"
#include "host/interfaces/factory/INetworkAccessManagerFactory.h"

namespace {

namespace interf = sync::interf;

// In the C++ ABI of every compiler for Linux, a pointer to a virtual member function holds one more than the offset of
// the operation in the virtual table.
template <typename Operation>
size_t SlotOf(Operation operation) {
    static_assert(sizeof(operation) == 2 * sizeof(ptrdiff_t), "not a pointer to a member function");
    ptrdiff_t representation = 0;
    std::memcpy(&representation, &operation, sizeof(representation));
    EXPECT_EQ(representation % 2, 1) << "not virtual";
    return static_cast<size_t>(representation - 1) / sizeof(void*);
}

// The last of QObject's own entries.
struct QObjectProbe : public QObject {
    static size_t LastSlot() { return SlotOf(&QObjectProbe::disconnectNotify); }
};

void ExpectSlotsFromTheFirstOnOf(const std::vector<size_t>& slots) {
    size_t expected = QObjectProbe::LastSlot() + 1;
    for (const size_t slot : slots) {
        EXPECT_EQ(slot, expected);
        ++expected;
    }
}

TEST(InterfaceSlotOrderTest, QObjectHasItsElevenEntriesWithTwoForTheDestructor) {
    EXPECT_EQ(SlotOf(&QObject::metaObject), 0U);
    EXPECT_EQ(SlotOf(&QObject::qt_metacast), 1U);
    EXPECT_EQ(SlotOf(&QObject::qt_metacall), 2U);
    EXPECT_EQ(SlotOf(&QObject::event), 5U);
    EXPECT_EQ(SlotOf(&QObject::eventFilter), 6U);
    EXPECT_EQ(QObjectProbe::LastSlot(), 11U);
}

TEST(InterfaceSlotOrderTest, RemoteFileManager) {
    using I = interf::IRemoteFileManager;
    ExpectSlotsFromTheFirstOnOf(
        {SlotOf(&I::GetNameSortedFilesByFolder), SlotOf(&I::ShouldDownloadFile), SlotOf(&I::GetFileByName)});
}

TEST(InterfaceSlotOrderTest, RemoteFolderManager) {
    using I = interf::IRemoteFolderManager;
    using Filter = std::shared_ptr<interf::ISyncFilter>;
    using Size = int (I::*)(const QString&, int, bool, int&, qint64&, Filter, Filter);
    using SizeWithList = int (I::*)(const QString&, int, bool, int&, qint64&, QList<QString>&, Filter, Filter);
    ExpectSlotsFromTheFirstOnOf({SlotOf(&I::CreateFolder), SlotOf(&I::DeleteFolder), SlotOf(&I::MoveFolder),
                                 SlotOf(&I::FolderExists), SlotOf(&I::FileExists), SlotOf(&I::GetFolderProperties),
                                 SlotOf(&I::GetNameSortedDirsByFolder), SlotOf(&I::GetAllFilesAndSubFoldersByFolder),
                                 SlotOf(static_cast<Size>(&I::GetFolderSize)),
                                 SlotOf(static_cast<SizeWithList>(&I::GetFolderSize))});
}

TEST(InterfaceSlotOrderTest, CustomFileConfigUpdater) {
    using I = interf::ICustomFileConfigUpdater;
    ExpectSlotsFromTheFirstOnOf(
        {SlotOf(&I::UpdateCustomFileConfigAfterUpload), SlotOf(&I::UpdateCustomFileConfigBeforeDownload)});
}

TEST(InterfaceSlotOrderTest, SyncConfigurationWithItsThreeOperationsOfTheClient) {
    using I = interf::ISyncConfiguration;
    ExpectSlotsFromTheFirstOnOf(
        {SlotOf(&I::GetSyncFrequency), SlotOf(&I::IsIncrementalSyncEnabled),
         SlotOf(&I::IsIncrementalSyncEnabledForFile), SlotOf(&I::GetMinFileSizeForIncrementalSync),
         SlotOf(&I::GetMaxChangeForIncrementalSync), SlotOf(&I::GetMaxDeltaForIncrementalSync),
         SlotOf(&I::GetMaxParallelTransfers), SlotOf(&I::GetLimitsForUploadFinishedEvent),
         SlotOf(&I::GetLimitsForCreateDeleteReferences), SlotOf(&I::GetLimitsForGetParentsChildrenReferences),
         SlotOf(&I::GetMaxTransferRetries), SlotOf(&I::GetSyncDelayAfterServerError), SlotOf(&I::GetMaxFailedPasses)});
}

TEST(InterfaceSlotOrderTest, ExternalSyncConfigManager) {
    // The value that it returns is not complete here, and a pointer to the operation does not need it to be.
    ExpectSlotsFromTheFirstOnOf({SlotOf(&interf::IExternalSyncConfigManager::GetExternalSyncConfig)});
}

TEST(InterfaceSlotOrderTest, VersionChecker) {
    using I = interf::IVersionChecker;
    ExpectSlotsFromTheFirstOnOf({SlotOf(&I::ThereIsANewAppVersion), SlotOf(&I::VersionAIsGreaterThanVersionB)});
}

TEST(InterfaceSlotOrderTest, VersionManager) {
    using I = interf::IVersionManager;
    ExpectSlotsFromTheFirstOnOf(
        {SlotOf(&I::GetLocalAppVersion), SlotOf(&I::GetMostCurrentAppVersion), SlotOf(&I::GetAppInstallerUrl)});
}

TEST(InterfaceSlotOrderTest, TheSyncFilterTestsFilesBeforeFolders) {
    using I = interf::ISyncFilter;
    ExpectSlotsFromTheFirstOnOf({SlotOf(&I::IsFileExcluded), SlotOf(&I::IsFolderExcluded)});
}

TEST(InterfaceSlotOrderTest, TheNetworkAccessManagerIsMadeByTheFirstOperationOfItsFactory) {
    ExpectSlotsFromTheFirstOnOf({SlotOf(&interf::factory::INetworkAccessManagerFactory::CreateNetworkAccessManager)});
}

TEST(InterfaceSlotOrderTest, TheSyncConfigUrlIsTheSecondOperationOfTheServicesHttpAccess) {
    using I = interf::dv::IDrovaneHttp;
    ExpectSlotsFromTheFirstOnOf({SlotOf(&I::GetServiceUrl), SlotOf(&I::GetSyncConfigUrl)});
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
    EXPECT_GE(sync::interf::IHttpRequest::staticMetaObject.indexOfSignal(signal.constData()), 0);
}

TEST(InterfaceMetaObjectTest, TheStateOfARequestThatGotNoAnswerIsFive) {
    EXPECT_EQ(static_cast<int>(sync::interf::IHttpRequest::StateNone), 0);
    EXPECT_EQ(static_cast<int>(sync::interf::IHttpRequest::StateFailed), 5);
}

}  // namespace
