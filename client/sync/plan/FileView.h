#pragma once

#include <QString>
#include <QVector>
#include <optional>

#include "client/store/FileRecord.h"
#include "client/sync/pass/FileState.h"
#include "client/sync/plan/SyncDecision.h"
#include "host/configuration/FileConfiguration.h"

namespace ovsync {
namespace plan {

/// What is at a path on both sides, seen beside its record, and what a pass does with it. A plain value.
struct FileView {
    QString path;
    FileSituation situation;
    SyncStep step = SyncStep::Nothing;
    pass::LocalFileState here;
    /// The service's file, if it has one.
    sync::config::FileConfiguration remote;
    std::optional<store::FileRecord> record;
    /// The record as it should be from now on; empty mostly.
    QVector<store::FileRecord> renewed;
    /// The MD5 of the service's content, as it was seen last, in hexadecimal; empty when it never was.
    QString knownMd5;
    /// Where an earlier pass put the service's version; empty when none did.
    QString copy;
};

}  // namespace plan
}  // namespace ovsync
