#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <atomic>
#include <map>

#include "client/sync/ISyncObserver.h"
#include "client/sync/LocalTree.h"
#include "client/sync/PassContext.h"
#include "tests/client/sync/FakeService.h"
#include "tests/client/sync/FaultyTree.h"
#include "tests/fakes/Text.h"

namespace tests {

/// A synced folder on the disk and a service in memory, and what passes between them told.
class SyncTest : public testing::Test, private ovsync::syncing::ISyncObserver {
protected:
    SyncTest();

    ovsync::syncing::SyncOutcome Pull();
    ovsync::syncing::SyncOutcome Push();

    /// In the synced folder; the folders above are made.
    void Write(const char* path, const QByteArray& content);
    void Remove(const char* path);
    QByteArray Content(const char* path) const;
    /// Of all files, the hidden folder's left out.
    std::map<QString, QByteArray> Contents() const;
    QString Path(const char* path) const;
    bool HasTemporaryFiles() const;

    /// The events of the last pass as "Kind path", in path order and without those of the kind Fetched or Updated.
    QStringList Told() const;
    /// Their details.
    QStringList Details() const;

    FakeService service;
    QTemporaryDir folder;
    ovsync::syncing::LocalTree disk;
    FaultyTree tree;
    ovsync::syncing::SyncOptions options;
    std::atomic<bool> isStopped{false};
    QVector<ovsync::syncing::SyncEvent> events;

private:
    ovsync::syncing::SyncOutcome _Run(
        const std::function<ovsync::syncing::SyncOutcome(ovsync::syncing::PassContext&)>& pass);
    void OnEvent(const ovsync::syncing::SyncEvent& event) override { events.append(event); }
    void OnProgress(const ovsync::syncing::SyncProgress& /*progress*/) override {}
};

}  // namespace tests
