#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <atomic>
#include <map>
#include <vector>

#include "client/sync/local/LocalTree.h"
#include "client/sync/pass/SyncPass.h"
#include "client/sync/report/ISyncObserver.h"
#include "tests/client/sync/local/FaultyTree.h"
#include "tests/client/sync/pass/FakeService.h"
#include "tests/fakes/Text.h"

namespace tests {

/// A synced folder on the disk and a service in memory, and what passes between them told.
class SyncTest : public testing::Test, private ovsync::report::ISyncObserver {
protected:
    SyncTest();

    ovsync::report::SyncOutcome Pull();
    ovsync::report::SyncOutcome Push();
    ovsync::report::SyncOutcome Sync();
    /// Of which it is known that nothing else changed here.
    ovsync::report::SyncOutcome SyncPlaces(const QSet<QString>& changedHere);

    /// Both sides are in step with these files, and each knows what it has.
    void Begin(const std::vector<const char*>& paths);
    /// Both sides have the same, and another pass finds nothing to do.
    void ExpectInStep();
    /// Right before the first request of `method`, once, `happens`.
    void BeforeRequest(const char* method, const std::function<void()>& happens);

    /// In the synced folder; the folders above are made.
    void Write(const char* path, const QByteArray& content);
    void Remove(const char* path);
    QByteArray Content(const char* path) const;
    /// Of all files, the hidden folder's left out.
    std::map<QString, QByteArray> Contents() const;
    /// Of all files in the trash.
    std::vector<QByteArray> TrashContents() const;
    QString Path(const char* path) const;
    bool HasTemporaryFiles() const;

    /// Who puts what it is told into `events`.
    ovsync::report::ISyncObserver& Observer() { return *this; }

    /// The events of the last pass as "Kind path", in path order and without those of the kind Fetched or Updated.
    QStringList Told() const;
    /// Their details.
    QStringList Details() const;

    FakeService service;
    QTemporaryDir folder;
    ovsync::local::LocalTree disk;
    FaultyTree tree;
    ovsync::pass::SyncOptions options;
    std::atomic<bool> isStopped{false};
    QVector<ovsync::report::SyncEvent> events;

private:
    ovsync::report::SyncOutcome _Run(const std::function<ovsync::report::SyncOutcome(ovsync::pass::SyncPass&)>& pass);
    void OnEvent(const ovsync::report::SyncEvent& event) override { events.append(event); }
    void OnProgress(const ovsync::report::SyncProgress& /*progress*/) override {}
};

/// With a service that is asked for everything, and with one that tells what changed.
class EitherServiceTest : public SyncTest, public testing::WithParamInterface<bool> {
protected:
    EitherServiceTest() { service.tellsChanges = GetParam(); }
};

}  // namespace tests
