#pragma once

#include <QObject>
#include <QString>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// How synchronisation against a service is tuned. The order of the operations is part of the contract. Thread-safe.
///
/// GetMaxParallelTransfers, GetMaxTransferRetries and GetMaxFailedPasses are the client's own: a plug-in library leaves
/// them pure, and the client derives the class that it makes an object of.
class OVSYNC_INTERFACES_EXPORT ISyncConfiguration : public QObject {
    Q_OBJECT

public:
    /// How often to synchronise, in the scheduler's unit.
    virtual int GetSyncFrequency() = 0;

    /// Whether changed files may be transferred as differences.
    virtual bool IsIncrementalSyncEnabled() = 0;
    virtual bool IsIncrementalSyncEnabledForFile(const QString& path) = 0;

    /// In bytes: smaller files are transferred whole.
    virtual qint64 GetMinFileSizeForIncrementalSync() = 0;

    /// The fraction of a file that may have changed for a difference to be worth making.
    virtual float GetMaxChangeForIncrementalSync() = 0;

    /// The fraction of a file's size that its difference may have to be worth sending.
    virtual float GetMaxDeltaForIncrementalSync() = 0;

    /// How many transfers may run at once.
    virtual int GetMaxParallelTransfers() = 0;

    /// The GetLimitsFor operations return false, and leave the arguments as they are, when there is no limit.
    virtual bool GetLimitsForUploadFinishedEvent(int& maxFiles, int& maxDelay) = 0;
    virtual bool GetLimitsForCreateDeleteReferences(int& maxCreated, int& maxDeleted, int& maxDelay,
                                                    bool initialSync) = 0;
    virtual bool GetLimitsForGetParentsChildrenReferences(int& maxParents, int& maxChildren, bool initialSync) = 0;

    /// How many times a transfer is tried again.
    virtual int GetMaxTransferRetries() = 0;

    /// How long to wait after the service failed, in the scheduler's unit.
    virtual int GetSyncDelayAfterServerError() = 0;

    /// How many passes may fail in a row before the user is told.
    virtual int GetMaxFailedPasses() = 0;
};

}  // namespace interf
}  // namespace sync
