#pragma once

#include <QVector>
#include <memory>

#include "dvsync/DvsyncExport.h"
#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"
#include "host/http/DAVPropfindResult.h"

/// What the entries of a PROPFIND answer are, and what they mean for the records of files. Nothing here fails: what an
/// entry lacks becomes the empty value of its field. Thread-safe as long as each thread has records and results of its
/// own.

namespace sync {
namespace dv {
namespace dvsync {

/// The class types are compared without regard to letter case.
DVSYNC_EXPORT bool IsFileClassType(const http::DAVPropfindResponse& response);
DVSYNC_EXPORT bool IsFormClassType(const http::DAVPropfindResponse& response);
/// True for a project too.
DVSYNC_EXPORT bool IsFolderClassType(const http::DAVPropfindResponse& response);

/// The record of the file that `response` describes, as it lies in `folder`. The class type is not looked at. The size
/// is the 32-bit content length with its sign.
DVSYNC_EXPORT config::FileConfiguration BuildFileConfigFromFindResponse(const config::FolderConfiguration& folder,
                                                                        const http::DAVPropfindResponse& response);

/// The records of the files among the file-like entries of `result`, in their order. A new vector, empty when `result`
/// is.
DVSYNC_EXPORT std::shared_ptr<QVector<config::FileConfiguration>> BuildFileConfigsFromFindResult(
    config::FolderConfiguration& folder, std::shared_ptr<http::DAVPropfindResult> result);

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
