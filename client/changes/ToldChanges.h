#pragma once

#include <QDateTime>
#include <QString>
#include <memory>

#include "client/changes/ServiceChanges.h"
#include "host/http/DAVPropfindResult.h"

namespace ovsync {
namespace changes {

/// What a server told, before a library made records of it. A plain value.
struct ToldChanges {
    ServiceChanges::Answer answer = ServiceChanges::Answer::NotAble;
    /// What is there; null when nothing was told.
    std::shared_ptr<sync::http::DAVPropfindResult> present;
    /// All of it among the file-like entries; null when nothing was told.
    std::shared_ptr<sync::http::DAVPropfindResult> gone;
    /// The collections below the asked one of which all was told that lies right in them, as it then was of the asked
    /// one, too; null where servers tell no such thing.
    std::shared_ptr<sync::http::DAVPropfindResult> whole;
    QString state;
    QDateTime at;
};

}  // namespace changes
}  // namespace ovsync
